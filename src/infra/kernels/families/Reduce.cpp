#include "Registers.h"
#include "Unroll.h"
#include "infra/kernels/Lanes.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// Extremes. Highest and lowest are told apart by the comparison alone, for single values and vectors of them.
struct Above {
  template <class T> static auto Of(T a, T b) { return a > b; }
#if defined(__AVX512BW__)
  static __m512i Chosen16(__m512i a, __m512i b) { return _mm512_max_epi16(a, b); }
#endif
};
struct Below {
  template <class T> static auto Of(T a, T b) { return a < b; }
#if defined(__AVX512BW__)
  static __m512i Chosen16(__m512i a, __m512i b) { return _mm512_min_epi16(a, b); }
#endif
};

// What every number beats or equals.
inline short Worst(short, Above) { return -32768; }
inline short Worst(short, Below) { return 32767; }
inline int Worst(int, Above) { return -2147483647 - 1; }
inline int Worst(int, Below) { return 2147483647; }
inline float Worst(float, Above) { return -__builtin_inff(); }
inline float Worst(float, Below) { return __builtin_inff(); }
inline double Worst(double, Above) { return -__builtin_inf(); }
inline double Worst(double, Below) { return __builtin_inf(); }

// Written on vectors of the level's width: of a plain loop the compiler keeps the extreme in one register,
// and a search for its place it does not vectorise at all. Comparisons are exact, so the width does not show
// in a result.
template <int kBytes> struct IntegerOf;
template <> struct IntegerOf<2> { using Type = std::int16_t; };
template <> struct IntegerOf<4> { using Type = std::int32_t; };
template <> struct IntegerOf<8> { using Type = std::int64_t; };

// Combines all lanes of a register, by halves.
template <int kDistance> struct CrossedAt {
  static constexpr int At(int i) { return i ^ kDistance; }
};
template <int kL, int kHalf = kL / 2, class E, class F>
[[gnu::always_inline]] inline auto AcrossLanes(E x, F combine) {
  if constexpr (kHalf == 0) {
    return x[0];
  } else {
    return AcrossLanes<kL, kHalf / 2>(combine(x, Shuffle<CrossedAt<kHalf>, kL>(x, x)), combine);
  }
}
template <class T, class E, class F> [[gnu::always_inline]] inline T OfAllLanes(E x, F combine) {
  constexpr int kL = kRegisterBytes / static_cast<int>(sizeof(T)), kShort = 16 / static_cast<int>(sizeof(T));
  return AcrossLanes<kShort>(Folded<kShort, kL>(x, combine), combine);
}

template <class Order> struct Choose {
  template <class E> [[gnu::always_inline]] E operator()(E a, E b) const {
#if defined(__AVX512BW__)
    // GCC 12 would compare words of 16 bits into a mask first, which takes three times as long.
    if constexpr (sizeof a == 64 && sizeof a[0] == 2) {
      return __builtin_bit_cast(
          E, Order::Chosen16(__builtin_bit_cast(__m512i, a), __builtin_bit_cast(__m512i, b)));
    } else
#endif
      return Order::Of(a, b) ? a : b;
  }
};

// An array is searched in chunks of a few vectors. Each lane keeps its extreme so far and the number of the
// chunk that brought it. A not-a-number element beats nothing, so it is passed over.
template <class Order, class T> class Search {
  static constexpr Index kCount = kRegisterBytes / sizeof(T);
  static constexpr Index kVectors = 8;
  using Integer = typename IntegerOf<sizeof(T)>::Type;
  using Values [[gnu::vector_size(kRegisterBytes)]] = T;
  using Integers [[gnu::vector_size(kRegisterBytes)]] = Integer;

public:
  static constexpr Index kChunk = kVectors * kCount;
  static constexpr Index kSpan = sizeof(T) == 2 ? kChunk * 32767 : Index{1} << 31;

  void Look(const T *chunk, Index number) {
    Values best = Values{} + Worst(T(), Order());
    for (Index k = 0; k < kVectors; ++k) {
      const Values x = Load(chunk + k * kCount);
      best = Choose<Order>()(x, best);
    }
    const auto better = Order::Of(best, m_best);
    m_best = better ? best : m_best;
    m_number = better ? Integers{} + static_cast<Integer>(number) : m_number;
  }

  T Best() const { return OfAllLanes<T>(m_best, Choose<Order>()); }

  // The first chunk that has the extreme, and the first place in a chunk that has it.
  Index Number(T best) const {
    const Integers last = Integers{} + Largest();
    return OfAllLanes<Integer>(m_best == Values{} + best ? m_number : last, Choose<Below>());
  }
  static Index Place(const T *chunk, T best) {
    Integers lane;
    for (Index j = 0; j < kCount; ++j) lane[j] = static_cast<Integer>(j);
    Integers place = Integers{} + Largest();
    for (Index k = kVectors - 1; k >= 0; --k) {
      const Integers here = lane + static_cast<Integer>(k * kCount);
      place = Load(chunk + k * kCount) == Values{} + best ? here : place;
    }
    return OfAllLanes<Integer>(place, Choose<Below>());
  }

private:
  static Values Load(const T *src) {
    Values values;
    __builtin_memcpy(&values, src, sizeof values);
    return values;
  }
  static constexpr Integer Largest() { return static_cast<Integer>((1ULL << (8 * sizeof(T) - 1)) - 1); }
  Values m_best = Values{} + Worst(T(), Order());
  Integers m_number = {};
};

