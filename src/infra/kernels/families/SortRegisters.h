// Sorting with registers, as in vectorised quicksorts (J. Wassenberg et al.: Vectorized and
// performance-portable quicksort, 2022): partitions that rearrange registers, and sorting networks for what
// fits into sixteen of them. Included by Sort.cpp in the level's unnamed namespace, for its Keys and Pairs.

// GCC 12 takes the don't-care operands of its own intrinsics for uninitialised variables.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

// For each choice of lanes, the words of a register in the order that brings the chosen lanes to the front
// and keeps the others behind them.
template <int kLanes, int kWords> struct Orders {
  unsigned char word[1 << kLanes][8] = {};
  constexpr Orders() {
    for (int chosen = 0; chosen < 1 << kLanes; ++chosen) {
      int next = 0;
      for (int others = 0; others < 2; ++others) {
        for (int lane = 0; lane < kLanes; ++lane) {
          if ((chosen >> lane & 1) == others) continue;
          for (int w = 0; w < kWords; ++w) {
            word[chosen][next++] = static_cast<unsigned char>(lane * kWords + w);
          }
        }
      }
    }
  }
};
template <int kLanes, int kWords> constexpr Orders<kLanes, kWords> kOrders;

template <int kLanes, int kWords> inline __m128i OrderOf(unsigned chosen) {
  return _mm_loadl_epi64(reinterpret_cast<const __m128i *>(kOrders<kLanes, kWords>.word[chosen]));
}

// Eight words of 32 bits, in partitions. They serve the level of the wider registers as well, which has no
// faster way to rearrange sixteen.
struct Part32 {
  using Words = __m256i;
  static constexpr int kLanes = 8;

  static Words Load(const void *from) { return _mm256_loadu_si256(static_cast<const __m256i_u *>(from)); }
  static void Store(void *to, Words x) { _mm256_storeu_si256(static_cast<__m256i_u *>(to), x); }
  static Words All(int x) { return _mm256_set1_epi32(x); }
  static unsigned Signs(Words x) { return static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(x))); }
  static unsigned Below(Words x, Words y) { return Signs(_mm256_cmpgt_epi32(y, x)); }
  static Words InFront(unsigned chosen, Words x) {
    return _mm256_permutevar8x32_epi32(x, _mm256_cvtepu8_epi32(OrderOf<8, 1>(chosen)));
  }
};

#if defined(__AVX512F__)
#include "SortLanes512.h"
#else
#include "SortLanes256.h"
#endif

template <bool kIsNarrow> struct PartOf { using Type = Part64; };
template <> struct PartOf<true> { using Type = Part32; };
template <bool kIsNarrow> struct PlacesOf { using Type = PlacesOf64; };
template <> struct PlacesOf<true> { using Type = Part32; };

// Networks.

template <class L> inline void SortTwo(Register &a, Register &b) {
  const Register low = L::Min(a, b);
  b = L::Max(a, b);
  a = low;
}

// f(Number<0>()) to f(Number<kTimes - 1>()): a loop over registers must vanish, or they are not registers.
template <int kValue> struct Number { static constexpr int value = kValue; };
template <int kTimes, int kFirst = 0, class F> [[gnu::always_inline]] inline void Unrolled(F f) {
  if constexpr (kFirst < kTimes) {
    f(Number<kFirst>());
    Unrolled<kTimes, kFirst + 1>(f);
  }
}

// Batcher's odd-even mergesort across registers (D. E. Knuth: The Art of Computer Programming 3, 5.2.2): each
// lane becomes a sorted column. Sorted blocks of kBlock are merged, with comparisons at ever smaller
// distances.
template <class L, int kRegisters, int kBlock = 1, int kDistance = 1>
[[gnu::always_inline]] inline void SortColumns(Register (&x)[kRegisters]) {
  if constexpr (kBlock < kRegisters) {
    Unrolled<kRegisters>([&](auto number) __attribute__((always_inline)) {
      constexpr int kLower = number.value, kUpper = kLower + kDistance;
      constexpr int kStart = kDistance == kBlock ? 0 : kDistance;
      constexpr bool kCompares = kLower >= kStart && ((kLower - kStart) & kDistance) == 0 &&
                                 kUpper < kRegisters && kLower / (2 * kBlock) == kUpper / (2 * kBlock);
      if constexpr (kCompares) SortTwo<L>(x[kLower], x[kUpper]);
    });
    if constexpr (kDistance > 1) {
      SortColumns<L, kRegisters, kBlock, kDistance / 2>(x);
    } else {
      SortColumns<L, kRegisters, 2 * kBlock, 2 * kBlock>(x);
    }
  }
}

