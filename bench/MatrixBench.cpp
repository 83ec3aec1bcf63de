// Products and inverses of small square matrices beside Eigen's. The peer may fuse multiply-adds, sums floats
// in float and pivots within a column; ours rounds every product, sums in double and pivots completely.
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "infra/kernels/Levels.h"
#include "peers/matrix.h"
#include "qorn/infra/MatReal32.h"
#include "qorn/infra/MatReal64.h"
#include "qorn/math/MathUtils.h"

namespace {

using QORN::MathUtils;
using QORN::MatReal32;
using QORN::MatReal64;

namespace kernels = QORN::kernels;

template <class M> M Random(int n) {
  std::mt19937 random(static_cast<unsigned>(n));
  std::uniform_real_distribution<double> uniform(-1, 1);
  M matrix(n, n);
  for (int i = 0; i < n * n; ++i) {
    *matrix.GetPtr(i) = static_cast<std::decay_t<decltype(*matrix.GetPtr())>>(uniform(random));
  }
  return matrix;
}

// run(dst, a, b) at one level; `flops` counts the multiply-adds of a product.
template <class M, class Run>
void Add(const std::string &workload, const std::string &who, const kernels::Level &level, bool product,
         Run run) {
  for (const int n : {2, 3, 4, 6, 8, 16, 32, 64}) {
    const std::string title = workload + "/" + who + "/" + std::to_string(n);
    benchmark::RegisterBenchmark(title.c_str(), [=](benchmark::State &state) {
      const kernels::ScopedLevel scope(level);
      const M a = Random<M>(n), b = Random<M>(n);
      M dst(n, n);
      for (auto _ : state) {
        run(dst, a, b);
        benchmark::DoNotOptimize(dst.GetPtr());
        benchmark::ClobberMemory();
      }
      if (product) state.SetItemsProcessed(state.iterations() * n * n * n);
    });
  }
}

template <class M> void AddBoth(const std::string &suffix) {
  const auto mul = [](M &dst, const M &a, const M &b) { MathUtils::Mul(dst, a, b); };
  const auto inv = [](M &dst, const M &a, const M &) { MathUtils::Inv(dst, a); };
  const std::vector<kernels::Level> levels = kernels::AvailableLevels();
  for (const kernels::Level &level : levels) Add<M>("MatrixMul_" + suffix, level.name, level, true, mul);
  Add<M>("MatrixInv_" + suffix, "best", levels.back(), false, inv);
#if defined(QORN_PEER_EIGEN)
  const auto peerMul = [](M &dst, const M &a, const M &b) {
    peers::EigenMatrix::Mul(a.GetPtr(), b.GetPtr(), dst.GetPtr(), a.GetRows());
  };
  const auto peerInv = [](M &dst, const M &a, const M &) {
    peers::EigenMatrix::Inv(a.GetPtr(), dst.GetPtr(), a.GetRows());
  };
  Add<M>("MatrixMul_" + suffix, "peer:eigen", levels.back(), true, peerMul);
  Add<M>("MatrixInv_" + suffix, "peer:eigen", levels.back(), false, peerInv);
#endif
}

const bool registered = [] {
  AddBoth<MatReal32>("32f");
  AddBoth<MatReal64>("64f");
  return true;
}();

} // namespace
