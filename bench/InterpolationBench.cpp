// A million values looked up in tables, beside the GNU Scientific Library. A run is what a user calls: the
// work on the table and all values. The set-up of a spline is shown by itself too. The sizes are those of the
// table; its points lie at random distances, and the values at random within it, sorted or as they come.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "peers/interpolation.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/math/Interpolation.h"
#include "qorn/math/InterpolationFactory.h"
#include "qorn/math/Spline.h"

namespace {

using QORN::Interpolation;
using QORN::InterpolationFactory;
using QORN::InterpolationType;
using QORN::VecReal32;
using QORN::VecReal64;

constexpr int kValues = 1000000;

struct Data {
  VecReal64 x, y, values;
};

Data MakeData(int n, bool sorted) {
  std::mt19937 random(static_cast<unsigned>(n));
  std::uniform_real_distribution<double> step(0.5, 1.5), level(-1.0, 1.0);
  Data data{VecReal64(n), VecReal64(n), VecReal64(kValues)};
  double x = 0.0;
  for (int i = 0; i < n; ++i) {
    data.x[i] = x += step(random);
    data.y[i] = level(random);
  }
  std::uniform_real_distribution<double> place(data.x[0], x);
  for (int j = 0; j < kValues; ++j) data.values[j] = place(random);
  if (sorted) std::sort(data.values.GetPtr(), data.values.GetPtr() + kValues);
  return data;
}

// make(data) gives the function that a run calls.
template <class Make> void Add(const std::string &title, int n, bool sorted, int items, Make make) {
  benchmark::RegisterBenchmark((title + "/" + std::to_string(n)).c_str(), [=](benchmark::State &state) {
    const Data data = MakeData(n, sorted);
    auto run = make(data);
    for (auto _ : state) {
      run();
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * items);
  })->Unit(benchmark::kMicrosecond);
}

template <class V> auto MakeRun(InterpolationType type) {
  return [type](const Data &data) {
    std::shared_ptr<Interpolation> interpolation(InterpolationFactory().MakeInterpolation(type));
    return [interpolation, x = V(data.x), y = V(data.y), values = V(data.values), out = V()]() mutable {
      interpolation->Interpolate(out, x, y, values);
      benchmark::DoNotOptimize(out.GetPtr());
    };
  };
}

struct OpenSpline : QORN::Spline {
  using Spline::SplineInit;
};

template <class V> auto MakeSetup() {
  return [](const Data &data) {
    return [spline = OpenSpline(), x = V(data.x), y = V(data.y), y2 = V(data.x.GetSize())]() mutable {
      spline.SplineInit(x.GetSize(), x, y, y2.GetPtr());
      benchmark::DoNotOptimize(y2.GetPtr());
    };
  };
}

#if defined(QORN_PEER_GSL)
using Kind = peers::GslInterpolation::Kind;

auto MakePeerRun(Kind kind) {
  return [kind](const Data &data) {
    auto gsl = std::make_shared<peers::GslInterpolation>(kind, data.x.GetSize());
    return [gsl, &data, out = VecReal64(kValues)]() mutable {
      gsl->Init(data.x.GetPtr(), data.y.GetPtr());
      gsl->Evaluate(data.x.GetPtr(), data.y.GetPtr(), data.values.GetPtr(), out.GetPtr(), kValues);
      benchmark::DoNotOptimize(out.GetPtr());
    };
  };
}

auto MakePeerSetup() {
  return [](const Data &data) {
    auto gsl = std::make_shared<peers::GslInterpolation>(Kind::kSpline, data.x.GetSize());
    return [gsl, &data] { gsl->Init(data.x.GetPtr(), data.y.GetPtr()); };
  };
}
#endif

void AddOrder(const std::string &suffix, int n, bool sorted) {
  const struct {
    const char *name;
    InterpolationType type;
  } kinds[] = {{"InterpLinear", QORN::InterpLinear},
               {"InterpNearest", QORN::InterpNearest},
               {"InterpSpline", QORN::InterpSpline},
               {"InterpHermite", QORN::InterpCubicHermite}};
  for (const auto &kind : kinds) {
    const std::string title = kind.name + suffix;
    Add(title + "_32f/best", n, sorted, kValues, MakeRun<VecReal32>(kind.type));
    Add(title + "_64f/best", n, sorted, kValues, MakeRun<VecReal64>(kind.type));
  }
#if defined(QORN_PEER_GSL)
  Add("InterpLinear" + suffix + "_64f/peer:gsl", n, sorted, kValues, MakePeerRun(Kind::kLinear));
  Add("InterpSpline" + suffix + "_64f/peer:gsl", n, sorted, kValues, MakePeerRun(Kind::kSpline));
#endif
}

const bool registered = [] {
  for (const int n : {100, 10000, 1000000}) {
    AddOrder("Sorted", n, true);
    AddOrder("Random", n, false);
    Add("SplineSetup_32f/best", n, false, n, MakeSetup<VecReal32>());
    Add("SplineSetup_64f/best", n, false, n, MakeSetup<VecReal64>());
#if defined(QORN_PEER_GSL)
    Add("SplineSetup_64f/peer:gsl", n, false, n, MakePeerSetup());
#endif
  }
  return true;
}();

} // namespace