// Looks through an array of at least one chunk; the last chunk reaches back over the one before it.
template <class Order, class T> inline Search<Order, T> Searched(const T *src, Index len) {
  constexpr Index kChunk = Search<Order, T>::kChunk;
  Search<Order, T> search;
  Index number = 0;
  for (; (number + 1) * kChunk <= len; ++number) search.Look(src + number * kChunk, number);
  if (number * kChunk < len) search.Look(src + len - kChunk, number);
  return search;
}

// A short array stands at the front of a chunk of what every number beats.
template <class Order, class T> struct Padded {
  T chunk[Search<Order, T>::kChunk];
  Padded(const T *src, Index len) {
    for (T &x : chunk) x = Worst(T(), Order());
    __builtin_memcpy(chunk, src, sizeof(T) * static_cast<std::size_t>(len));
  }
};

// The place of the first element that equals the extreme, whatever the sign of a zero; without a number the
// first.
template <class Order, class T> inline Index PlaceInSpan(const T *src, Index len) {
  constexpr Index kChunk = Search<Order, T>::kChunk;
  if (len < kChunk) {
    const Padded<Order, T> padded(src, len);
    const Index place = PlaceInSpan<Order>(padded.chunk, kChunk);
    return place < len ? place : 0;
  }
  const Search<Order, T> search = Searched<Order>(src, len);
  const T best = search.Best();
  if (best == Worst(T(), Order())) {
    for (Index i = 0; i < len; ++i) {
      if (src[i] == best) return i;
    }
    return 0;
  }
  const Index number = search.Number(best);
  const Index start = (number + 1) * kChunk <= len ? number * kChunk : len - kChunk;
  return start + Search<Order, T>::Place(src + start, best);
}

// The lanes of shorts cannot count the chunks of every array.
template <class Order, class T> inline Index ExtremePlace(const T *src, Index len) {
  constexpr Index kSpan = Search<Order, T>::kSpan;
  Index place = PlaceInSpan<Order>(src, len < kSpan ? len : kSpan);
  for (Index start = kSpan; start < len; start += kSpan) {
    const Index other = start + PlaceInSpan<Order>(src + start, len - start < kSpan ? len - start : kSpan);
    if (Order::Of(src[other], src[place])) place = other;
  }
  return place;
}

// The value of an array of at least one register; the last one reaches back over the one before it. The
// registers with the extremes so far come second: a not-a-number element beats nothing.
template <class Order, class T> inline T Best(const T *src, Index len) {
  constexpr Index kCount = kRegisterBytes / sizeof(T);
  constexpr int kChains = 4;
  using Values = Vec<T, static_cast<int>(kCount)>;
  const Choose<Order> choose;
  Values best[kChains];
  for (Values &x : best) x = Values{} + Worst(T(), Order());
  Index i = 0;
  for (; i + kChains * kCount <= len; i += kChains * kCount) {
    Unroll<kChains>([&](auto c) { best[c] = choose(Load<Values>(src + i + c * kCount), best[c]); });
  }
  for (; i + kCount <= len; i += kCount) best[0] = choose(Load<Values>(src + i), best[0]);
  best[1] = choose(Load<Values>(src + len - kCount), best[1]);
  return OfAllLanes<T>(choose(choose(best[0], best[1]), choose(best[2], best[3])), choose);
}

// The value alone needs no place, unless it could have come from different elements: from a zero of either
// sign, or from the start of the search.
template <class Order, class T> inline T Extreme(const T *src, Index len) {
  T best;
  if (len < kRegisterBytes / static_cast<Index>(sizeof(T))) {
    const Padded<Order, T> padded(src, len);
    best = Best<Order>(padded.chunk, Search<Order, T>::kChunk);
  } else {
    best = Best<Order>(src, len);
  }
  return best == T(0) || best == Worst(T(), Order()) ? src[ExtremePlace<Order>(src, len)] : best;
}

