// The registers of AVX2 as networks see them.

using Register = __m256i;
constexpr Index kShortest = 64; // what a network sorts

struct Lanes32 {
  static constexpr int kLanes = 8;
  // The lowest `count` lanes; none for a negative count.
  static __m256i LowLanes(Index count) {
    const int lanes = static_cast<int>(count < 0 ? 0 : count < kLanes ? count : kLanes);
    return _mm256_cmpgt_epi32(_mm256_set1_epi32(lanes), _mm256_set_epi32(7, 6, 5, 4, 3, 2, 1, 0));
  }
  // Lanes beyond `count` hold the largest key, which a network leaves behind all others.
  static __m256i Load(const void *from, Index count) {
    const __m256i lanes = LowLanes(count);
    const __m256i x = _mm256_maskload_epi32(static_cast<const int *>(from), lanes);
    return _mm256_blendv_epi8(_mm256_set1_epi32(0x7FFFFFFF), x, lanes);
  }
  static void Store(void *to, Index count, __m256i x) {
    _mm256_maskstore_epi32(static_cast<int *>(to), LowLanes(count), x);
  }

  static __m256i Min(__m256i a, __m256i b) { return _mm256_min_epi32(a, b); }
  static __m256i Max(__m256i a, __m256i b) { return _mm256_max_epi32(a, b); }
  // Min in the lanes of kLow, Max in the others.
  template <unsigned kLow> static __m256i MinMax(__m256i a, __m256i b) {
    return _mm256_blend_epi32(Max(a, b), Min(a, b), kLow & 0xFFU);
  }
  template <int kXor> static __m256i Crossed(__m256i x) {
    if constexpr (kXor == 1) return _mm256_shuffle_epi32(x, 0xB1);
    if constexpr (kXor == 2) return _mm256_shuffle_epi32(x, 0x4E);
    if constexpr (kXor == 3) return _mm256_shuffle_epi32(x, 0x1B);
    const __m256i lane = _mm256_set_epi32(7, 6, 5, 4, 3, 2, 1, 0);
    return _mm256_permutevar8x32_epi32(x, _mm256_xor_si256(lane, _mm256_set1_epi32(kXor)));
  }
  // Lanes of a and b by turns, from the lower and from the upper halves.
  static void Zip(__m256i &a, __m256i &b) {
    const __m256i low = _mm256_unpacklo_epi32(a, b), high = _mm256_unpackhi_epi32(a, b);
    a = _mm256_permute2x128_si256(low, high, 0x20);
    b = _mm256_permute2x128_si256(low, high, 0x31);
  }
};

struct Lanes64 {
  static constexpr int kLanes = 4;
  static __m256i LowLanes(Index count) {
    const int lanes = static_cast<int>(count < 0 ? 0 : count < kLanes ? count : kLanes);
    return _mm256_cmpgt_epi64(_mm256_set1_epi64x(lanes), _mm256_set_epi64x(3, 2, 1, 0));
  }
  static __m256i Load(const void *from, Index count) {
    const __m256i lanes = LowLanes(count);
    const __m256i x = _mm256_maskload_epi64(static_cast<const long long *>(from), lanes);
    return _mm256_blendv_epi8(_mm256_set1_epi64x(0x7FFFFFFFFFFFFFFF), x, lanes);
  }
  static void Store(void *to, Index count, __m256i x) {
    _mm256_maskstore_epi64(static_cast<long long *>(to), LowLanes(count), x);
  }
  // Eight keys and places as pairs, and back in the order of the two registers.
  static void Join(__m256i keys, __m256i places, __m256i &a, __m256i &b) {
    a = _mm256_unpacklo_epi32(places, keys);
    b = _mm256_unpackhi_epi32(places, keys);
  }
  static void Split(__m256i a, __m256i b, __m256i &keys, __m256i &places) {
    const __m256 x = _mm256_castsi256_ps(a), y = _mm256_castsi256_ps(b);
    keys = _mm256_permute4x64_epi64(_mm256_castps_si256(_mm256_shuffle_ps(x, y, 0xDD)), 0xD8);
    places = _mm256_permute4x64_epi64(_mm256_castps_si256(_mm256_shuffle_ps(x, y, 0x88)), 0xD8);
  }

  static __m256i Min(__m256i a, __m256i b) { return _mm256_blendv_epi8(a, b, _mm256_cmpgt_epi64(a, b)); }
  static __m256i Max(__m256i a, __m256i b) { return _mm256_blendv_epi8(b, a, _mm256_cmpgt_epi64(a, b)); }
  template <unsigned kLow> static __m256i MinMax(__m256i a, __m256i b) {
    constexpr unsigned kWords =
        (kLow & 1U ? 0x03U : 0) | (kLow & 2U ? 0x0CU : 0) | (kLow & 4U ? 0x30U : 0) | (kLow & 8U ? 0xC0U : 0);
    return _mm256_blend_epi32(Max(a, b), Min(a, b), kWords);
  }
  template <int kXor> static __m256i Crossed(__m256i x) {
    if constexpr (kXor == 1) return _mm256_shuffle_epi32(x, 0x4E);
    if constexpr (kXor == 2) return _mm256_permute4x64_epi64(x, 0x4E);
    return _mm256_permute4x64_epi64(x, 0x1B);
  }
  static void Zip(__m256i &a, __m256i &b) {
    const __m256i low = _mm256_unpacklo_epi64(a, b), high = _mm256_unpackhi_epi64(a, b);
    a = _mm256_permute2x128_si256(low, high, 0x20);
    b = _mm256_permute2x128_si256(low, high, 0x31);
  }
};

// Words of 64 bits in partitions, and their places.
struct Part64 {
  using Words = __m256i;
  static constexpr int kLanes = 4;

  static Words Load(const void *from) { return Part32::Load(from); }
  static void Store(void *to, Words x) { Part32::Store(to, x); }
  static Words All(long long x) { return _mm256_set1_epi64x(x); }
  static unsigned Signs(Words x) { return static_cast<unsigned>(_mm256_movemask_pd(_mm256_castsi256_pd(x))); }
  static unsigned Below(Words x, Words y) { return Signs(_mm256_cmpgt_epi64(y, x)); }
  static unsigned Equal(Words x, Words y) { return Signs(_mm256_cmpeq_epi64(x, y)); }
  static Words InFront(unsigned chosen, Words x) {
    return _mm256_permutevar8x32_epi32(x, _mm256_cvtepu8_epi32(OrderOf<4, 2>(chosen)));
  }
};
struct PlacesOf64 {
  using Words = __m128i;

  static Words Load(const void *from) { return _mm_loadu_si128(static_cast<const __m128i_u *>(from)); }
  static void Store(void *to, Words x) { _mm_storeu_si128(static_cast<__m128i_u *>(to), x); }
  static Words All(int x) { return _mm_set1_epi32(x); }
  static unsigned Below(Words x, Words y) {
    return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(_mm_cmpgt_epi32(y, x))));
  }
  static Words InFront(unsigned chosen, Words x) {
    const __m128i order = _mm_cvtepu8_epi32(OrderOf<4, 1>(chosen));
    return _mm_castps_si128(_mm_permutevar_ps(_mm_castsi128_ps(x), order));
  }
};
