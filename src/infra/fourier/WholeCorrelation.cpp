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

#include "Magnitudes.h"
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
template <class T> using Plan = std::conditional_t<kReal<T>, RealPlan<double>, ComplexPlan<double>>;

constexpr Index kShortest = 128, kLongest = Index{1} << 22;

// Estimates in nanoseconds, as in LongConvolution.cpp. Of a complex transform:
double TransformCost(Index length) {
  const double perPass = length <= 256      ? 0.048
                         : length <= 2048   ? 0.071
                         : length <= 9216   ? 0.081
                         : length <= 16384  ? 0.095
                         : length <= 32768  ? 0.112
                         : length <= 131072 ? 0.123
                         : length <= 524288 ? 0.23
                                            : 0.35;
  const bool odd = length % 9 == 0 || length % 5 == 0;
  return (odd ? 1.05 : 1) * perPass * static_cast<double>(length) * Log2(length);
}
// Three transforms, and what is beside them for each point and each call.
template <class T> double WholeCost(Index length) {
  const auto points = static_cast<double>(length);
  if (std::is_same_v<T, double>) return 3.2 * TransformCost(length) + 1.3 * points + 200;
  if (!kReal<T>) return 3 * TransformCost(length) + 0.9 * points + 100;
  const double beside = length <= 65536 ? 0.6 : 1.2;
  return 3 * (TransformCost(length / 2) + 0.15 * points) + beside * points + 100;
}

const float *Parts(const float *x) { return x; }
const double *Parts(const double *x) { return x; }
const float *Parts(const Cplx32 *x) { return &x->re; }
float *Parts(float *x) { return x; }
float *Parts(Cplx32 *x) { return &x->re; }

// Whether most of the outputs of noise can be told to be good enough: the longer the transforms are, the more
// products it takes.
template <class T> bool IsCertain(Index, Index, Index) { return true; }
template <> bool IsCertain<double>(Index taps, Index len, Index length) {
  const double error = TransformError(static_cast<int>(length)) / (64 * kUnit);
  const double size = error * error * static_cast<double>(taps) * static_cast<double>(len) * 0x1p-32;
  // min(taps, len) > 6000 size^(3/4), as measured.
  const double least = static_cast<double>(std::min(taps, len)) / 6000;
  return least * least * least * least > size * size * size;
}

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
      const double cost = WholeCost<T>(length);
      if (cost >= limit || !IsCertain<T>(taps, len, length)) continue;
      limit = cost;
      best = static_cast<int>(length);
    }
  }
  return best;
}