template <class Order, class T> inline void ExtremeAndPlace(const T *src, int len, T *result, int *index) {
  const Index place = ExtremePlace<Order>(src, len);
  *result = src[place];
  *index = static_cast<int>(place);
}

template <class T> void Max(const T *src, int len, T *result) { *result = Extreme<Above>(src, len); }
template <class T> void Min(const T *src, int len, T *result) { *result = Extreme<Below>(src, len); }
template <class T> void MaxIndx(const T *src, int len, T *result, int *index) {
  ExtremeAndPlace<Above>(src, len, result, index);
}
template <class T> void MinIndx(const T *src, int len, T *result, int *index) {
  ExtremeAndPlace<Below>(src, len, result, index);
}

// Sums. Scalar i goes to lane i mod kSumLanes, and the lanes are folded in halves, so that the result does
// not depend on the width of a register. Complex arrays are interleaved scalars; their lanes fold to a pair.
constexpr int kPer = kRegisterBytes / static_cast<int>(sizeof(double));
using Doubles = Vec<double, kPer>;
[[gnu::always_inline]] inline Doubles LoadWide(const double *x) { return Load<Doubles>(x); }
[[gnu::always_inline]] inline Doubles LoadWide(const float *x) { return Widened(Load<Vec<float, kPer>>(x)); }

inline Vec<std::int64_t, kPer> NumberedLanes() {
  Vec<std::int64_t, kPer> number;
  for (int j = 0; j < kPer; ++j) number[j] = j;
  return number;
}

template <int kHalf, class D> [[gnu::always_inline]] inline void FoldRegisters(D *lane) {
  if constexpr (kHalf > 0) {
    Unroll<kHalf>([&](auto r) { lane[r] += lane[r + kHalf]; });
    FoldRegisters<kHalf / 2>(lane);
  }
}

template <int kRegisters> [[gnu::always_inline]] inline Vec<double, 2> FoldedToTwo(Doubles *lane) {
  FoldRegisters<kRegisters / 2>(lane);
  return Folded<2, kPer>(lane[0], [](auto a, auto b) { return a + b; });
}
template <int kRegisters> [[gnu::always_inline]] inline double FoldedToOne(Doubles *lane) {
  const Vec<double, 2> pair = FoldedToTwo<kRegisters>(lane);
  return pair[0] + pair[1];
}

// Adds whole blocks of kSumLanes elements to the lanes of some registers, kAtOnce from kFirst on.
template <int kFirst, int kAtOnce, class T, class F>
[[gnu::always_inline]] inline void AddBlocks(const T *src, Index len, F term, Doubles *lane) {
  Doubles sum[kAtOnce];
  Unroll<kAtOnce>([&](auto r) { sum[r] = lane[kFirst + r]; });
  for (Index i = 0; i < len; i += kSumLanes) {
    Unroll<kAtOnce>([&](auto r) { sum[r] += term(LoadWide(src + i + (kFirst + r) * kPer)); });
  }
  Unroll<kAtOnce>([&](auto r) { lane[kFirst + r] = sum[r]; });
}
template <int kFirst, int kAtOnce, class T, class F>
[[gnu::noinline]] void AddBlocksApart(const T *src, Index len, F term, Doubles *lane) {
  AddBlocks<kFirst, kAtOnce>(src, len, term, lane);
}

// The lanes folded to two. What is in registers stays there: a fold in memory takes as long as the sum of a
// hundred elements. Where the lanes are too many for the registers, half of them go over a part of the array
// that stays in the cache, and then the other half.
template <class T, class F>
[[gnu::always_inline]] inline Vec<double, 2> Folds(const T *src, Index len, F term) {
  constexpr int kRegisters = kSumLanes / kPer, kMost = 8;
  constexpr Index kPart = 1024;
  Doubles lane[kRegisters] = {};
  const Index whole = len - len % kSumLanes, rest = len - whole;
  if constexpr (kRegisters <= kMost) {
    AddBlocks<0, kRegisters>(src, whole, term, lane);
  } else {
    for (Index start = 0; start < whole; start += kPart) {
      const Index part = whole - start < kPart ? whole - start : kPart;
      AddBlocksApart<0, kRegisters / 2>(src + start, part, term, lane);
      AddBlocksApart<kRegisters / 2, kRegisters / 2>(src + start, part, term, lane);
    }
  }
  // A lane is never -0, so that a zero added to it changes nothing.
  if (rest > 0) {
    T block[kSumLanes] = {};
    __builtin_memcpy(block, src + whole, sizeof(T) * static_cast<std::size_t>(rest));
    const Vec<std::int64_t, kPer> number = NumberedLanes();
    Unroll<kRegisters>(
        [&](auto r) { lane[r] += number < rest - r * kPer ? term(LoadWide(block + r * kPer)) : Doubles{}; });
  }
  return FoldedToTwo<kRegisters>(lane);
}

