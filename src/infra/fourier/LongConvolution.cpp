// Why results by transforms can be trusted. The error of a transform spreads over all outputs of a block and
// is a fraction of the norms of the block and the taps; but each output is promised an error of at most 8 u
// times its own S = sum of |tap| |x|, u being half the operands' eps. So every block has a rigorous bound E
// of its errors, and an output stands if its S is at least E / 7 u. The rest of 8 u is that of its own
// rounding. That is told from lower bounds of S: the output itself, how many large operands must meet
// (Magnitudes.h), then a few products of large operands. What is left is zero if no input lies under the
// taps, else it is computed again: a long stretch by a transform of its own inputs alone, which do not have
// the loud ones that its block had, a short one directly.
//
// Floats are transformed in double, so that E is far below what they are promised. Doubles are cut in two:
// x = x1 + x2, taps = h1 + h2, where x1 and h1 are whole multiples of steps so coarse that the convolution of
// x1 and h1 comes out of the transform with an error below half a step. Rounded to whole steps it is exact,
// and only the rest, x1 * h2 + x2 * (h1 + h2), which is smaller by many digits, has errors.
//
// The bound: with u = 2^-53, a transform of N points has a relative error of at most e = c ceil(log2 N) u in
// the 2-norm, c being 4 for N = 2^k and 8 for the other lengths; see below. So a cyclic convolution x * h by
// transforms has an error of at most
//   |x| ((2 e + 8 u) |h| + e max |H|)
// at each output, |.| being the 2-norms and H the spectrum of h. Instead of |x| max |H|, the norm of what the
// inverse transform gave will do as well.
//
// For c: the transform is a product of multiples of unitary matrices, whose relative errors in the 2-norm
// therefore add up, but for terms in u^2, which what the sums below leave of c covers a thousand times.
// - A factor w, |w| = 1, with its parts rounded from a wider type, is off by less than u / sqrt(2), and the
//   product by it has two roundings of products and one of a sum: (1 + sqrt(2)) u. Together 3.13 u.
// - A sum of two values has u. So a butterfly of radix 4, two layers of sums, has 2 u. One of radix 8 has a
//   product by sqrt(1/2), 1.71 u, among three layers, or four: 5.71 u. One of radix 16 is one of radix 4; the
//   sums 1 - j tan, 1.61 u; sums of which some have such a product, 2.71 u; and sums with the products by the
//   cosines that were left out, 3 u: 9.4 u.
// - A butterfly of an odd prime R forms a = x[j] + x[R-j] and b = x[j] - x[R-j] and outputs as x[0] + sums of
//   cos a and j sin b. If no operand meets more than r roundings on its way, the error of an output is at
//   most r u (|x[0]| + sum of |cos a| + |sin b|), and, since |a|^2 + |b|^2 = 2 |x[j]|^2 + 2 |x[R-j]|^2, at
//   most r u sqrt(R) |x|; that of all R outputs is r sqrt(R) u times their norm, sqrt(R) |x|. For R = 3, a
//   meets the roundings of three sums, its cosine being -1/2; b those of three as well, and two in the part
//   of it, 0.16, that makes up for sin(pi / 3) not being 1: r < 3.4, 5.9 u. For R = 5, four sums, a constant
//   and a product: r = 6, 13.5 u. Radix 9 is two of radix 3 with a factor between: 15 u. Radix 6, 10 and 12
//   are two without one: 6.9 u, 14.5 u and 7.9 u.
// So a step has, with the factor behind it, 5.2 u, 8.9 u, 12.6 u, 9.1 u, 16.7 u, 10.1 u, 18.2 u, 17.7 u or
// 11.1 u for radix 4, 8, 16, 3, 5, 6, 9, 10 or 12, which is below c log2(radix) u: each of 4, 8 or 16 leaves
// 2.8 u or more. The last one has no factor behind it. That is all for blocks (Cyclic.h). Whole operands
// (WholeCorrelation.h) go through plans of any way. In two sweeps of strips (FourStep.h) there may be two
// factors between the first two steps, for which the last one makes up. In tiles (Passes.h), of 2^20 points
// at least, up to two steps may be of radix 2, which has 4.2 u, and the factors between the lines, products
// of two rounded ones, have 3.2 u more: together less than two others leave. And the scale 1 / N, where it is
// not exact, has u, which is less than any step leaves of c = 8.
#include "LongConvolution.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

#include "Magnitudes.h"
#include "Operands.h"
#include "OverlapSave.h"
#include "infra/Errors.h"
#include "infra/kernels/Levels.h"
#include "qorn/infra/Cplx.h"