namespace {

// Calls body(tap, value) for the products that make output n, until it returns false.
template <class T, class F> void ForTerms(const Correlation<T> &job, Index n, bool convolve, const F &body) {
  // k is the distance from the output's last value, that of the last tap or, in a convolution, of the first.
  for (Index k = std::max(Index{0}, n - (job.len - 1)); k < job.tapCount && k <= n; ++k) {
    if (!body(convolve ? job.taps[k] : Conjugate(job.taps[job.tapCount - 1 - k]), job.x[n - k])) return;
  }
}

// A sum of products. Those of floats are exact in double; with those of doubles goes what the roundings have
// left out (Ogita, Rump, Oishi, Accurate sum and dot product, 2005).
template <class T> class Sum {
public:
  void Add(double a, double b) {
    const double product = a * b;
    if constexpr (std::is_same_v<T, double>) {
      const double sum = m_sum + product, own = sum - m_sum;
      m_rest += std::fma(a, b, -product) + ((m_sum - (sum - own)) + (product - own));
      m_sum = sum;
    } else {
      m_sum += product;
    }
  }
  double Total() const { return m_sum + m_rest; }

private:
  double m_sum = 0, m_rest = 0;
};

// Output n by its definition.
template <class T> T Exactly(const Correlation<T> &job, Index n, bool convolve) {
  Sum<T> re, im;
  ForTerms(job, n, convolve, [&](T tap, T x) {
    re.Add(Re(tap), Re(x));
    if constexpr (!kReal<T>) {
      re.Add(-Im(tap), Im(x));
      im.Add(Re(tap), Im(x));
      im.Add(Im(tap), Re(x));
    }
    return true;
  });
  if constexpr (kReal<T>)
    return static_cast<T>(re.Total());
  else
    return {static_cast<float>(re.Total()), static_cast<float>(im.Total())};
}

// Of the operands.
struct Norms {
  double taps, x;
};

// Results by transforms: their smallest magnitude, and that from which on one speaks for itself, infinite if
// there are none to be trusted.
struct Figures {
  double smallest, least;
};

// Deals with the outputs that do not speak for themselves: before the first nonzero value and behind the last
// one they are zero; others stand if the sum of their magnitudes is large enough, as `next` may know, which
// gives the first one from n on of which it does not, or else are summed directly. False if that would take
// about as long as the transforms did.
template <class T, class Next>
bool Certify(const Correlation<T> &job, int length, bool convolve, double least, const Next &next) {
  const auto isZero = [](const T &x) { return Size(x) == 0; };
  const T *const values = job.x, *const behind = values + job.len;
  const Index begin = std::find_if_not(values, behind, isZero) - values;
  const Index rest = std::find_if_not(std::reverse_iterator(behind), std::reverse_iterator(values), isZero) -
                     std::reverse_iterator(behind);
  // Doubles are summed with what the roundings leave out, which takes several times as long.
  constexpr Index kTerms = std::is_same_v<T, double> ? 2 : 8, kEach = std::is_same_v<T, double> ? 6 : 1;
  Index terms = kTerms * length;
  const Index end = job.first + job.count;
  for (Index n = job.first;; ++n) {
    n += CountLarge(job.dst + (n - job.first), end - n, least);
    if (n == end) return true;
    const Index doubtful = next(n);
    if (doubtful != n) {
      if (doubtful >= end) return true;
      n = doubtful - 1;
      continue;
    }
    T &result = job.dst[n - job.first];
    if (n < begin || n >= job.len - rest + job.tapCount - 1) {
      result = T{};
      continue;
    }
    double sizes = 0;
    ForTerms(job, n, convolve, [&](T tap, T x) {
      sizes += Size(tap) * Size(x);
      return sizes < least && --terms > 0;
    });
    if (sizes >= least) continue;
    terms -= kEach * std::min({Index{job.tapCount}, Index{job.len}, n + 1, job.len + job.tapCount - 1 - n});
    if (terms < 0) return false;
    result = Exactly(job, n, convolve);
  }
}
template <class T>
bool Certify(const Correlation<T> &job, int length, bool convolve, const Norms &, double least) {
  return Certify(job, length, convolve, least, [](Index n) { return n; });
}

// Of doubles, more outputs are in doubt: where few products meet, at the ends, and by chance in the middle.
// These are mostly known by how many large values meet; the ends are convolved again, by themselves.
bool Certify(const Correlation<double> &job, int length, bool convolve, const Norms &norms, double least) {
  // A few products of average size are the quicker proof.
  constexpr double kFew = 3;
  const auto none = [](Index n) { return n; };
  const double product = norms.taps * norms.x / std::sqrt(static_cast<double>(job.tapCount) * job.len);
  if (least < kFew * product) return Certify(job, length, convolve, least, none);

  // The last outputs may be those of other operands that go on.
  const bool hasTail = job.count == static_cast<Index>(job.tapCount) + job.len - 1;
  const Index group = Magnitudes::kBlock * std::max(job.tapCount / 16384, 1);
  const Index groups = (job.count + group - 1) / group, most = hasTail ? groups / 4 : groups * 3 / 4;
  Index head = most, tail = hasTail ? groups - most : groups;
  {
    const Magnitudes taps(job.taps, job.tapCount, norms.taps, Life::kCall),
        values(job.x, job.len, norms.x, Life::kCall);
    // Outputs n to n + group - 1, n being a multiple of group.
    const auto isKnown = [&](Index n) {
      return Magnitudes::AllReach(least, {n, group, job.tapCount, false, job.len, 0}, taps, values);
    };
    while (head > 0 && isKnown((head - 1) * group)) --head;
    while (tail < groups && isKnown(tail * group)) ++tail;
    // Where a signal is quiet, a few products do not help.
    Index unknown = 0;
    for (Index i = head; i < tail; ++i) unknown += isKnown(i * group) ? 0 : 1;
    if (16 * unknown > groups) return false;
    const Index first = head * group, end = std::min(tail * group, job.count);
    const Correlation<double> middle{job.taps, job.tapCount, job.x,          job.len,
                                     first,    end - first,  job.dst + first};
    const auto next = [&](Index n) { return isKnown(n / group * group) ? (n / group + 1) * group : n; };
    if (!Certify(middle, length, convolve, least, next)) return false;
  }
  ConvolveEnds(job.taps, job.tapCount, job.x, job.len, job.dst, head * group,
               std::max(job.count - tail * group, Index{0}));
  return true;
}

template <class T>
Figures Transform(const Correlation<T> &job, int length, bool convolve, const Norms &norms) {
  constexpr int kParts = Element<T>::kParts;
  const Plan<T> &plan = SharedPlan<Plan<T>>(length);
  const Index n = length, scratchSize = static_cast<Index>(plan.ScratchBytes() / sizeof(double));
  // Complex signals are transformed in place. Of the taps' spectrum, if they are real, its first half will
  // do: the second one, which the transform writes too, gives way to the signal's.
  const Index signalSize = kReal<T> ? n : 0, kept = kReal<T> ? n + 8 : 2 * n;
  const WorkArray<double> work(signalSize + kept + 2 * n + scratchSize, Life::kCall);
  double *const signal = work.Data(), *const tapBins = signal + signalSize, *const bins = tapBins + kept;
  double *const scratch = bins + 2 * n;
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
  const double bound =
      CyclicBound(error, norms.x, norms.taps, std::sqrt(Energy(results, kParts * n))) * (1 + 1e-6);
  return {smallest, bound / kShare<T>};
}

// Doubles, of a whole convolution. The two parts of a signal, x = high + low, go through one complex
// transform as high + j p low, p being a power of two that makes low about as large as high. So their
// transforms, which are taken apart with the product, have errors in proportion to their sizes, and so have
// the results of the inverse one.
//
// With e the relative error of a transform and z = high + j p low, of x and of the taps, and v what the
// inverse transform gives, v = coarse + j p' rest: each part of z comes with an error of e |z|. Those of
// `coarse` are at most e |z| |z'| from each operand, 8 u |z| |z'| of the product, and e |v|: together
// CyclicBound. Those of p' rest are the same times p' / p of the one or the other operand, of which the
// larger one is 1/2, both therefore at most 1. What takes the parts of a transform apart, two sums, and what
// joins them have 2 u each, which is what a bit more of the length gives.
Figures Transform(const Correlation<double> &job, int length, bool, const Norms &norms) {
  const ComplexPlan<double> &plan = SharedPlan<ComplexPlan<double>>(length);
  const Index n = length;
  const WorkArray<double> work(4 * n + static_cast<Index>(plan.ScratchBytes() / sizeof(double)), Life::kCall);
  double *const bins = work.Data(), *const tapBins = bins + 2 * n, *const scratch = tapBins + 2 * n;
  const double error = TransformError(2 * length);

  // p for so many values of this norm.
  const auto scaleOf = [](double own, Index count, double step) {
    return std::ldexp(1.0, std::ilogb(own / (step / 2 * std::sqrt(static_cast<double>(count)))));
  };
  struct Packed {
    bool isWhole; // low is zero
    double norm;  // |z|
  };
  const auto transform = [&](const double *x, Index count, double own, double step, double scale,
                             double *spectrum) {
    const double low =
        std::sqrt(active->ConvPack_64f(x, spectrum, count, 0x1.8p52 * step, scale)) * (1 + 1e-6);
    std::fill(spectrum + 2 * count, spectrum + 2 * n, 0.0);
    plan.Forward(spectrum, spectrum, scratch, 1.0);
    return Packed{low == 0, std::hypot(own + low, scale * low)};
  };

  // What so many products of noise come to.
  const double most = 0.6 * norms.taps * norms.x / std::sqrt(static_cast<double>(job.tapCount) * job.len) *
                      std::min(job.tapCount, job.len);
  // Both of |z| may be half as much again as those of the operands. Convolutions of noise keep their norm,
  // but for that of the sums' product. If these amplify more than 4 times, it takes another turn.
  double tapSum = 0, sum = 0;
  active->Sum_64f(job.taps, job.tapCount, &tapSum);
  active->Sum_64f(job.x, job.len, &sum);
  double bound = CyclicBound(
      error, 1.5 * norms.x, 1.5 * norms.taps,
      std::max(4 * norms.x * norms.taps, 1.5 * std::fabs(tapSum * sum) / std::sqrt(static_cast<double>(n))));
  const double sizes = norms.taps / norms.x * std::sqrt(static_cast<double>(job.len) / job.tapCount);
  for (int turn = 0; turn < 3; ++turn) {
    // Steps that cut as many bits from the one as from the other.
    const double tapStep = std::ldexp(1.0, std::ilogb(std::sqrt(4 * bound * sizes)));
    const double step = std::ldexp(1.0, std::ilogb(2.1 * bound / tapStep) + 1);
    const double tapScale = scaleOf(norms.taps, job.tapCount, tapStep),
                 ownScale = scaleOf(norms.x, job.len, step), scale = std::min(tapScale, ownScale) / 2;
    const auto leastFor = [&](double largest) { return largest / scale / kShare<double>; };
    if (leastFor(bound) > 4 * most) break; // it is seldom a fourth of that
    const Packed taps = transform(job.taps, job.tapCount, norms.taps, tapStep, tapScale, tapBins);
    const Packed values = transform(job.x, job.len, norms.x, step, ownScale, bins);
    const double energy =
        active->ConvPackedProduct_64f(bins, tapBins, n, scale / tapScale, scale / ownScale, 1 / tapScale);
    const double gained = std::sqrt(energy / static_cast<double>(n)) / 4;
    bound = CyclicBound(error, values.norm, taps.norm, gained) * (1 + 1e-6);
    if (2.05 * bound > step * tapStep) continue;
    // Where both have nothing but whole steps, the result is exact.
    const bool isExact = values.isWhole && taps.isWhole;
    const double least = isExact ? 0 : leastFor(bound);
    if (least > most) break;
    plan.Inverse(bins, bins, scratch, 0.25 / length);
    const double smallest =
        active->ConvUnpack_64f(bins, job.dst, job.count, 0x1.8p52 * step * tapStep, isExact ? 0 : 1 / scale);
    return {smallest, least};
  }
  return {0, std::numeric_limits<double>::infinity()};
}

template <class T> bool RunWhole(const Correlation<T> &job, int length, bool convolve) {
  constexpr int kParts = Element<T>::kParts;
  const double energy = Energy(Parts(job.x), kParts * static_cast<Index>(job.len));
  const double tapEnergy = Energy(Parts(job.taps), kParts * static_cast<Index>(job.tapCount));
  if (!InRange<T>(energy) || !InRange<T>(tapEnergy) || !InRange<T>(energy * tapEnergy)) return false;
  if (energy == 0 || tapEnergy == 0) {
    std::fill_n(job.dst, job.count, T{});
    return true;
  }
  const Norms norms{std::sqrt(tapEnergy) * (1 + 1e-6), std::sqrt(energy) * (1 + 1e-6)};
  const Figures figures = Transform(job, length, convolve, norms);
  return figures.smallest >= figures.least ||
         (std::isfinite(figures.least) && Certify(job, length, convolve, norms, figures.least));
}

} // namespace

