#include "Registers.h"
#include "infra/kernels/Lanes.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// A kernel call for each block would take longer than a short block itself. So each block is brought down to
// one narrow vector, and the vectors of a few blocks together to their results. A block is read in rows, no
// wider than it needs. What the last row of a sum lacks is replaced by what changes nothing; that of a search
// reaches back over the one before it.

// The first count elements from p on, and `other` in the lanes beyond. Nothing is read from end on. Masked
// loads would do without the comparison with end, but long signals then come from memory several times as
// slowly.
template <int kL>
[[gnu::always_inline]] inline Vec<float, kL> LoadPart(const float *p, Index count, const float *end,
                                                      float other) {
  using F = Vec<float, kL>;
  F x = {};
  if (end - p >= kL) {
    x = Load<F>(p);
  } else {
    float part[kL] = {};
    for (Index i = 0; i < kL && i < count; ++i) part[i] = p[i];
    x = Load<F>(part);
  }
  Vec<std::int32_t, kL> lane;
  for (int j = 0; j < kL; ++j) lane[j] = j;
  return lane < static_cast<std::int32_t>(count < kL ? count : kL) ? x : Broadcast<F>(other);
}

// Sums in double, in the lanes and with the order of every sum of the library.

struct Value {
  template <class E> static E Of(E x) { return x; }
};
struct Square {
  template <class E> static E Of(E x) { return Rounded(x * x); }
};

// kWidth lanes, of which those of absent elements are zeros.
template <class Term, int kWidth> struct Sums {
  static constexpr int kL = kLanes<double, kWidth>;
  static constexpr int kN = kWidth / kL;
  using D = Vec<double, kL>;
  using F = Vec<float, kL>;
  D lane[kN] = {};

  [[gnu::always_inline]] void Add(const float *x, Index len, const float *end) {
    for (; len >= kWidth; len -= kWidth, x += kWidth) {
      Unroll<kN>([&](auto k) { lane[k] += Term::Of(Widened(Load<F>(x + k * kL))); });
    }
    Unroll<kN>([&](auto k) {
      if (len > k * kL) lane[k] += Term::Of(Widened(LoadPart<kL>(x + k * kL, len - k * kL, end, 0.0F)));
    });
  }

  template <int kRegisters> [[gnu::always_inline]] D Halved() {
    if constexpr (kRegisters > 1) {
      Unroll<kRegisters / 2>([&](auto k) { lane[k] += lane[k + kRegisters / 2]; });
      return Halved<kRegisters / 2>();
    }
    return lane[0];
  }

  // Lane j and lane j + half of them, down to the last two. The registers by constants: GCC keeps in memory
  // what a loop over some of them adds up.
  [[gnu::always_inline]] Vec<double, 2> Pair() {
    return Folded<2, kL>(Halved<kN>(), [](auto a, auto b) { return a + b; });
  }
};

// The sums of count blocks, whose elements end at end.
template <class Term, int kWidth>
void SumsOf(const float *src, Index ratio, int count, const float *end, double *sum) {
  const auto pair = [=](int b) {
    Sums<Term, kWidth> sums;
    sums.Add(src + b * ratio, ratio, end);
    return sums.Pair();
  };
  int b = 0;
  for (; b + 2 <= count; b += 2) {
    const Vec<double, 2> first = pair(b), second = pair(b + 1);
    Store(sum + b,
          __builtin_shufflevector(first, second, 0, 2) + __builtin_shufflevector(first, second, 1, 3));
  }
  if (b < count) {
    const Vec<double, 2> last = pair(b);
    sum[b] = last[0] + last[1];
  }
}

template <class Term> void SumsOf(const float *src, Index ratio, int count, const float *end, double *sum) {
  static_assert(kSumLanes == 32);
  if (ratio <= 2) return SumsOf<Term, 2>(src, ratio, count, end, sum);
  if (ratio <= 4) return SumsOf<Term, 4>(src, ratio, count, end, sum);
  if (ratio <= 8) return SumsOf<Term, 8>(src, ratio, count, end, sum);
  if (ratio <= 16) return SumsOf<Term, 16>(src, ratio, count, end, sum);
  return SumsOf<Term, 32>(src, ratio, count, end, sum);
}