// Bitonic sequences down the registers to sorted ones.
template <class L, int kRegisters, int kDistance = kRegisters / 2>
[[gnu::always_inline]] inline void MergeColumns(Register (&x)[kRegisters]) {
  if constexpr (kDistance > 0) {
    Unrolled<kRegisters>([&](auto number) __attribute__((always_inline)) {
      constexpr int kLower = number.value;
      if constexpr ((kLower & kDistance) == 0) SortTwo<L>(x[kLower], x[kLower + kDistance]);
    });
    MergeColumns<L, kRegisters, kDistance / 2>(x);
  }
}

// The lanes in whose number that bit is clear.
constexpr unsigned ClearIn(unsigned bit) {
  unsigned lanes = 0;
  for (unsigned lane = 0; lane < 16; ++lane) lanes |= (lane & bit) == 0 ? 1U << lane : 0U;
  return lanes;
}

// Lanes at a distance, each against the other in the same register.
template <class L, int kDistance, int kRegisters>
[[gnu::always_inline]] inline void MergeLanes(Register (&x)[kRegisters]) {
  if constexpr (kDistance > 0) {
    Unrolled<kRegisters>([&](auto number) __attribute__((always_inline)) {
      constexpr int i = number.value;
      x[i] = L::template MinMax<ClearIn(kDistance)>(x[i], L::template Crossed<kDistance>(x[i]));
    });
    MergeLanes<L, kDistance / 2>(x);
  }
}

// Neighbouring groups of kGroup / 2 sorted lanes become sorted groups of kGroup lanes, the columns standing
// one behind the other: the second group is taken backwards, which makes each pair of groups bitonic.
template <class L, int kGroup, int kRegisters>
[[gnu::always_inline]] inline void MergeGroups(Register (&x)[kRegisters]) {
  if constexpr (kGroup <= L::kLanes) {
    Unrolled<(kRegisters + 1) / 2>([&](auto number) __attribute__((always_inline)) {
      constexpr int i = number.value, kOpposite = kRegisters - 1 - i;
      constexpr unsigned kLow = ClearIn(kGroup / 2);
      const Register upwards = L::template Crossed<kGroup - 1>(x[i]);
      const Register downwards = L::template Crossed<kGroup - 1>(x[kOpposite]);
      x[i] = L::template MinMax<kLow>(x[i], downwards);
      if constexpr (kOpposite != i) x[kOpposite] = L::template MinMax<kLow>(x[kOpposite], upwards);
    });
    MergeLanes<L, kGroup / 4>(x);
    MergeColumns<L>(x);
    MergeGroups<L, 2 * kGroup>(x);
  }
}

// Columns to rows: zipped as often as there are bits in a register's number.
template <class L, int kTimes, int kRegisters>
[[gnu::always_inline]] inline void Transpose(Register (&x)[kRegisters]) {
  if constexpr (kTimes > 1) {
    Register y[kRegisters];
    Unrolled<kRegisters / 2>([&](auto number) __attribute__((always_inline)) {
      constexpr int i = number.value;
      y[2 * i] = x[i];
      y[2 * i + 1] = x[i + kRegisters / 2];
      L::Zip(y[2 * i], y[2 * i + 1]);
    });
    Unrolled<kRegisters>([&](auto number)
                             __attribute__((always_inline)) { x[number.value] = y[number.value]; });
    Transpose<L, kTimes / 2>(x);
  }
}

// Sorts all lanes of all registers, in the order of the registers.
template <class L, int kRegisters> [[gnu::always_inline]] inline void SortNetwork(Register (&x)[kRegisters]) {
  SortColumns<L>(x);
  MergeGroups<L, 2>(x);
  Transpose<L, kRegisters>(x);
}

// What fits into some registers.

template <class F> inline constexpr bool kNarrow = sizeof(typename F::Value) == 4;

template <bool kIsNarrow> struct NetworkOf { using Type = Lanes64; };
template <> struct NetworkOf<true> { using Type = Lanes32; };

template <class A> struct Network;

template <class F> struct Network<Keys<F>> {
  using L = typename NetworkOf<kNarrow<F>>::Type;
  static constexpr int kLanes = L::kLanes;

  template <int kRegisters> static void SortIn(Keys<F> a, Index n) {
    Register x[kRegisters];
    Unrolled<kRegisters>([&](auto r) __attribute__((always_inline)) {
      x[r.value] = L::Load(a.keys + r.value * kLanes, n - r.value * kLanes);
    });
    SortNetwork<L>(x);
    Unrolled<kRegisters>([&](auto r) __attribute__((always_inline)) {
      L::Store(a.keys + r.value * kLanes, n - r.value * kLanes, x[r.value]);
    });
  }
};

