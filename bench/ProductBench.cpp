// Dot products beside VOLK's.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "infra/kernels/Levels.h"
#include "peers/product.h"
#include "qorn/infra/TargetLib.h"

namespace {

using QORN::Cplx32;
using QORN::Cplx64;
using QORN::TargetLib;

namespace kernels = QORN::kernels;

// Zeros at a 64-byte boundary, as the vectors have them; one peer's kernel relies on it.
template <class T> class Zeros {
public:
  explicit Zeros(int n) : m_bytes(static_cast<std::size_t>(n) * sizeof(T) + 64) {}
  const T *data() const {
    const auto address = reinterpret_cast<std::uintptr_t>(m_bytes.data());
    return reinterpret_cast<const T *>((address + 63) / 64 * 64);
  }

private:
  std::vector<unsigned char> m_bytes;
};

template <class A, class B, class R> using DotProd = void (*)(const A *, const B *, int, R *);

template <class A, class B, class R>
void Add(const std::string &name, const std::string &who, const kernels::Level &level, DotProd<A, B, R> dot) {
  for (const int n : {16, 256, 4096, 65536}) {
    const std::string title = name + "/" + who + "/" + std::to_string(n);
    benchmark::RegisterBenchmark(title.c_str(), [=](benchmark::State &state) {
      const kernels::ScopedLevel scope(level);
      const Zeros<A> a(n);
      const Zeros<B> b(n);
      R result{};
      for (auto _ : state) {
        dot(a.data(), b.data(), n, &result);
        benchmark::DoNotOptimize(result);
      }
      state.SetItemsProcessed(state.iterations() * n);
    });
  }
}

const bool registered = [] {
  const std::vector<kernels::Level> levels = kernels::AvailableLevels();
  for (const kernels::Level &level : levels) {
    Add("DotProd_32f", level.name, level, &TargetLib::DotProd_32f);
    Add("DotProd_64f", level.name, level, &TargetLib::DotProd_64f);
    Add("DotProd_32fc", level.name, level, &TargetLib::DotProd_32fc);
    Add("DotProd_64fc", level.name, level, &TargetLib::DotProd_64fc);
    Add("DotProd_32f32fc", level.name, level, &TargetLib::DotProd_32f32fc);
  }
#if defined(QORN_PEER_VOLK)
  Add("DotProd_32f", "peer:volk", levels.back(), &peers::VolkProduct::DotProd_32f);
  Add("DotProd_32fc", "peer:volk", levels.back(), &peers::VolkProduct::DotProd_32fc);
  Add("DotProd_32f32fc", "peer:volk", levels.back(), &peers::VolkProduct::DotProd_32f32fc);
#endif
  return true;
}();

} // namespace