constexpr int kGroup = 64;

template <class Term, class Finish>
void DetectSums(const float *src, Index ratio, float *dst, Index blocks, Finish finish) {
  double sum[kGroup];
  for (Index start = 0; start < blocks; start += kGroup) {
    const int count = static_cast<int>(blocks - start < kGroup ? blocks - start : kGroup);
    SumsOf<Term>(src + start * ratio, ratio, count, src + blocks * ratio, sum);
    for (int b = 0; b < count; ++b) dst[start + b] = static_cast<float>(finish(sum[b]));
  }
}

void DetectMeans(const float *src, int ratio, float *dst, int blocks) {
  DetectSums<Value>(src, ratio, dst, blocks,
                    [count = static_cast<double>(ratio)](double sum) { return sum / count; });
}
void DetectNorms(const float *src, int ratio, float root, float *dst, int blocks) {
  DetectSums<Square>(src, ratio, dst, blocks,
                     [root](double sum) { return static_cast<float>(__builtin_sqrt(sum)) / root; });
}

void AddPiece(const float *src, int len, double *lanes) {
  Sums<Value, kSumLanes> sums;
  __builtin_memcpy(sums.lane, lanes, sizeof sums.lane);
  sums.Add(src, len, src + len);
  __builtin_memcpy(lanes, sums.lane, sizeof sums.lane);
}
float FoldedMean(const double *lanes, int count) {
  Sums<Value, kSumLanes> sums;
  __builtin_memcpy(sums.lane, lanes, sizeof sums.lane);
  const Vec<double, 2> pair = sums.Pair();
  return static_cast<float>((pair[0] + pair[1]) / static_cast<double>(count));
}

// Extremes. The search starts from what every number beats, and not-a-number beats nothing.
struct Above {
  static constexpr float kWorst = -__builtin_inff();
  template <class E> static E Of(E x, E best) { return x > best ? x : best; }
};
struct Below {
  static constexpr float kWorst = __builtin_inff();
  template <class E> static E Of(E x, E best) { return x < best ? x : best; }
};

enum class Rows { kOne, kTwo, kMore };

// The extreme in each of four lanes, of a block of one row, or a part of it, of two or of any number of them.
// Rows are read in their order, and by the same few instructions in all blocks of more than two: from memory,
// which is then read ahead, half as fast again.
template <class Order, int kL, Rows kRows>
[[gnu::always_inline]] inline Vec<float, 4> BestFour(const float *x, Index len, const float *end) {
  using F = Vec<float, kL>;
  const F worst = Broadcast<F>(Order::kWorst);
  const auto order = [](auto a, auto b) { return Order::Of(a, b); };
  if constexpr (kRows == Rows::kOne) {
    const F row = len < kL ? LoadPart<kL>(x, len, end, Order::kWorst) : Load<F>(x);
    return Folded<4, kL>(Order::Of(row, worst), order);
  }
  if constexpr (kRows == Rows::kTwo)
    return Folded<4, kL>(Order::Of(Load<F>(x + len - kL), Order::Of(Load<F>(x), worst)), order);
  F best[4] = {worst, worst, worst, worst}; // chains of comparisons at once
  for (; len >= 4 * kL; len -= 4 * kL, x += 4 * kL) {
    Unroll<4>([&](auto k) { best[k] = Order::Of(Load<F>(x + k * kL), best[k]); });
  }
  Unroll<3>([&](auto k) {
    if (len > (k + 1) * kL) best[k] = Order::Of(Load<F>(x + k * kL), best[k]);
  });
  best[3] = Order::Of(Load<F>(x + len - kL), best[3]);
  return Folded<4, kL>(Order::Of(Order::Of(best[0], best[1]), Order::Of(best[2], best[3])), order);
}

