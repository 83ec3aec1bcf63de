// The outputs are certified as those of LongConvolution.cpp are, with the bound of a complex transform's
// error that is shown there for plans of any way. A real transform is one of half the length and a step in
// which two sums, half a bin each, and a product make a bin, 5.2 u of the 8 u of the bit that it adds to the
// length. So 8 ceil(log2 N) u hold all.
#include "WholeCorrelation.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <type_traits>

#include "Operands.h"
#include "OverlapSave.h"
#include "WorkArray.h"
#include "infra/kernels/Levels.h"
#include "qorn/infra/Cplx.h"

namespace QORN::fourier {

namespace {

using Index = std::ptrdiff_t;
using kernels::active;

template <class T> constexpr bool kReal = Element<T>::kParts == 1;
template <class T> using Transform = std::conditional_t<kReal<T>, RealPlan<double>, ComplexPlan<double>>;

constexpr Index kShortest = 128, kLongest = Index{1} << 22;

// Estimates in nanoseconds, as in LongConvolution.cpp. Of a complex transform:
double TransformCost(double length) {
  const double perPass = length <= 256      ? 0.05
                         : length <= 2048   ? 0.078
                         : length <= 16384  ? 0.09
                         : length <= 131072 ? 0.115
                         : length <= 524288 ? 0.23
                                            : 0.35;
  return perPass * length * std::log2(length);
}
// Three transforms, and what is beside them for each point and each call.
template <class T> double WholeCost(double length) {
  const double once = kReal<T> ? TransformCost(length / 2) + 0.15 * length : TransformCost(length);
  return 3 * once + (kReal<T> ? 0.6 : 0.9) * length + 100;
}

const float *Parts(const float *x) { return x; }
const float *Parts(const Cplx32 *x) { return &x->re; }
float *Parts(float *x) { return x; }
float *Parts(Cplx32 *x) { return &x->re; }

} // namespace

template <class T> int WholeLength(Index taps, Index len, double &limit) {
  const Index least = taps + len - 1;
  int best = 0;
  Index first = kShortest;
  while (2 * first < least) first *= 2;
  // No length of twice the least power of two that suffices is the cheapest.
  for (Index power = first; power <= std::min(2 * first, kLongest); power *= 2) {
    for (const Index odd : {8, 9, 10, 12}) {
      const Index length = power / 8 * odd;
      if (length < least) continue;
      const double cost = WholeCost<T>(static_cast<double>(length));
      if (cost >= limit) continue;
      limit = cost;
      best = static_cast<int>(length);
    }
  }
  return best;
}

namespace {

// Output n by its definition. Products of floats are exact in double.
template <class T> T Exactly(const Correlation<T> &job, Index n, bool convolve) {
  const Index count = job.tapCount, first = std::max(Index{0}, n - (job.len - 1));
  double re = 0, im = 0;
  // k is the distance from the output's last value, that of the last tap or, in a convolution, of the first.
  for (Index k = first; k < count && k <= n; ++k) {
    const T x = job.x[n - k], tap = convolve ? job.taps[k] : Conjugate(job.taps[count - 1 - k]);
    re += Re(tap) * Re(x) - Im(tap) * Im(x);
    im += Re(tap) * Im(x) + Im(tap) * Re(x);
  }
  if constexpr (kReal<T>)
    return static_cast<T>(re);
  else
    return {static_cast<float>(re), static_cast<float>(im)};
}

template <class T> bool RunWhole(const Correlation<T> &job, int length, bool convolve) {
  constexpr int kParts = Element<T>::kParts;
  const Transform<T> &plan = SharedPlan<Transform<T>>(length);
  const Index n = length, scratchSize = static_cast<Index>(plan.ScratchBytes() / sizeof(double));
  const double energy = Energy(Parts(job.x), kParts * static_cast<Index>(job.len));
  const double tapEnergy = Energy(Parts(job.taps), kParts * static_cast<Index>(job.tapCount));
  if (!std::isfinite(energy) || !std::isfinite(tapEnergy)) return false;
  if (energy == 0 || tapEnergy == 0) {
    std::fill_n(job.dst, job.count, T{});
    return true;
  }

  const WorkArray<double> work(5 * n + scratchSize, Life::kCall);
  double *const signal = work.Data(), *const bins = signal + n, *const tapBins = bins + 2 * n;
  double *const scratch = tapBins + 2 * n;
  const auto transform = [&](const T *x, int count, double *spectrum) {
    double *const filled = kReal<T> ? signal : spectrum;
    active->Convert_32f64f(Parts(x), filled, kParts * count);
    std::fill(filled + kParts * static_cast<Index>(count), filled + kParts * n, 0.0);
    plan.Forward(filled, spectrum, scratch, 1.0);
  };
  transform(job.taps, job.tapCount, tapBins);
  transform(job.x, job.len, bins);
  // A correlation is the product with the conjugate.
  active->FourierProduct_64f(bins, tapBins, bins, kReal<T> ? n / 2 + 1 : n, !convolve, !convolve);
  double *const results = kReal<T> ? signal : bins;
  plan.Inverse(bins, results, scratch, 1.0 / length);

  // Output i is value i - lag, those below 0 lying at the end.
  const Index end = job.first + job.count, lag = convolve ? 0 : job.tapCount - 1;
  double smallest = std::numeric_limits<double>::infinity();
  const auto round = [&](Index from, Index to, const double *values) {
    if (from >= to) return;
    const double own = active->ConvRound_64f32f(values + kParts * from, Parts(job.dst + (from - job.first)),
                                                kParts * (to - from));
    smallest = std::min(smallest, own);
  };
  round(job.first, std::min(end, lag), results + kParts * (n - lag));
  round(std::max(job.first, lag), end, results - kParts * lag);

  const double error = 8 * CeilLog2(length) * kUnit;
  const double least =
      CyclicBound(error, std::sqrt(energy), std::sqrt(tapEnergy), std::sqrt(Energy(results, kParts * n))) *
      (1 + 1e-6) / kShare<T>;
  if (smallest >= least) return true;
  // Outputs that do not speak for themselves are zero before the first nonzero value and behind the last one;
  // the others are summed directly, as long as that takes about as long as the transforms.
  const auto isZero = [](const T &x) { return Size(x) == 0; };
  const T *const values = job.x, *const behind = values + job.len;
  const Index begin = std::find_if_not(values, behind, isZero) - values;
  const Index rest = std::find_if_not(std::reverse_iterator(behind), std::reverse_iterator(values), isZero) -
                     std::reverse_iterator(behind);
  Index few = std::max(8 * n / job.tapCount, Index{1});
  for (Index i = 0; i < job.count; ++i) {
    if (Size(job.dst[i]) >= least) continue;
    const Index at = job.first + i;
    if (at < begin || at >= job.len - rest + job.tapCount - 1) {
      job.dst[i] = T{};
    } else if (few-- > 0) {
      job.dst[i] = Exactly(job, at, convolve);
    } else {
      return false;
    }
  }
  return true;
}

} // namespace

template <class T> bool CorrelateWhole(const Correlation<T> &job, int length) {
  return RunWhole(job, length, false);
}

bool ConvolveWhole(const float *taps, int tapCount, const float *x, int len, float *dst, int length) {
  return RunWhole<float>({taps, tapCount, x, len, 0, static_cast<Index>(tapCount) + len - 1, dst}, length,
                         true);
}

template int WholeLength<float>(Index, Index, double &);
template int WholeLength<Cplx32>(Index, Index, double &);
template bool CorrelateWhole(const Correlation<float> &, int);
template bool CorrelateWhole(const Correlation<Cplx32> &, int);

} // namespace QORN::fourier
