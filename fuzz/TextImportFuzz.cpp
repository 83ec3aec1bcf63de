// Imports what a fuzzer makes as text into every container that reads text. Read twice it must give the same.

#include <cstdlib>
#include <cstring>

#include "Input.h"
#include "qorn/infra/BitVector.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt16.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/infra/VecUInt32.h"

namespace {

using namespace QORN;
using fuzz::Input;
using fuzz::Try;

template <class V, class Read> void ReadTwice(Read read) {
  V first, second(2);
  Try([&] { read(first); });
  Try([&] { read(second); });
  const auto bytes = sizeof(first[0]) * static_cast<std::size_t>(first.GetSize());
  if (first.GetSize() != second.GetSize()) std::abort();
  if (bytes > 0 && std::memcmp(first.GetPtr(), second.GetPtr(), bytes) != 0) std::abort();
}

template <class V> void ImportBothWays(const char *path) {
  ReadTwice<V>([&](V &vector) { vector.Import(path); });
  ReadTwice<V>([&](V &vector) { vector.Import(path, true); });
}

template <class V> void ImportColumns(const char *path) {
  for (int columns = 0; columns <= 4; ++columns)
    for (int column = -1; column <= 3; ++column)
      ReadTwice<V>([&](V &vector) { vector.Import(path, columns, column); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  const Input input(data, size);
  if (!input) return 0;
  const char *path = input.Path();
  ImportBothWays<VecReal32>(path);
  ImportBothWays<VecReal64>(path);
  ImportBothWays<VecCplx32>(path);
  ImportBothWays<VecCplx64>(path);
  ImportBothWays<VecInt16>(path);
  ImportBothWays<VecInt32>(path);
  ImportBothWays<VecUInt32>(path);
  ImportColumns<VecReal32>(path);
  ImportColumns<VecReal64>(path);
  for (const int width : {1, 7, 32}) {
    for (const bool hasIndex : {false, true}) {
      BitVector bits;
      Try([&] { bits.Import(path, width, hasIndex); });
    }
  }
  return 0;
}