// Where different elements could have given the value, a zero of either sign or the start of the search, the
// first one counts, and without a number the first of all.
template <class Order> inline float Settled(float best, const float *x, Index len) {
  if (best != 0.0F && best != Order::kWorst) return best;
  for (Index i = 0; i < len; ++i) {
    if (x[i] == best) return x[i];
  }
  return x[0];
}

template <class Order, int kL, Rows kRows>
void ExtremesOf(const float *src, Index ratio, int count, const float *end, float *best) {
  const auto four = [=](int b) __attribute__((always_inline)) {
    return BestFour<Order, kL, kRows>(src + b * ratio, ratio, end);
  };
  const auto folded = [](Vec<float, 4> x, Vec<float, 4> y) {
    return Order::Of(__builtin_shufflevector(x, y, 0, 1, 4, 5), __builtin_shufflevector(x, y, 2, 3, 6, 7));
  };
  int b = 0;
  for (; b + 4 <= count; b += 4) {
    Vec<float, 4> each[4];
    if constexpr (kRows == Rows::kMore) {
#pragma GCC unroll 1
      for (int j = 0; j < 4; ++j) each[j] = four(b + j);
    } else {
      Unroll<4>([&](auto j) { each[j] = four(b + j); });
    }
    const auto x = folded(each[0], each[1]), y = folded(each[2], each[3]);
    Store(best + b,
          Order::Of(__builtin_shufflevector(x, y, 0, 2, 4, 6), __builtin_shufflevector(x, y, 1, 3, 5, 7)));
  }
  for (; b < count; ++b) {
    const Vec<float, 4> x = four(b);
    best[b] = Order::Of(Order::Of(x[0], x[1]), Order::Of(x[2], x[3]));
  }
  int doubtful = 0;
  for (b = 0; b < count; ++b) doubtful |= (best[b] == 0.0F) | (best[b] == Order::kWorst);
  for (b = 0; b < count && doubtful != 0; ++b) best[b] = Settled<Order>(best[b], src + b * ratio, ratio);
}

template <class Order, int kL = 4>
void ExtremesOf(const float *src, Index ratio, int count, const float *end, float *best) {
  if (kL == 4 && ratio <= kL) return ExtremesOf<Order, 4, Rows::kOne>(src, ratio, count, end, best);
  if (ratio <= 2 * kL) return ExtremesOf<Order, kL, Rows::kTwo>(src, ratio, count, end, best);
  if constexpr (kL < kRegisterBytes / static_cast<int>(sizeof(float))) {
    return ExtremesOf<Order, 2 * kL>(src, ratio, count, end, best);
  } else {
    return ExtremesOf<Order, kL, Rows::kMore>(src, ratio, count, end, best);
  }
}

// One point of a block for each order. Groups are short enough to be in the nearest caches for the second.
template <int kPoints, class... Orders>
void DetectExtremes(const float *src, int ratio, float *dst, int blocks) {
  constexpr Index kSamples = 4096;
  float best[kPoints][kGroup];
  const Index wanted = kSamples / ratio / 4 * 4;
  const Index group = wanted > kGroup ? kGroup : wanted < 1 ? 1 : wanted;
  for (Index start = 0; start < blocks; start += group) {
    const int count = static_cast<int>(blocks - start < group ? blocks - start : group);
    const float *const block = src + start * ratio, *const end = src + Index{blocks} * ratio;
    int point = 0;
    (ExtremesOf<Orders>(block, ratio, count, end, kPoints == 1 ? dst + start : best[point++]), ...);
    if constexpr (kPoints == 1) continue;
    for (int b = 0; b < count; ++b) {
      for (int k = 0; k < kPoints; ++k) dst[(start + b) * kPoints + k] = best[k][b];
    }
  }
}

} // namespace

#define QORN_FAMILY "Detect.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