namespace QORN::fourier {

namespace {

using Index = std::ptrdiff_t;
using kernels::active;

// The blocks that go through the transforms at once: two real ones, or a complex one.
template <class T> constexpr Index kPairsOf = Element<T>::kParts == 1 ? 2 : 1;

// Estimates in nanoseconds, measured at the widest level. Only their ratios matter, and these are much the
// same at the others.

// A product of a direct sum.
template <class T> constexpr double kPerTerm = sizeof(T) == sizeof(float) ? 0.0128 : 0.0205;
template <> constexpr double kPerTerm<Cplx32> = 0.046;

// How much of such a product one with what is beside an array takes: most of these are left out.
template <class T> constexpr double kBeside = sizeof(T) == sizeof(float) ? 0.2 : 0.5;
template <> constexpr double kBeside<Cplx32> = 0.12;

// What an output near an end of the signal takes more than another one.
template <class T> constexpr double kPerEdge = sizeof(T) == sizeof(float) ? 1.3 : 2;
template <> constexpr double kPerEdge<Cplx32> = 2.6;

// Up to these lengths, transforms take so many times as long as in the nearest cache. Doubles are two blocks,
// and their outputs are nearer to what can be told.
struct Slowdown {
  Index length;
  double times;
};
constexpr Index kEndless = std::numeric_limits<Index>::max();
constexpr Slowdown kSlowdowns[] = {{1536, 1.06},   {12288, 1.16},  {32768, 1.33}, {81920, 1.39},
                                   {131072, 1.52}, {196608, 1.65}, {524288, 2},   {kEndless, 3.2}};
constexpr Slowdown kSlowdownsOfDoubles[] = {{2048, 3.25},  {24576, 3},    {36864, 3.3}, {131072, 3.8},
                                            {196608, 4.3}, {524288, 5.4}, {kEndless, 8}};

// A pair of real blocks, or a complex one, there and back. The taps and the first block, which has nothing in
// the caches yet, take 0.65 of it more.
template <class T> double RunCost(Index length) {
  constexpr double kPerRun = 80, kTimes = std::is_same_v<T, float> ? 1.03 : 1;
  const auto *slowdown = std::is_same_v<T, double> ? kSlowdownsOfDoubles : kSlowdowns;
  while (slowdown->length < length) ++slowdown;
  return kTimes * (kPerRun + (0.38 + 0.1 * Log2(length)) * slowdown->times * static_cast<double>(length));
}
constexpr double kFirst = 0.65;

// To get and to free the memory.
constexpr double kPerCall = 450;

// The largest transforms whose work memory an int can count.
template <class T> constexpr int kLargestLog2 = 25;
template <> constexpr int kLargestLog2<double> = 24;
constexpr Index kLongestOfStreams = Index{1} << 23;

// The outputs of a call for which streams are laid out.
constexpr Index kUsualBlock = 4096;

} // namespace

template <class T> class Correlator<T>::Job {
  using Part = typename Element<T>::Part;
  static constexpr int kParts = Element<T>::kParts;
  static constexpr Index kPairs = kPairsOf<T>;
  static constexpr bool kSplit = std::is_same_v<T, double>;
  static constexpr int kDeepest = 3;
  static constexpr Index kMany = 8; // outputs of which one is in doubt are many
  static constexpr Index kFew = 64; // and so many leave few in doubt

public:
  Job(const T *taps, int tapCount, int length, Life life)
      : m_life(life), m_job{taps, tapCount, nullptr, 0, 0, 0, nullptr}, m_last(tapCount - 1),
        m_engine(length, tapCount, life), m_error(TransformError(length)) {
    const Index n = m_engine.Length();
    m_work = WorkArray<double>(2 * n, life);
    m_usable = SetTaps();
    if (life == Life::kCall) return;
    SetSizes();
    if constexpr (std::is_same_v<T, float>) m_apart = WorkArray<float>(4 * n);
  }

  Index Step() const { return m_engine.Step() * kPairs; }
  int Length() const { return m_engine.Length(); }

  void Run(const Correlation<T> &job) {
    m_job = job;
    if (!m_usable) return Directly({m_job.first, m_job.count});
    const Index end = m_job.first + m_job.count, step = m_engine.Step();
    for (Index at = m_job.first; at < end; at += step * kPairs) {
      Outputs pair[2] = {};
      for (Index i = 0; i < kPairs; ++i) {
        const Index first = std::min(at + i * step, end);
        pair[i] = {first, std::min(step, end - first)};
      }
      Process(pair, 0);
    }
  }

  // Both parts of complex inputs at once, by transforms of the values as they lie in memory. Where that does
  // not do, the parts are set one behind the other, as a real signal, and are two blocks of it.
  void RunParts(const float *taps, const float *window, Index count, float *dst) {
    if constexpr (std::is_same_v<T, float>) {
      if (RunPartsAtOnce(taps, window, count, dst)) return;
      const Index size = m_last + count;
      float *const x = m_apart.Data(), *const results = x + 2 * m_engine.Length();
      for (Index i = 0; i < size; ++i) {
        x[i] = window[2 * i];
        x[size + i] = window[2 * i + 1];
      }
      m_job = {taps, m_job.tapCount, x, static_cast<int>(2 * size), m_last, size + count, results};
      Outputs parts[2] = {{m_last, count}, {size + m_last, count}};
      if (m_usable) {
        Process(parts, 0);
      } else {
        for (const Outputs &outputs : parts) Directly(outputs);
      }
      for (Index i = 0; i < count; ++i) {
        dst[2 * i] = results[i];
        dst[2 * i + 1] = results[size + i];
      }
    }
  }

private:
  struct Outputs {
    Index first, count;
  };

  const T &TapAt(Index i) const { return m_job.taps[m_last - i]; } // of the convolution, but for conjugation
  T *Target(Index n) const { return m_job.dst + (n - m_job.first); }

  void Directly(Outputs outputs) const {
    // As many as an int can count, and so many that their places can be told.
    Direct(m_job.taps, m_job.tapCount, m_job.x, m_job.len, Target(outputs.first),
           static_cast<int>(outputs.count), static_cast<int>(outputs.first - m_last));
  }

  // False if the values are not finite or many outputs in doubt. A few are summed directly. For F = float
  // alone: a template, since Clang 14 compiles members that are not for the other types when it instantiates
  // the class.
  template <class F> bool RunPartsAtOnce(const F *taps, const F *window, Index count, F *dst) {
    if (!m_usable) return false;
    const CyclicFigures figures = m_engine.Run(window, dst, count);
    if (!std::isfinite(figures.energy)) return false;
    if (figures.energy == 0) std::fill_n(dst, 2 * count, 0.0F);
    const double least = Bound(std::sqrt(figures.energy) * (1 + 1e-6), m_norm, m_gain) / kShare<T>;
    if (figures.smallest >= least) return true;
    const auto isBelow = [&](float x) { return Size(x) < least; };
    if (std::count_if(dst, dst + 2 * count, isBelow) * kFew > count) return false;
    for (Index i = 0; i < count; ++i) {
      if (isBelow(dst[2 * i]) || isBelow(dst[2 * i + 1]))
        active->Fir_32f32fc(taps, m_last + 1, window + 2 * i, dst + 2 * i, 1);
    }
    return true;
  }

  Part *WindowMemory(Index which) const {
    return reinterpret_cast<Part *>(m_work.Data()) + which * m_engine.Length();
  }

  // The bound of the errors, given the norms of a block and of the taps.
  double Bound(double norm, double tapNorm, double gain) const {
    return CyclicBound(m_error, norm, tapNorm, norm * gain);
  }

  // Only outputs that do not speak for themselves ask for these.
  void FindLargeTaps() {
    for (Index i = 0; i <= m_last; ++i) {
      const double size = Size(TapAt(i));
      if (m_largeCount == kLarge && size <= m_large[kLarge - 1].size) continue;
      int at = m_largeCount < kLarge ? m_largeCount++ : kLarge - 1;
      for (; at > 0 && m_large[at - 1].size < size; --at) m_large[at] = m_large[at - 1];
      m_large[at] = {i, size};
    }
  }

  // Steps t of the coarse part of the taps h, and s of that of a pair of blocks x, such that the errors of
  // both rests are about the same. Those have the norms t sqrt(M / 12) and s sqrt(2 N / 12); from s t
  // being 2.1 to 4.2, say 3, times the bound of the coarse product, 12 e |x| |h|, and |x| t sqrt(M) = s
  // sqrt(2 N) |h| follows t^2 = 36 e |h|^2 sqrt(2 N / M).
  double TapStep() const {
    const double blocks = 2.0 * static_cast<double>(m_engine.Length()) / static_cast<double>(m_engine.Taps());
    return std::ldexp(1.0, std::ilogb(m_norm * std::sqrt(2 * 36 * m_error * std::sqrt(blocks))));
  }

  // False if these taps are only for direct sums.
  bool SetTaps() {
    const Index n = m_engine.Length(), taps = m_engine.Taps();
    const double energy = Energy(reinterpret_cast<const Part *>(m_job.taps), taps * kParts);
    if (!InRange<T>(energy)) return false;
    m_norm = std::sqrt(energy) * (1 + 1e-6);

    if constexpr (kSplit) {
      double *const h = WindowMemory(0);
      m_tapStep = TapStep();
      const double magic = 0x1.8p52 * m_tapStep;
      double fineEnergy = 0;
      for (Index i = 0; i < taps; ++i) {
        h[i] = TapAt(i);
        const double fine = h[i] - ((h[i] + magic) - magic);
        fineEnergy += fine * fine;
      }
      std::fill(h + taps, h + n, 0.0);
      m_engine.SetTaps(h, magic);
      m_fineNorm = std::sqrt(fineEnergy) * (1 + 1e-6);
    } else {
      float *const h = m_engine.NewTaps();
      for (Index i = 0; i < taps; ++i) {
        const T tap = Conjugate(TapAt(i));
        h[2 * i] = static_cast<float>(Re(tap));
        h[2 * i + 1] = static_cast<float>(Im(tap));
      }
      m_engine.SetTaps();
    }
    m_gain = m_engine.Gain() * (1 + 1e-6);
    return true;
  }

  // The inputs under the taps of some outputs, filled up with zeros to a block.
  const Part *Window(Index which, Outputs outputs) {
    const Index n = m_engine.Length(), from = outputs.first - m_last, size = outputs.count + m_last;
    const Part *const x = reinterpret_cast<const Part *>(m_job.x);
    if (outputs.count == m_engine.Step() && from >= 0 && from + n <= m_job.len) return x + from * kParts;
    Part *const window = WindowMemory(which);
    const Index begin = std::max(from, Index{0});
    const Index end = outputs.count == 0 ? begin : std::max(begin, std::min<Index>(from + size, m_job.len));
    const Index before = outputs.count == 0 ? 0 : (begin - from) * kParts;
    std::fill_n(window, before, Part{0});
    Part *const rest = std::copy(x + std::min<Index>(begin, m_job.len) * kParts,
                                 x + std::min<Index>(end, m_job.len) * kParts, window + before);
    std::fill(rest, window + n * kParts, Part{0});
    return window;
  }

  // The same without what is not finite.
  const Part *Cleaned(Index which, const Part *from) {
    Part *const window = WindowMemory(which);
    std::transform(from, from + m_engine.Length() * kParts, window,
                   [](Part x) { return std::isfinite(x) ? x : Part{0}; });
    return window;
  }

  bool AllZero(const Part *window) const {
    const Part *const end = window + m_engine.Length() * kParts;
    return std::find_if(window, end, [](Part x) { return x != 0; }) == end;
  }

  // Tells the energies of the windows. Those with not-finite values are replaced by what they have else.
  void Clean(const Part *(&windows)[2], bool (&dirty)[2], double (&energies)[2]) {
    const Index size = m_engine.Length() * kParts;
    for (Index i = 0; i < kPairs; ++i) {
      energies[i] = Energy(windows[i], size);
      dirty[i] = !std::isfinite(energies[i]);
      if (!dirty[i]) continue;
      windows[i] = Cleaned(i, windows[i]);
      energies[i] = Energy(windows[i], size);
    }
  }

  // Outputs whose window has squares that vanish or overflow are computed directly and taken out.
  void TakeOutExtremes(const Part *(&windows)[2], bool (&dirty)[2], double (&energies)[2],
                       Outputs (&pair)[2]) {
    for (Index i = 0; i < kPairs; ++i) {
      if (AllZero(windows[i]) || (InRange<T>(energies[i]) && InRange<T>(energies[i] * m_norm * m_norm)))
        continue;
      Directly(pair[i]);
      pair[i].count = 0;
      windows[i] = Window(i, pair[i]);
      energies[i] = 0;
      dirty[i] = false;
    }
  }

  // Computes the outputs of one block, or of two real ones at once, at most Step() each.
  void Process(Outputs (&pair)[2], int depth) {
    const Part *windows[2] = {};
    bool dirty[2] = {};
    for (Index i = 0; i < kPairs; ++i) windows[i] = Window(i, pair[i]);

    Index below[2] = {};
    double energies[2] = {}, energy = 0, least = 0, smallest = 0;
    if constexpr (kSplit) {
      Clean(windows, dirty, energies);
      TakeOutExtremes(windows, dirty, energies, pair);
      energy = energies[0] + energies[1];
      if (energy != 0)
        std::tie(smallest, least) = TransformDoubles(windows, std::sqrt(energy) * (1 + 1e-6), pair);
    } else {
      CyclicFigures figures = TransformFloats(windows, pair);
      if (!std::isfinite(figures.energy)) {
        Clean(windows, dirty, energies);
        figures = TransformFloats(windows, pair);
      }
      energy = figures.energy;
      smallest = figures.smallest;
      least = Bound(std::sqrt(energy) * (1 + 1e-6), m_norm, m_gain) / kShare<T>;
    }
    Known known[2];
    for (Index i = 0; smallest < least && i < kPairs; ++i) {
      if (kSplit && !dirty[i] && energies[i] != 0) {
        // A few are looked at one by one in less time. Where they are not, they will not be in the next
        // block.
        if (m_leavesFew) {
          const Index most = pair[i].count / kFew;
          below[i] = CountUpTo(most + 1, pair[i], least);
          m_leavesFew = below[i] <= most;
          if (m_leavesFew) continue;
        }
        known[i] = Known(*this, pair[i].first, windows[i], std::sqrt(energies[i]), least);
      }
      below[i] = CountDoubtful(pair[i], least, known[i]);
    }
    if (energy == 0) {
      for (Index i = 0; i < kPairs; ++i) std::fill_n(Target(pair[i].first), pair[i].count, T{});
    }
    // Where many outputs do not speak for themselves, the sums of magnitudes are got by a transform, too.
    SizeSums sums{};
    if (kMany * (below[0] + below[1]) > pair[0].count + pair[1].count) {
      sums = SumSizes(windows, std::sqrt(energy) * (1 + 1e-6));
    }
    Stretches stretches[2];
    for (Index i = 0; i < kPairs; ++i) {
      if (below[i] > 0 || dirty[i]) FindUnproven(pair[i], least, dirty[i], sums, known[i], stretches[i]);
      if (sums.sums != nullptr) ++sums.sums;
    }
    for (Index i = 0; i < kPairs; ++i) Again(stretches[i], dirty[i], depth);
  }

  // Tells for groups of a block's outputs whether many of their products are known to be large. For doubles,
  // which alone are close enough to their bound to ask for it.
  class Known {
  public:
    Known() = default;
    Known(Job &job, Index first, const double *window, double norm, double least)
        : m_taps(&job.TapSizes()), m_sizes(window, job.m_engine.Length(), norm, Life::kCall), m_first(first),
          m_least(least) {
      m_group.count = job.m_last < 512 ? 64 : 128;
      m_group.tapCount = job.m_last + 1;
      m_group.isReversed = true;
      m_group.xLen = job.m_job.len;
      m_group.xFirst = first - job.m_last;
    }
    Known(Job &, Index, const float *, double, double) {} // never made of floats

    // Behind the group of output n; there is but one if nothing is known.
    Index GroupEnd(Index n) const {
      if (m_taps == nullptr) return std::numeric_limits<Index>::max();
      return n + m_group.count - (n - m_first) % m_group.count;
    }

    // The first output behind n's group if that stands, else n.
    Index Behind(Index n) {
      if (m_taps == nullptr) return n;
      const Index behind = GroupEnd(n);
      m_group.first = behind - m_group.count;
      if (m_group.first == m_doubtful) return n;
      if (Magnitudes::AllReach(m_least, m_group, *m_taps, m_sizes)) return behind;
      m_doubtful = m_group.first;
      return n;
    }

  private:
    const Magnitudes *m_taps = nullptr; // none: nothing is known
    Magnitudes m_sizes;
    Magnitudes::Outputs m_group{};
    Index m_first = 0, m_doubtful = -1;
    double m_least = 0;
  };

  const Magnitudes &TapSizes() {
    if constexpr (kSplit) {
      if (!m_tapSizes) m_tapSizes.emplace(m_job.taps, m_last + 1, m_norm, m_life);
    }
    return *m_tapSizes;
  }

  // The number of outputs below `least`, or `most` if that is less.
  Index CountUpTo(Index most, Outputs outputs, double least) const {
    const Index end = outputs.first + outputs.count;
    Index count = 0;
    for (Index n = outputs.first; count < most; ++n, ++count) {
      n += CountLarge(Target(n), end - n, least);
      if (n == end) break;
    }
    return count;
  }

  // The number of outputs below `least` but for those that are known to stand.
  Index CountDoubtful(Outputs outputs, double least, Known &known) const {
    const Index end = outputs.first + outputs.count;
    Index count = 0;
    for (Index n = outputs.first; n < end;) {
      const Index behind = known.Behind(n), stop = std::min(known.GroupEnd(n), end);
      if (behind == n) count += std::count_if(Target(n), Target(stop), [&](T x) { return Size(x) < least; });
      n = stop;
    }
    return count;
  }

  // Writes the outputs. Returns their smallest magnitude, and that from which on they stand. For T = double
  // alone.
  std::pair<double, double> TransformDoubles(const Part *const (&windows)[2], double norm,
                                             const Outputs (&pair)[2]) {
    if constexpr (kSplit) {
      const CyclicPair job{windows[0], windows[1],    Target(pair[0].first), Target(pair[1].first),
                           m_last,     pair[0].count, pair[1].count};
      // First as if the taps amplified no more than white noise; where that was too little, again with all
      // that they can amplify.
      for (double gain = m_amplifies ? m_gain : std::min(m_gain, 4 * m_norm);; gain = m_gain) {
        // Half a step is to be above the error of the coarse product, whose factors' norms are at most twice
        // the whole ones'.
        const double coarse = Bound(2 * norm, m_norm + m_fineNorm, gain);
        const double step = std::ldexp(1.0, std::ilogb(2.1 * coarse / m_tapStep) + 1);
        const CyclicParts got = m_engine.Run(job, 0x1.8p52 * step, 0x1.8p52 * step * m_tapStep);
        if (gain != m_gain && std::sqrt(got.coarse) > (1 - 1e-6) * 2 * norm * gain) {
          m_amplifies = true; // and so they will the next block
          continue;
        }
        // What the inverse transform adds is told by the norm of what it gave.
        const double low = std::sqrt(got.low) * (1 + 1e-6);
        const double error = Bound(norm + low, m_fineNorm, 0) + Bound(low, m_norm + m_fineNorm, 0) +
                             m_error * std::sqrt(got.rest) * (1 + 1e-6);
        return {got.smallest, error / kShare<T>};
      }
    } else {
      return {};
    }
  }

  // For the others: writes the outputs.
  CyclicFigures TransformFloats(const Part *const (&windows)[2], const Outputs (&pair)[2]) {
    T *const dst = Target(pair[0].first);
    if constexpr (kSplit) {
      return {};
    } else if constexpr (kParts == 1) {
      return m_engine.Run(windows[0], windows[1], dst, pair[0].count, Target(pair[1].first), pair[1].count);
    } else {
      return m_engine.Run(windows[0], &dst->re, pair[0].count);
    }
  }

  struct Operand {
    Index at;
    double size;
  };
  static constexpr int kLarge = 16;

  // The largest input of each sixteenth of those under the taps of some outputs.
  int LargeInputs(Outputs outputs, Operand (&large)[kLarge]) const {
    const Index begin = std::max(outputs.first - m_last, Index{0});
    const Index end = std::min<Index>(outputs.first + outputs.count, m_job.len);
    int count = 0;
    for (Index i = 0; i < kLarge; ++i) {
      const Index from = begin + (end - begin) * i / kLarge, to = begin + (end - begin) * (i + 1) / kLarge;
      Operand best{from, 0};
      for (Index at = from; at < to; ++at) {
        const double size = Size(m_job.x[at]);
        if (std::isfinite(size) && size > best.size) best = {at, size};
      }
      if (best.size > 0) large[count++] = best;
    }
    return count;
  }

  // Whether the sum of the magnitudes of some of output n's products, or of those with the large taps, or
  // with large inputs, is at least `least`.
  bool StandsByAny(Index n, double least) const {
    constexpr Index kMost = 32;
    const Index begin = std::max(n - (m_job.len - 1), Index{0}),
                end = std::min({begin + kMost, m_last + 1, n + 1});
    double sum = 0;
    for (Index i = begin; i < end && sum < least; ++i) sum += Size(TapAt(i)) * Size(m_job.x[n - i]);
    return sum >= least;
  }
  bool StandsByTaps(Index n, double least) const {
    double sum = 0;
    for (int i = 0; i < m_largeCount && sum < least; ++i) {
      const Index at = n - m_large[i].at;
      if (at >= 0 && at < m_job.len) sum += m_large[i].size * Size(m_job.x[at]);
    }
    return sum >= least;
  }
  bool StandsByInputs(Index n, double least, const Operand *inputs, int inputCount) const {
    double sum = 0;
    for (int i = 0; i < inputCount && sum < least; ++i) {
      const Index at = n - inputs[i].at;
      if (at >= 0 && at <= m_last) sum += inputs[i].size * Size(TapAt(at));
    }
    return sum >= least;
  }

  // Lower bounds of the sums of magnitudes: scale * sums[2 i] - error for output i of a block.
  struct SizeSums {
    const float *sums;
    double scale, error;
  };

  void SetSizes() {
    if (!m_usable) return;
    if (m_largeCount == 0) FindLargeTaps();
    if (m_large[0].size == 0) return;
    m_sizes.emplace(m_engine.Length(), m_job.tapCount, m_life);
    float *const h = m_sizes->Block();
    for (Index i = 0; i <= m_last; ++i) {
      const double size = Size(TapAt(i)) / m_large[0].size;
      m_sizeGain += size;
      h[2 * i] = static_cast<float>(size);
      h[2 * i + 1] = 0;
    }
    m_sizes->SetTaps(h);
  }

  // By a transform of floats between 0 and 1.
  SizeSums SumSizes(const Part *const (&windows)[2], double norm) {
    const Index n = m_engine.Length();
    if (!m_sizes) SetSizes();
    const double largestTap = m_large[0].size;
    double largest = 0;
    const auto elements = [&](Index i) { return reinterpret_cast<const T *>(windows[i]); };
    for (Index i = 0; i < kPairs; ++i) {
      for (Index at = 0; at < n; ++at) largest = std::max(largest, Size(elements(i)[at]));
    }
    float *const block = m_sizes->Block();
    std::fill_n(block, 2 * n, 0.0F);
    for (Index i = 0; i < kPairs; ++i) {
      for (Index at = 0; at < n; ++at) {
        block[2 * at + i] = static_cast<float>(Size(elements(i)[at]) / largest);
      }
    }
    m_sizes->Run();
    const double floats = 0x1p-24 / kUnit; // the bound is that of the transforms, in float
    return {block + 2 * m_last, largest * largestTap,
            floats * Bound(norm, m_norm + m_fineNorm, 1.01 * m_sizeGain * largestTap)};
  }

  static constexpr int kStretches = 64;
  struct Stretches {
    int count = 0;
    Outputs all[kStretches];

    // Few outputs between two that are computed again are computed again as well.
    void Add(Index n) {
      constexpr Index kGap = 16;
      if (count > 0) {
        Outputs &former = all[count - 1];
        if (count == kStretches || n - former.first - former.count <= kGap) {
          former.count = n + 1 - former.first;
          return;
        }
      }
      all[count++] = {n, 1};
    }
  };

  // Goes through the outputs that are not above `least` and finds those that are to be computed again. Where
  // the block was dirty, the results of infinities and not-a-numbers are not in yet.
  void FindUnproven(Outputs outputs, double least, bool dirty, const SizeSums &sums, Known &known,
                    Stretches &again) {
    Operand inputs[kLarge];
    int inputCount = -1;
    const Index never = -1 - m_last, end = outputs.first + outputs.count;
    Index seen = std::max(outputs.first - m_last, Index{0}); // inputs below have been looked at
    Index lastNonzero = never, lastInfinite = never, lastNaN = never;
    for (Index n = outputs.first; n < end; ++n) {
      if (!dirty) n += CountLarge(Target(n), end - n, least);
      if (n == end) break;
      T &result = *Target(n);
      const bool large = Size(result) >= least;
      if (large && !dirty) continue;
      if (const Index behind = known.Behind(n); behind != n) {
        n = behind - 1;
        continue;
      }
      const Index i = n - outputs.first, begin = n - m_last;
      if (!dirty && sums.sums != nullptr &&
          sums.scale * static_cast<double>(sums.sums[2 * i]) - sums.error >= least) {
        continue;
      }
      const Index next = std::min<Index>(n + 1, m_job.len);
      if (dirty) {
        for (Index at = seen; at < next; ++at) {
          if (!Finite(m_job.x[at])) (IsNaN(m_job.x[at]) ? lastNaN : lastInfinite) = at;
        }
      }
      // From the latest input back: most often that is one step.
      if (lastNonzero < begin || dirty) {
        Index at = next - 1;
        while (at >= seen && Re(m_job.x[at]) == 0 && Im(m_job.x[at]) == 0) --at;
        if (at >= seen) lastNonzero = at;
        seen = std::max(seen, next);
      }
      if (lastNaN >= begin && kParts == 1) {
        result = NotANumber();
      } else if (lastNaN >= begin || lastInfinite >= begin) {
        again.Add(n);
      } else if (lastNonzero < begin) {
        result = T{};
      } else if (!large && (sums.sums != nullptr || !StandsByAny(n, least))) {
        if (m_largeCount == 0) FindLargeTaps();
        if (StandsByTaps(n, least)) continue;
        if (inputCount < 0) inputCount = LargeInputs(outputs, inputs);
        if (!StandsByInputs(n, least, inputs, inputCount)) again.Add(n);
      }
    }
  }

  void Again(const Stretches &stretches, bool dirty, int depth) {
    for (int i = 0; i < stretches.count; ++i) {
      const Outputs &outputs = stretches.all[i];
      const double terms = static_cast<double>(outputs.count) * m_job.tapCount;
      if (depth < kDeepest && !dirty && RunCost<T>(m_engine.Length()) < terms * kPerTerm<T>) {
        Outputs pair[2] = {WithoutLoudEnds(outputs), {outputs.first, 0}};
        Process(pair, depth + 1);
      } else {
        Directly(outputs);
      }
    }
  }

  // Where a stretch begins behind a loud signal, its first outputs still have products with the end of that:
  // these are computed directly, and do not reach the others. So for the last ones.
  Outputs WithoutLoudEnds(Outputs outputs) const {
    constexpr Index kEnd = 64;
    constexpr double kLoud = 100; // times the energy of all else
    const Index from = outputs.first - m_last, to = outputs.first + outputs.count;
    const Index begin = std::max(from, Index{0}), end = std::min<Index>(to, m_job.len);
    if (outputs.count <= 4 * kEnd || end - begin <= 2 * kEnd) return outputs;
    const auto energy = [&](Index first, Index count) {
      return Energy(reinterpret_cast<const Part *>(m_job.x + first), count * kParts);
    };
    // Beside the signal there are only zeros.
    const double head = begin == from ? energy(begin, kEnd) : 0,
                 tail = end == to ? energy(end - kEnd, kEnd) : 0;
    const double loud = kLoud * energy(begin + kEnd, end - begin - 2 * kEnd);
    if (head > loud) {
      Directly({outputs.first, kEnd});
      outputs = {outputs.first + kEnd, outputs.count - kEnd};
    }
    if (tail > loud) {
      outputs.count -= kEnd;
      Directly({outputs.first + outputs.count, kEnd});
    }
    return outputs;
  }

  static T NotANumber() {
    if constexpr (kParts == 1)
      return std::numeric_limits<T>::quiet_NaN();
    else
      return {};
  }

  Life m_life;
  Correlation<T> m_job;
  Index m_last; // the place of the last tap
  // With the taps, or their coarse part.
  std::conditional_t<kSplit, DoubleOverlapSave, FloatOverlapSave> m_engine;
  double m_error; // of a transform, relative
  double m_norm = 0, m_gain = 0;
  Operand m_large[kLarge]; // the largest taps
  int m_largeCount = 0;
  WorkArray<double> m_work;
  bool m_usable = false;              // for finite taps
  WorkArray<float> m_apart;           // the parts of a complex signal and their outputs
  std::optional<OverlapSave> m_sizes; // with the magnitudes of the taps
  double m_sizeGain = 0;

  // Of doubles.
  double m_tapStep = 0, m_fineNorm = 0;
  bool m_amplifies = false, m_leavesFew = true;
  std::optional<Magnitudes> m_tapSizes;
};

template <class T>
Correlator<T>::Correlator(const T *taps, int tapCount, int length, Life life) try
    : m_job(std::make_unique<Job>(taps, tapCount, length, life)) {
} catch (const std::bad_alloc &) {
  Throw(errors::kMemoryAllocation, modules::kTargetLib);
}
template <class T>
Correlator<T>::Correlator(const Correlator &other) try : m_job(std::make_unique<Job>(*other.m_job)) {
} catch (const std::bad_alloc &) {
  Throw(errors::kMemoryAllocation, modules::kTargetLib);
}
template <class T> Correlator<T>::~Correlator() = default;

template <class T> int Correlator<T>::Length() const { return m_job->Length(); }
template <class T> std::ptrdiff_t Correlator<T>::Step() const { return m_job->Step(); }
template <class T> void Correlator<T>::Run(const Correlation<T> &job) { m_job->Run(job); }
template <class T>
void Correlator<T>::RunParts(const float *taps, const Cplx32 *window, std::ptrdiff_t count, Cplx32 *dst) {
  m_job->RunParts(taps, &window->re, count, &dst->re);
}

template <class T> double DirectCost(std::ptrdiff_t taps, std::ptrdiff_t outputs, double terms) {
  const auto size = static_cast<double>(taps);
  const double beside = size * static_cast<double>(outputs) - terms; // half of an edge's
  return (terms + kBeside<T> * beside) * kPerTerm<T> + kPerEdge<T> * 2 * beside / size;
}

template <class T> int BlockLength(std::ptrdiff_t taps, std::ptrdiff_t outputs, double limit) {
  if (taps < kLeastTaps) return 0;
  double least = limit;
  int best = 0;
  constexpr Index kLongest = Index{1} << kLargestLog2<T>;
  for (int k = 6; k <= kLargestLog2<T>; ++k) {
    bool once = false;
    for (const Index odd : {8, 9, 10, 12}) {
      const Index length = (Index{1} << k) / 8 * odd, step = length - taps + 1;
      if (step < 1 || length > kLongest || length % 64 != 0) continue;
      const Index blocks = (outputs + step - 1) / step;
      const Index runs = (blocks + kPairsOf<T> - 1) / kPairsOf<T>;
      const double cost = (static_cast<double>(runs) + kFirst) * RunCost<T>(length) + kPerCall;
      if (cost < least) {
        least = cost;
        best = static_cast<int>(length);
      }
      once |= runs == 1;
    }
    if (once) break;
  }
  return best;
}

template <class T> double LeastTerms(int length) { return RunCost<T>(length) / kPerTerm<T>; }

template <class T> int StreamLength(std::ptrdiff_t taps) {
  if (taps < 64) return 0;
  const Index outputs = std::max(kUsualBlock, taps);
  double least = std::numeric_limits<double>::infinity();
  int best = 0;
  for (Index power = 64; power <= kLongestOfStreams; power *= 2) {
    for (const Index odd : {8, 9, 10, 12}) {
      const Index length = power / 8 * odd, step = length - taps + 1;
      if (step < 1 || length % 64 != 0) continue;
      const double cost = static_cast<double>((outputs + step - 1) / step) * RunCost<T>(length);
      if (cost < least) {
        least = cost;
        best = static_cast<int>(length);
      }
    }
  }
  if (best == 0) return 0;
  const auto step = static_cast<double>(best - taps + 1), products = static_cast<double>(kPairsOf<T>) * step;
  return products * static_cast<double>(taps) > LeastTerms<T>(best) ? best : 0;
}

template class Correlator<float>;
template class Correlator<double>;
template class Correlator<Cplx32>;
template int BlockLength<float>(std::ptrdiff_t, std::ptrdiff_t, double);
template int BlockLength<double>(std::ptrdiff_t, std::ptrdiff_t, double);
template int BlockLength<Cplx32>(std::ptrdiff_t, std::ptrdiff_t, double);
template double DirectCost<float>(std::ptrdiff_t, std::ptrdiff_t, double);
template double DirectCost<double>(std::ptrdiff_t, std::ptrdiff_t, double);
template double DirectCost<Cplx32>(std::ptrdiff_t, std::ptrdiff_t, double);
template int StreamLength<float>(std::ptrdiff_t);
template int StreamLength<Cplx32>(std::ptrdiff_t);
template double LeastTerms<float>(int);
template double LeastTerms<Cplx32>(int);

} // namespace QORN::fourier