// The network sorts keys and places joined to words of 64 bits.
template <class F>
requires kNarrow<F>
struct Network<Pairs<F>> {
  static constexpr int kLanes = Lanes32::kLanes;

  template <int kRegisters> static void SortIn(Pairs<F> a, Index n) {
    Register x[2 * kRegisters];
    Unrolled<kRegisters>([&](auto r) __attribute__((always_inline)) {
      constexpr int kFirst = r.value * kLanes;
      Lanes64::Join(Lanes32::Load(a.keys + kFirst, n - kFirst), Lanes32::Load(a.places + kFirst, n - kFirst),
                    x[2 * r.value], x[2 * r.value + 1]);
    });
    SortNetwork<Lanes64>(x);
    Unrolled<kRegisters>([&](auto r) __attribute__((always_inline)) {
      constexpr int kFirst = r.value * kLanes;
      Register keys, places;
      Lanes64::Split(x[2 * r.value], x[2 * r.value + 1], keys, places);
      Lanes32::Store(a.keys + kFirst, n - kFirst, keys);
      Lanes32::Store(a.places + kFirst, n - kFirst, places);
    });
  }
};

// Partitions.

// A few items: their loads and stores, the lanes of those that are below others, and the items with chosen
// lanes at the front.
template <class A> struct Few;

template <class F> struct Few<Keys<F>> {
  using A = Keys<F>;
  using P = typename PartOf<kNarrow<F>>::Type;
  using Items = typename P::Words;
  static constexpr int kLanes = P::kLanes;

  static Items Load(A a, Index i) { return P::Load(a.keys + i); }
  static void Store(A a, Index i, Items x) { P::Store(a.keys + i, x); }
  static Items All(typename A::Item x) { return P::All(x); }
  static unsigned Below(Items x, Items y) { return P::Below(x, y); }
  static Items InFront(unsigned chosen, Items x) { return P::InFront(chosen, x); }
};

template <class F> struct Few<Pairs<F>> {
  using A = Pairs<F>;
  using P = typename PartOf<kNarrow<F>>::Type;
  using Q = typename PlacesOf<kNarrow<F>>::Type;
  struct Items {
    typename P::Words keys;
    typename Q::Words places;
  };
  static constexpr int kLanes = P::kLanes;

  static Items Load(A a, Index i) { return {P::Load(a.keys + i), Q::Load(a.places + i)}; }
  static void Store(A a, Index i, Items x) {
    P::Store(a.keys + i, x.keys);
    Q::Store(a.places + i, x.places);
  }
  static Items All(typename A::Item x) { return {P::All(x.key), Q::All(x.place)}; }
  static unsigned Below(Items x, Items y) {
    if constexpr (kNarrow<F>) {
      const __m256i equal = _mm256_cmpeq_epi32(x.keys, y.keys);
      const __m256i before = _mm256_and_si256(equal, _mm256_cmpgt_epi32(y.places, x.places));
      return P::Signs(_mm256_or_si256(_mm256_cmpgt_epi32(y.keys, x.keys), before));
    } else {
      return P::Below(x.keys, y.keys) | (P::Equal(x.keys, y.keys) & Q::Below(x.places, y.places));
    }
  }
  static Items InFront(unsigned chosen, Items x) {
    return {P::InFront(chosen, x.keys), Q::InFront(chosen, x.places)};
  }
};