template <class T, class F> inline double Total(const T *src, Index len, F term) {
  const Vec<double, 2> pair = Folds(src, len, term);
  return pair[0] + pair[1];
}
template <class T> inline double Total(const T *src, Index len) {
  return Total(src, len, [](auto x) { return x; });
}
template <class C> inline Cplx64 CplxTotal(const C *src, Index len) {
  const Vec<double, 2> pair = Folds(&src->re, 2 * len, [](auto x) { return x; });
  return {pair[0], pair[1]};
}

template <class T> void Sum(const T *src, int len, T *result) { *result = static_cast<T>(Total(src, len)); }
template <class T> void Mean(const T *src, int len, T *result) {
  *result = static_cast<T>(Total(src, len) / static_cast<double>(len));
}

inline void Narrow(Cplx64 x, Cplx32 *result) {
  *result = {static_cast<float>(x.re), static_cast<float>(x.im)};
}
inline void Narrow(Cplx64 x, Cplx64 *result) { *result = x; }
template <class C> inline void CplxMean(const C *src, int len, C *result) {
  const Cplx64 total = CplxTotal(src, len);
  const double count = static_cast<double>(len);
  Narrow({total.re / count, total.im / count}, result);
}
void Sum(const Cplx32 *src, int len, Cplx32 *result) { Narrow(CplxTotal(src, len), result); }
void Sum(const Cplx64 *src, int len, Cplx64 *result) { Narrow(CplxTotal(src, len), result); }
void Mean(const Cplx32 *src, int len, Cplx32 *result) { CplxMean(src, len, result); }
void Mean(const Cplx64 *src, int len, Cplx64 *result) { CplxMean(src, len, result); }

// Integers sum exactly in 64 bits: there are less than 2^31 of them. Words of one or two of them are split
// into halves of 16 bits, each of which, made positive by its sign bit, goes to a lane of 32 bits; a lane is
// emptied before it could overflow.
template <class T> class IntegerSum {
  static constexpr int kV = kRegisterBytes / 4;
  static constexpr bool kPairs = sizeof(T) == 2;
  using Words = Vec<std::uint32_t, kV>;
  using Wide = Vec<std::uint64_t, kV / 2>;

public:
  static constexpr Index kStep = kRegisterBytes / sizeof(T);

  // Of whole steps.
  [[gnu::always_inline]] void Add(const T *src, Index len) {
    constexpr Index kMost = 65535 * kStep;
    for (Index start = 0; start < len; start += kMost) {
      const Index end = len - start < kMost ? len : start + kMost;
      Words low{}, high{};
      QORN_UNROLLED
      for (Index i = start; i < end; i += kStep) {
        const Words word = Load<Words>(src + i) ^ (kPairs ? 0x80008000U : 0x80000000U);
        low += word & 0xFFFFU;
        high += word >> 16;
      }
      m_sum += InPairs(low) + (kPairs ? InPairs(high) : InPairs(high) << 16);
    }
    m_count += len;
  }
  long long Value() const {
    constexpr long long kOffset = 1LL << (8 * sizeof(T) - 1);
    const auto pair = Folded<2, kV / 2>(m_sum, [](auto x, auto y) { return x + y; });
    return static_cast<long long>(pair[0] + pair[1]) - m_count * kOffset;
  }

private:
  static Wide InPairs(Words x) {
    const auto both = __builtin_bit_cast(Wide, x);
    return (both & 0xFFFFFFFFU) + (both >> 32);
  }
  Wide m_sum{};
  long long m_count = 0;
};

