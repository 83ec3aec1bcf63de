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

// The second time into a container that has the given size.
template <class V, class Read, class... Sizes> void ReadTwice(Read read, Sizes... sizes) {
  V first, second(sizes...);
  Try([&] { read(first); });
  Try([&] { read(second); });
  const auto bytes = sizeof(*first.GetPtr()) * static_cast<std::size_t>(first.GetSize());
  if (first.GetSize() != second.GetSize()) std::abort();
  if (bytes > 0 && std::memcmp(first.GetPtr(), second.GetPtr(), bytes) != 0) std::abort();
}

template <class V> void ImportBothWays(const char *path) {
  ReadTwice<V>([&](V &vector) { vector.Import(path); }, 2);
  ReadTwice<V>([&](V &vector) { vector.Import(path, true); }, 2);
}

template <class V> void ImportColumns(const char *path) {
  for (int columns = 0; columns <= 4; ++columns)
    for (int column = -1; column <= 3; ++column)
      ReadTwice<V>([&](V &vector) { vector.Import(path, columns, column); }, 2);
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
      ReadTwice<BitVector>([&](BitVector &bits) { bits.Import(path, width, hasIndex); }, 2, 2);
    }
  }
  return 0;
}
