// Loads what a fuzzer makes as vector files. What loads must give the same elements again after it was
// stored.

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "Input.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"

namespace {

using QORN::fuzz::Input;
using QORN::fuzz::Try;

template <class V> void StoreAndLoad(const V &vector) {
  const Input file(nullptr, 0);
  if (!file) return;
  vector.Store(file.Path());
  V again;
  again.Load(file.Path());
  const auto bytes = sizeof(vector[0]) * static_cast<std::size_t>(vector.GetSize());
  if (again.GetSize() != vector.GetSize()) std::abort();
  if (bytes > 0 && std::memcmp(again.GetPtr(), vector.GetPtr(), bytes) != 0) std::abort();
}

template <class V> void Exercise(const char *path) {
  V vector(3);
  bool loaded = false;
  Try([&] {
    vector.Load(path);
    loaded = true;
  });
  if (!loaded && vector.GetSize() != 0) std::abort();
  if (loaded) StoreAndLoad(vector);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  // A length is believed, and only then is there a look at the data: the memory costs nothing where it is not
  // touched, but a sanitizer marks all of it.
  std::int32_t length = 0;
  if (size >= 80) std::memcpy(&length, data + 76, sizeof length);
  if (length > (1 << 20)) return 0;
  const Input input(data, size);
  if (!input) return 0;
  Exercise<QORN::VecReal32>(input.Path());
  Exercise<QORN::VecReal64>(input.Path());
  Exercise<QORN::VecCplx32>(input.Path());
  Exercise<QORN::VecCplx64>(input.Path());
  QORN::VecCplx32 vector;
  float params[3];
  Try([&] { vector.Load(input.Path(), length, params[0], params[1], params[2]); });
  for (const int first : {0, 1, -1, -100, INT_MIN, INT_MAX, std::max(length, 1) - 1})
    for (const int count : {0, 1, 5, length, INT_MAX}) Try([&] { vector.Load(input.Path(), first, count); });
  return 0;
}