template <class T> bool CorrelateWhole(const Correlation<T> &job, int length) {
  return RunWhole(job, length, false);
}

namespace {

// The first `count` outputs of a convolution.
template <class T>
bool ConvolveFirst(const T *taps, int tapCount, const T *x, int len, Index count, T *dst, int length) {
  if constexpr (std::is_same_v<T, double>) {
    // Without the silence at their ends, whose outputs are zero.
    const auto trimmed = [](const T *&values, int &size) {
      const T *const begin = values, *end = values + size;
      while (values != end && *values == 0) ++values;
      while (values != end && end[-1] == 0) --end;
      size = static_cast<int>(end - values);
      return values - begin;
    };
    const Index before = std::min(trimmed(taps, tapCount) + trimmed(x, len), count);
    const Index all = tapCount == 0 || len == 0 ? 0 : static_cast<Index>(tapCount) + len - 1;
    const Index own = std::min(all, count - before);
    std::fill_n(dst, before, 0.0);
    std::fill(dst + before + own, dst + count, 0.0);
    // What is not finite would show.
    if (own == 0) return std::isfinite(Energy(taps, tapCount)) && std::isfinite(Energy(x, len));
    return RunWhole<T>({taps, tapCount, x, len, 0, own, dst + before}, length, true);
  } else {
    return RunWhole<T>({taps, tapCount, x, len, 0, count, dst}, length, true);
  }
}

// The same, by the operands that they have alone, and by transforms where these are estimated to be faster.
void ConvolveEarly(const double *taps, int tapCount, const double *x, int len, Index count, double *dst) {
  if (tapCount > len) return ConvolveEarly(x, len, taps, tapCount, count, dst);
  tapCount = static_cast<int>(std::min<Index>(count, tapCount));
  len = static_cast<int>(std::min<Index>(count, len));
  // The products beyond these outputs make a triangle.
  const double beyond = static_cast<double>(tapCount) + len - 1 - static_cast<double>(count);
  const double terms = static_cast<double>(tapCount) * len - beyond * (beyond + 1) / 2;
  const double direct = DirectCost<double>(tapCount, count, terms);
  double limit = direct;
  const int length = WholeLength<double>(tapCount, len, limit);
  if (length != 0 && ConvolveFirst(taps, tapCount, x, len, count, dst, length)) return;
  const WorkArray<double> reversed(tapCount, Life::kCall);
  std::reverse_copy(taps, taps + tapCount, reversed.Data());
  if (const int block = BlockLength<double>(tapCount, count, direct); block != 0) {
    Correlator<double>(reversed.Data(), tapCount, block, Life::kCall)
        .Run({reversed.Data(), tapCount, x, len, 0, count, dst});
  } else {
    Direct(reversed.Data(), tapCount, x, len, dst, static_cast<int>(count), 1 - tapCount);
  }
}

} // namespace

