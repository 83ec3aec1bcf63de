// The registers of AVX-512 as networks see them.

using Register = __m512i;
constexpr Index kShortest = 128; // what a network sorts

// The lowest `count` of at most 16 lanes; none for a negative count.
inline unsigned LowLanes(Index count) {
  return _bzhi_u32(0xFFFFU, static_cast<unsigned>(count < 0 ? 0 : count < 16 ? count : 16));
}

struct Lanes32 {
  static constexpr int kLanes = 16;
  // Lanes beyond `count` hold the largest key, which a network leaves behind all others.
  static __m512i Load(const void *from, Index count) {
    return _mm512_mask_loadu_epi32(_mm512_set1_epi32(0x7FFFFFFF), static_cast<__mmask16>(LowLanes(count)),
                                   from);
  }
  static void Store(void *to, Index count, __m512i x) {
    _mm512_mask_storeu_epi32(to, static_cast<__mmask16>(LowLanes(count)), x);
  }
  static __m512i Min(__m512i a, __m512i b) { return _mm512_min_epi32(a, b); }
  static __m512i Max(__m512i a, __m512i b) { return _mm512_max_epi32(a, b); }
  // Min in the lanes of kLow, Max in the others.
  template <unsigned kLow> static __m512i MinMax(__m512i a, __m512i b) {
    return _mm512_mask_min_epi32(Max(a, b), static_cast<__mmask16>(kLow), a, b);
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
  static __m512i Load(const void *from, Index count) {
    return _mm512_mask_loadu_epi64(_mm512_set1_epi64(0x7FFFFFFFFFFFFFFF),
                                   static_cast<__mmask8>(LowLanes(count)), from);
  }
  static void Store(void *to, Index count, __m512i x) {
    _mm512_mask_storeu_epi64(to, static_cast<__mmask8>(LowLanes(count)), x);
  }
  // Sixteen keys and places as pairs, and back in the order of the two registers.
  static void Join(__m512i keys, __m512i places, __m512i &a, __m512i &b) {
    a = _mm512_unpacklo_epi32(places, keys);
    b = _mm512_unpackhi_epi32(places, keys);
  }
  static void Split(__m512i a, __m512i b, __m512i &keys, __m512i &places) {
    const __m512i even = _mm512_set_epi32(30, 28, 26, 24, 22, 20, 18, 16, 14, 12, 10, 8, 6, 4, 2, 0);
    keys = _mm512_permutex2var_epi32(a, _mm512_add_epi32(even, _mm512_set1_epi32(1)), b);
    places = _mm512_permutex2var_epi32(a, even, b);
  }
  static __m512i Min(__m512i a, __m512i b) { return _mm512_min_epi64(a, b); }
  static __m512i Max(__m512i a, __m512i b) { return _mm512_max_epi64(a, b); }
  template <unsigned kLow> static __m512i MinMax(__m512i a, __m512i b) {
    return _mm512_mask_min_epi64(Max(a, b), static_cast<__mmask8>(kLow), a, b);
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

// Words of 64 bits in partitions, and their places.
struct Part64 {
  using Words = __m512i;
  static constexpr int kLanes = 8;

  static Words Load(const void *from) { return _mm512_loadu_si512(from); }
  static void Store(void *to, Words x) { _mm512_storeu_si512(to, x); }
  static Words All(long long x) { return _mm512_set1_epi64(x); }
  static unsigned Below(Words x, Words y) { return _mm512_cmplt_epi64_mask(x, y); }
  static unsigned Equal(Words x, Words y) { return _mm512_cmpeq_epi64_mask(x, y); }
  static Words InFront(unsigned chosen, Words x) {
    return _mm512_permutexvar_epi64(_mm512_cvtepu8_epi64(OrderOf<8, 1>(chosen)), x);
  }
};
using PlacesOf64 = Part32;