// What Introsort needs of a way of sorting.
template <class A> struct ByRegisters {
  using L = Few<A>;
  using Item = typename A::Item;
  using Items = typename L::Items;
  static constexpr int kAtOnce = kShortest / 16;
  static constexpr Index kStep = kAtOnce * L::kLanes;
  static constexpr unsigned kAllLanes = (1U << L::kLanes) - 1;
  static constexpr Index kShort = kShortest; // at least two steps

  static void SortShort(A a, Index n) {
    if constexpr (requires { Network<A>::kLanes; }) {
      using N = Network<A>;
      if (n <= N::kLanes) return N::template SortIn<1>(a, n);
      if (n <= 2 * N::kLanes) return N::template SortIn<2>(a, n);
      if (n <= 4 * N::kLanes) return N::template SortIn<4>(a, n);
      if (n <= 8 * N::kLanes) return N::template SortIn<8>(a, n);
      if constexpr (16 * N::kLanes <= kShort) return N::template SortIn<16>(a, n);
    } else {
      Introsort<ByItems<A>>(a, n, 2 * 7);
    }
  }

  // The median of a sample, one item at a place by chance of each of as many parts of the array.
  static Item Pivot(A a, Index n) {
    constexpr int kMost = 64;
    typename A::template Buffer<kMost> buffer;
    const int count = n < 1024 ? 16 : kMost;
    const Index part = n / count;
    std::uint32_t random = static_cast<std::uint32_t>(n);
    const A sample = buffer.Array();
    for (int i = 0; i < count; ++i) {
      random = random * 1664525U + 1013904223U;
      sample.Put(i, a.Get(i * part + static_cast<Index>(
                                         (std::uint64_t{random} * static_cast<std::uint64_t>(part)) >> 32)));
    }
    SortShort(sample, count);
    return sample.Get(count / 2);
  }

  static Index PartitionBelow(A a, Index n, Item pivot) {
    return Partition(
        a, n, pivot, [](auto x, auto p) __attribute__((always_inline)) { return L::Below(x, p); },
        [](Item x, Item p) __attribute__((always_inline)) { return A::Less(x, p); });
  }
  static Index PartitionNotAbove(A a, Index n, Item pivot) {
    return Partition(
        a, n, pivot, [](auto x, auto p) __attribute__((always_inline)) { return kAllLanes ^ L::Below(p, x); },
        [](Item x, Item p) __attribute__((always_inline)) { return !A::Less(p, x); });
  }

  // In place: both ends are taken into registers, which leaves room at both ends of what has not been read.
  // One reads at the end with less room, a step ahead of what is written, and so finds at least a step's room
  // at both when it writes. What is written is a whole group of items at either end, of which those that
  // belong to the other end are written over later; the last group is the same at both.
  template <class Before, class ItemBefore>
  static Index Partition(A a, Index n, Item pivot, Before before, ItemBefore itemBefore) {
    constexpr int kLanes = L::kLanes;
    const Items pivots = L::All(pivot);
    const Index whole = n - n % kLanes;
    Index readFront = kStep, readBack = whole - kStep, writeFront = 0, unwritten = whole;
    const auto write = [&](Items x) __attribute__((always_inline)) {
      const unsigned front = before(x, pivots);
      const Items ordered = L::InFront(front, x);
      unwritten -= kLanes;
      L::Store(a, writeFront, ordered);
      L::Store(a, writeFront + unwritten, ordered);
      writeFront += static_cast<Index>(static_cast<unsigned>(__builtin_popcount(front)));
    };
    // Which end it is cannot be foretold, so there is no branch: all ones or none.
    const auto read = [&](Items * x) __attribute__((always_inline)) {
      const Index writeBack = writeFront + unwritten;
      const Index atFront = -static_cast<Index>(readFront - writeFront <= writeBack - readBack);
      readBack -= kStep & ~atFront;
      const Index at = (readFront & atFront) | (readBack & ~atFront);
      readFront += kStep & atFront;
      for (int r = 0; r < kAtOnce; ++r) x[r] = L::Load(a, at + r * kLanes);
    };
    const auto leavesStep = [&]() __attribute__((always_inline)) { return readBack - readFront >= kStep; };
    Items kept[4 * kAtOnce];
    int count = 0;
    for (; count < kAtOnce; ++count) {
      kept[count] = L::Load(a, count * kLanes);
      kept[kAtOnce + count] = L::Load(a, readBack + count * kLanes);
    }
    count = 2 * kAtOnce;
    if (leavesStep()) {
      Items x[kAtOnce], next[kAtOnce];
      read(x);
      while (leavesStep()) {
        read(next);
        for (int r = 0; r < kAtOnce; ++r) write(x[r]);
        for (int r = 0; r < kAtOnce; ++r) x[r] = next[r];
      }
      for (int r = 0; r < kAtOnce; ++r) kept[count++] = x[r];
    }
    for (; readFront < readBack; readFront += kLanes) kept[count++] = L::Load(a, readFront);
    for (int r = 0; r < count; ++r) write(kept[r]);
    for (Index i = whole; i < n; ++i) {
      const Item x = a.Get(i);
      a.Put(i, a.Get(writeFront));
      a.Put(writeFront, x);
      writeFront += itemBefore(x, pivot) ? 1 : 0;
    }
    return writeFront;
  }
};

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