template <class T> bool ConvolveWhole(const T *taps, int tapCount, const T *x, int len, T *dst, int length) {
  return ConvolveFirst(taps, tapCount, x, len, static_cast<Index>(tapCount) + len - 1, dst, length);
}

void ConvolveEnds(const double *taps, int tapCount, const double *x, int len, double *dst, Index early,
                  Index late) {
  if (early > 0) ConvolveEarly(taps, tapCount, x, len, early, dst);
  if (late == 0) return;
  // Backwards, the last ones are the first.
  const Index ownTaps = std::min<Index>(late, tapCount), ownLen = std::min<Index>(late, len);
  const WorkArray<double> work(ownTaps + ownLen + late, Life::kCall);
  double *const lastTaps = work.Data(), *const last = lastTaps + ownTaps, *const outputs = last + ownLen;
  std::reverse_copy(taps + (tapCount - ownTaps), taps + tapCount, lastTaps);
  std::reverse_copy(x + (len - ownLen), x + len, last);
  ConvolveEarly(lastTaps, static_cast<int>(ownTaps), last, static_cast<int>(ownLen), late, outputs);
  std::reverse_copy(outputs, outputs + late, dst + (static_cast<Index>(tapCount) + len - 1 - late));
}

template int WholeLength<float>(Index, Index, double &);
template int WholeLength<double>(Index, Index, double &);
template int WholeLength<Cplx32>(Index, Index, double &);
template bool CorrelateWhole(const Correlation<float> &, int);
template bool CorrelateWhole(const Correlation<Cplx32> &, int);
template bool ConvolveWhole(const float *, int, const float *, int, float *, int);
template bool ConvolveWhole(const double *, int, const double *, int, double *, int);

} // namespace QORN::fourier
