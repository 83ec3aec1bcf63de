// Sorting with AVX-512 registers, as in vectorised quicksorts (J. Wassenberg et al.: Vectorized and
// performance-portable quicksort, 2022): partitions by compressing registers, and sorting networks for what
// fits into sixteen of them. Included by Sort.cpp in the level's unnamed namespace, for its Keys and Pairs.

// GCC 12 takes the don't-care operands of its own intrinsics for uninitialised variables.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif

// The lowest `count` of at most 16 lanes; none for a negative count.
inline unsigned LowLanes(Index count) {
  return _bzhi_u32(0xFFFFU, static_cast<unsigned>(count < 0 ? 0 : count < 16 ? count : 16));
}

// Networks.

struct Lanes32 {
  static constexpr int kLanes = 16;
  static __m512i Min(__m512i a, __m512i b) { return _mm512_min_epi32(a, b); }
  static __m512i Max(__m512i a, __m512i b) { return _mm512_max_epi32(a, b); }
  // Min in the lanes of `low`, Max in the others.
  static __m512i MinMax(unsigned low, __m512i a, __m512i b) {
    return _mm512_mask_min_epi32(Max(a, b), static_cast<__mmask16>(low), a, b);
  }
  template <int kXor> static __m512i Crossed(__m512i x) {
    if constexpr (kXor == 1) return _mm512_shuffle_epi32(x, _MM_PERM_CDAB);
    if constexpr (kXor == 2) return _mm512_shuffle_epi32(x, _MM_PERM_BADC);
    if constexpr (kXor == 3) return _mm512_shuffle_epi32(x, _MM_PERM_ABCD);
    const __m512i lane = _mm512_set_epi32(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    return _mm512_permutexvar_epi32(_mm512_xor_si512(lane, _mm512_set1_epi32(kXor)), x);
  }
  // Lanes of a and b by turns, from the lower and from the upper halves.
  static void Zip(__m512i &a, __m512i &b) {
    const __m512i lower = _mm512_set_epi32(23, 7, 22, 6, 21, 5, 20, 4, 19, 3, 18, 2, 17, 1, 16, 0);
    const __m512i low = _mm512_permutex2var_epi32(a, lower, b);
    b = _mm512_permutex2var_epi32(a, _mm512_add_epi32(lower, _mm512_set1_epi32(8)), b);
    a = low;
  }
};

struct Lanes64 {
  static constexpr int kLanes = 8;
  static __m512i Min(__m512i a, __m512i b) { return _mm512_min_epi64(a, b); }
  static __m512i Max(__m512i a, __m512i b) { return _mm512_max_epi64(a, b); }
  static __m512i MinMax(unsigned low, __m512i a, __m512i b) {
    return _mm512_mask_min_epi64(Max(a, b), static_cast<__mmask8>(low), a, b);
  }
  template <int kXor> static __m512i Crossed(__m512i x) {
    if constexpr (kXor == 1) return _mm512_shuffle_epi32(x, _MM_PERM_BADC);
    const __m512i lane = _mm512_set_epi64(7, 6, 5, 4, 3, 2, 1, 0);
    return _mm512_permutexvar_epi64(_mm512_xor_si512(lane, _mm512_set1_epi64(kXor)), x);
  }
  static void Zip(__m512i &a, __m512i &b) {
    const __m512i lower = _mm512_set_epi64(11, 3, 10, 2, 9, 1, 8, 0);
    const __m512i low = _mm512_permutex2var_epi64(a, lower, b);
    b = _mm512_permutex2var_epi64(a, _mm512_add_epi64(lower, _mm512_set1_epi64(4)), b);
    a = low;
  }
};

template <class L> inline void SortTwo(__m512i &a, __m512i &b) {
  const __m512i low = L::Min(a, b);
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
[[gnu::always_inline]] inline void SortColumns(__m512i (&x)[kRegisters]) {
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
[[gnu::always_inline]] inline void MergeColumns(__m512i (&x)[kRegisters]) {
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
[[gnu::always_inline]] inline void MergeLanes(__m512i (&x)[kRegisters]) {
  if constexpr (kDistance > 0) {
    Unrolled<kRegisters>([&](auto number) __attribute__((always_inline)) {
      constexpr int i = number.value;
      x[i] = L::MinMax(ClearIn(kDistance), x[i], L::template Crossed<kDistance>(x[i]));
    });
    MergeLanes<L, kDistance / 2>(x);
  }
}

// Neighbouring groups of kGroup / 2 sorted lanes become sorted groups of kGroup lanes, the columns standing
// one behind the other: the second group is taken backwards, which makes each pair of groups bitonic.
template <class L, int kGroup, int kRegisters>
[[gnu::always_inline]] inline void MergeGroups(__m512i (&x)[kRegisters]) {
  if constexpr (kGroup <= L::kLanes) {
    Unrolled<(kRegisters + 1) / 2>([&](auto number) __attribute__((always_inline)) {
      constexpr int i = number.value, kOpposite = kRegisters - 1 - i;
      constexpr unsigned kLow = ClearIn(kGroup / 2);
      const __m512i upwards = L::template Crossed<kGroup - 1>(x[i]);
      const __m512i downwards = L::template Crossed<kGroup - 1>(x[kOpposite]);
      x[i] = L::MinMax(kLow, x[i], downwards);
      if constexpr (kOpposite != i) x[kOpposite] = L::MinMax(kLow, x[kOpposite], upwards);
    });
    MergeLanes<L, kGroup / 4>(x);
    MergeColumns<L>(x);
    MergeGroups<L, 2 * kGroup>(x);
  }
}

// Columns to rows: zipped as often as there are bits in a register's number.
template <class L, int kTimes, int kRegisters>
[[gnu::always_inline]] inline void Transpose(__m512i (&x)[kRegisters]) {
  if constexpr (kTimes > 1) {
    __m512i y[kRegisters];
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
template <class L, int kRegisters> [[gnu::always_inline]] inline void SortNetwork(__m512i (&x)[kRegisters]) {
  SortColumns<L>(x);
  MergeGroups<L, 2>(x);
  Transpose<L, kRegisters>(x);
}

// Items in registers: loads and stores of some lanes, compression, comparison with a pivot, and the network
// that sorts what fits into kRegisters.

template <class A> struct Lanes;

template <class F> struct Lanes<Keys<F>> {
  using A = Keys<F>;
  using Register = __m512i;
  static constexpr bool kWide = sizeof(typename F::Value) == 8;
  static constexpr int kLanes = kWide ? 8 : 16;
  static constexpr bool kHasNetwork = true;

  // Lanes that are not loaded hold the largest key, which a network leaves behind all that are.
  static Register Load(A a, Index i, unsigned lanes) {
    if constexpr (kWide) {
      return _mm512_mask_loadu_epi64(All(0x7FFFFFFFFFFFFFFF), static_cast<__mmask8>(lanes), a.keys + i);
    } else {
      return _mm512_mask_loadu_epi32(All(0x7FFFFFFF), static_cast<__mmask16>(lanes), a.keys + i);
    }
  }
  static void Store(A a, Index i, unsigned lanes, Register x) {
    if constexpr (kWide) {
      _mm512_mask_storeu_epi64(a.keys + i, static_cast<__mmask8>(lanes), x);
    } else {
      _mm512_mask_storeu_epi32(a.keys + i, static_cast<__mmask16>(lanes), x);
    }
  }
  static Register Compressed(unsigned lanes, Register x) {
    if constexpr (kWide) {
      return _mm512_maskz_compress_epi64(static_cast<__mmask8>(lanes), x);
    } else {
      return _mm512_maskz_compress_epi32(static_cast<__mmask16>(lanes), x);
    }
  }
  static Register All(typename A::Item x) {
    if constexpr (kWide) {
      return _mm512_set1_epi64(x);
    } else {
      return _mm512_set1_epi32(x);
    }
  }
  static unsigned Below(Register x, Register pivot) {
    if constexpr (kWide) {
      return _mm512_cmplt_epi64_mask(x, pivot);
    } else {
      return _mm512_cmplt_epi32_mask(x, pivot);
    }
  }
  static unsigned NotAbove(Register x, Register pivot) { return LowLanes(kLanes) & ~Below(pivot, x); }

  template <int kRegisters> static void SortIn(A a, Index n) {
    __m512i x[kRegisters];
    Unrolled<kRegisters>([&](auto r) __attribute__((always_inline)) {
      x[r.value] = Load(a, r.value * kLanes, LowLanes(n - r.value * kLanes));
    });
    if constexpr (kWide) {
      SortNetwork<Lanes64>(x);
    } else {
      SortNetwork<Lanes32>(x);
    }
    Unrolled<kRegisters>([&](auto r) __attribute__((always_inline)) {
      Store(a, r.value * kLanes, LowLanes(n - r.value * kLanes), x[r.value]);
    });
  }
};

struct PlacedLanes32 {
  __m512i keys, places;
};

template <class F> inline constexpr bool kNarrow = sizeof(typename F::Value) == 4;

// Pairs with keys of 32 bits.
template <class F>
requires kNarrow<F>
struct Lanes<Pairs<F>> {
  using A = Pairs<F>;
  using Register = PlacedLanes32;
  static constexpr int kLanes = 16;
  static constexpr bool kHasNetwork = true;

  static Register Load(A a, Index i, unsigned lanes) {
    const auto mask = static_cast<__mmask16>(lanes);
    return {_mm512_mask_loadu_epi32(_mm512_set1_epi32(0x7FFFFFFF), mask, a.keys + i),
            _mm512_mask_loadu_epi32(_mm512_set1_epi32(-1), mask, a.places + i)};
  }
  static void Store(A a, Index i, unsigned lanes, Register x) {
    _mm512_mask_storeu_epi32(a.keys + i, static_cast<__mmask16>(lanes), x.keys);
    _mm512_mask_storeu_epi32(a.places + i, static_cast<__mmask16>(lanes), x.places);
  }
  static Register Compressed(unsigned lanes, Register x) {
    return {_mm512_maskz_compress_epi32(static_cast<__mmask16>(lanes), x.keys),
            _mm512_maskz_compress_epi32(static_cast<__mmask16>(lanes), x.places)};
  }
  static Register All(typename A::Item x) { return {_mm512_set1_epi32(x.key), _mm512_set1_epi32(x.place)}; }
  static unsigned Below(Register x, Register pivot) {
    const __mmask16 equal = _mm512_cmpeq_epi32_mask(x.keys, pivot.keys);
    return _mm512_cmplt_epi32_mask(x.keys, pivot.keys) |
           static_cast<unsigned>(_mm512_mask_cmplt_epi32_mask(equal, x.places, pivot.places));
  }
  static unsigned NotAbove(Register x, Register pivot) { return 0xFFFFU & ~Below(pivot, x); }

  // As keys of 64 bits, with the place in the lower half. Places that were not loaded are above all others.
  template <int kRegisters> static void SortIn(A a, Index n) {
    __m512i x[2 * kRegisters];
    Unrolled<kRegisters>([&](auto r) __attribute__((always_inline)) {
      const Register pairs = Load(a, r.value * kLanes, LowLanes(n - r.value * kLanes));
      x[2 * r.value] = _mm512_unpacklo_epi32(pairs.places, pairs.keys);
      x[2 * r.value + 1] = _mm512_unpackhi_epi32(pairs.places, pairs.keys);
    });
    SortNetwork<Lanes64>(x);
    const __m512i even = _mm512_set_epi32(30, 28, 26, 24, 22, 20, 18, 16, 14, 12, 10, 8, 6, 4, 2, 0);
    const __m512i odd = _mm512_add_epi32(even, _mm512_set1_epi32(1));
    Unrolled<kRegisters>([&](auto r) __attribute__((always_inline)) {
      const __m512i low = x[2 * r.value], high = x[2 * r.value + 1];
      Store(a, r.value * kLanes, LowLanes(n - r.value * kLanes),
            {_mm512_permutex2var_epi32(low, odd, high), _mm512_permutex2var_epi32(low, even, high)});
    });
  }
};

struct PlacedLanes64 {
  __m512i keys;
  __m256i places;
};

// Pairs with keys of 64 bits.
template <class F>
requires(!kNarrow<F>) struct Lanes<Pairs<F>> {
  using A = Pairs<F>;
  using Register = PlacedLanes64;
  static constexpr int kLanes = 8;
  static constexpr bool kHasNetwork = false;

  static Register Load(A a, Index i, unsigned lanes) {
    const auto mask = static_cast<__mmask8>(lanes);
    return {_mm512_maskz_loadu_epi64(mask, a.keys + i), _mm256_maskz_loadu_epi32(mask, a.places + i)};
  }
  static void Store(A a, Index i, unsigned lanes, Register x) {
    _mm512_mask_storeu_epi64(a.keys + i, static_cast<__mmask8>(lanes), x.keys);
    _mm256_mask_storeu_epi32(a.places + i, static_cast<__mmask8>(lanes), x.places);
  }
  static Register Compressed(unsigned lanes, Register x) {
    return {_mm512_maskz_compress_epi64(static_cast<__mmask8>(lanes), x.keys),
            _mm256_maskz_compress_epi32(static_cast<__mmask8>(lanes), x.places)};
  }
  static Register All(typename A::Item x) { return {_mm512_set1_epi64(x.key), _mm256_set1_epi32(x.place)}; }
  static unsigned Below(Register x, Register pivot) {
    const __mmask8 equal = _mm512_cmpeq_epi64_mask(x.keys, pivot.keys);
    return _mm512_cmplt_epi64_mask(x.keys, pivot.keys) |
           static_cast<unsigned>(_mm256_mask_cmplt_epi32_mask(equal, x.places, pivot.places));
  }
  static unsigned NotAbove(Register x, Register pivot) { return 0xFFU & ~Below(pivot, x); }
};

// What Introsort needs of a way of sorting.
template <class A> struct ByRegisters {
  using L = Lanes<A>;
  using Item = typename A::Item;
  static constexpr int kAtOnce = 4;
  static constexpr Index kStep = kAtOnce * L::kLanes;
  static constexpr Index kShort = 128; // at least two steps

  static void SortShort(A a, Index n) {
    if constexpr (L::kHasNetwork) {
      if (n <= L::kLanes) return L::template SortIn<1>(a, n);
      if (n <= 2 * L::kLanes) return L::template SortIn<2>(a, n);
      if (n <= 4 * L::kLanes) return L::template SortIn<4>(a, n);
      if (n <= 8 * L::kLanes) return L::template SortIn<8>(a, n);
      if constexpr (16 * L::kLanes <= kShort) return L::template SortIn<16>(a, n);
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
      sample.Put(i, a.Get(i * part + static_cast<Index>((random >> 8) % static_cast<std::uint32_t>(part))));
    }
    SortShort(sample, count);
    return sample.Get(count / 2);
  }

  static Index PartitionBelow(A a, Index n, Item pivot) {
    return Partition(a, n, L::All(pivot), [](auto x, auto p) { return L::Below(x, p); });
  }
  static Index PartitionNotAbove(A a, Index n, Item pivot) {
    return Partition(a, n, L::All(pivot), [](auto x, auto p) { return L::NotAbove(x, p); });
  }

  // In place: both ends are taken into registers, which leaves room at both ends of what has not been read.
  // One reads at the end with less room, and so finds at least a step's room at both when it writes.
  template <class Before> static Index Partition(A a, Index n, typename L::Register pivot, Before before) {
    using Register = typename L::Register;
    constexpr unsigned kAll = (1U << L::kLanes) - 1;
    const Index whole = n - n % kStep;
    Index readFront = kStep, readBack = whole - kStep, writeFront = 0, writeBack = n;
    const auto write = [&](Register x, unsigned lanes) __attribute__((always_inline)) {
      const unsigned front = before(x, pivot) & lanes, back = lanes & ~front;
      const int frontCount = __builtin_popcount(front), backCount = __builtin_popcount(back);
      L::Store(a, writeFront, LowLanes(frontCount), L::Compressed(front, x));
      writeFront += frontCount;
      writeBack -= backCount;
      L::Store(a, writeBack, LowLanes(backCount), L::Compressed(back, x));
    };
    Register head[kAtOnce], tail[kAtOnce], rest[kAtOnce];
    for (int r = 0; r < kAtOnce; ++r) {
      head[r] = L::Load(a, r * L::kLanes, kAll);
      tail[r] = L::Load(a, readBack + r * L::kLanes, kAll);
      rest[r] = L::Load(a, whole + r * L::kLanes, LowLanes(n - whole - r * L::kLanes) & kAll);
    }
    while (readFront < readBack) {
      const bool atFront = readFront - writeFront <= writeBack - readBack;
      readBack -= atFront ? 0 : kStep;
      const Index at = atFront ? readFront : readBack;
      readFront += atFront ? kStep : 0;
      Register x[kAtOnce];
      for (int r = 0; r < kAtOnce; ++r) x[r] = L::Load(a, at + r * L::kLanes, kAll);
      for (int r = 0; r < kAtOnce; ++r) write(x[r], kAll);
    }
    for (int r = 0; r < kAtOnce; ++r) write(head[r], kAll);
    for (int r = 0; r < kAtOnce; ++r) write(tail[r], kAll);
    for (int r = 0; r < kAtOnce; ++r) write(rest[r], LowLanes(n - whole - r * L::kLanes) & kAll);
    return writeFront;
  }
};

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