template <class T>
inline void SaturatedSum(const T *src, Index len, T *result, long long low, long long high) {
  constexpr Index kStep = IntegerSum<T>::kStep;
  IntegerSum<T> total;
  const Index whole = len - len % kStep, rest = len - whole;
  if (whole > 0) total.Add(src, whole);
  if (rest > 0) {
    T block[kStep] = {};
    __builtin_memcpy(block, src + whole, sizeof(T) * static_cast<std::size_t>(rest));
    total.Add(block, kStep);
  }
  const long long sum = total.Value();
  *result = static_cast<T>(sum > high ? high : sum < low ? low : sum);
}
void Sum(const short *src, int len, short *result) { SaturatedSum(src, len, result, -32768, 32767); }
void Sum(const int *src, int len, int *result) {
  SaturatedSum(src, len, result, -2147483648LL, 2147483647LL);
}

// Sums of x - centre and of its square over an array.
struct Moments {
  double first, second;
};

// In half the lanes of a sum, so that those of both sums stay in registers, which the compiler does not see
// in a plain loop.
constexpr int kMomentLanes = kSumLanes / 2;
constexpr int kMomentRegisters = kMomentLanes / kPer;

template <class T>
[[gnu::noinline]] void AddMoments(const T *src, Index len, double centre, Moments *moments) {
  Doubles firsts[kMomentRegisters] = {}, seconds[kMomentRegisters] = {};
  const Doubles centres = Broadcast<Doubles>(centre);
  const Index whole = len - len % kMomentLanes, rest = len - whole;
  for (Index i = 0; i < whole; i += kMomentLanes) {
    Unroll<kMomentRegisters>([&](auto r) {
      const Doubles x = LoadWide(src + i + r * kPer) - centres;
      firsts[r] += x;
      seconds[r] += x * x;
    });
  }
  // As in a sum, zeros change no lane, and what is in registers is folded there.
  if (rest > 0) {
    T block[kMomentLanes] = {};
    __builtin_memcpy(block, src + whole, sizeof(T) * static_cast<std::size_t>(rest));
    const Vec<std::int64_t, kPer> number = NumberedLanes();
    Unroll<kMomentRegisters>([&](auto r) {
      const Doubles x = number < rest - r * kPer ? LoadWide(block + r * kPer) - centres : Doubles{};
      firsts[r] += x;
      seconds[r] += x * x;
    });
  }
  moments->first += FoldedToOne<kMomentRegisters>(firsts);
  moments->second += FoldedToOne<kMomentRegisters>(seconds);
}

// What overflowed or vanished stays as it is.
inline double Without(double sum, double part) { return part < sum ? sum - part : sum; }

// In two passes.
template <class T> inline double SquaresOfAll(const T *src, Index len) {
  const double mean = Total(src, len) / static_cast<double>(len);
  return Total(src, len, [mean](auto x) { return Rounded((x - mean) * (x - mean)); });
}

// The centre is the mean of the elements so far: of the first block, which is read twice, and then of blocks
// that are no longer than all before them. So the squares about the centre add up to at most twice those
// about the mean, and what the centre is off is taken away without a loss of digits. The array comes from
// memory once.
constexpr Index kFirstBlock = 1024;

template <class T> inline double SquaresInBlocks(const T *src, Index len) {
  Index done = 0, block = kFirstBlock;
  double centre = Total(src, block) / static_cast<double>(block);
  Moments moments = {};
  while (true) {
    AddMoments(src + done, block, centre, &moments);
    done += block;
    const double shift = moments.first / static_cast<double>(done);
    if (done == len) return Without(moments.second, shift * moments.first);
    const double moved = centre + shift, step = moved - centre;
    const double left = moments.first - Rounded(static_cast<double>(done) * step);
    moments = {left, Without(moments.second, step * (moments.first + left))};
    centre = moved;
    block = done < len - done ? done : len - done;
  }
}

template <class T> void StdDev(const T *src, int len, T *result) {
  if (len < 2) return;
  double squares = len <= kFirstBlock ? SquaresOfAll(src, len) : SquaresInBlocks(src, len);
  // Wherever an infinity stands.
  if (len > kFirstBlock && !(squares < __builtin_inf())) squares = SquaresOfAll(src, len);
  *result = static_cast<T>(__builtin_sqrt(squares / static_cast<double>(len - 1)));
}

template <class T> inline double Norm(const T *src, Index len) {
  return __builtin_sqrt(Total(src, len, [](auto x) { return Rounded(x * x); }));
}
template <class T> void NormL2(const T *src, int len, T *result) { *result = static_cast<T>(Norm(src, len)); }
void NormL2(const Cplx32 *src, int len, double *result) { *result = Norm(&src->re, 2 * Index{len}); }
void NormL2(const Cplx64 *src, int len, double *result) { *result = Norm(&src->re, 2 * Index{len}); }

} // namespace

#define QORN_FAMILY "Reduce.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
