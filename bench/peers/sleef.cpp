#include "peers/sleef.h"

#include <cstring>

#if defined(QORN_PEER_SLEEF) && defined(__AVX2__)
#include <immintrin.h>
#include <sleef.h>
#define QORN_HAS_SLEEF 1
#endif

namespace qorn_bench {

#if defined(QORN_HAS_SLEEF)
namespace {

template <class V, class T> V Load(const T *p) {
  V v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
template <class T, class V> void Store(T *p, V v) { std::memcpy(p, &v, sizeof v); }

void StorePairs(float *p, __m256 re, __m256 im) {
  const __m256 a = _mm256_unpacklo_ps(re, im), b = _mm256_unpackhi_ps(re, im);
  Store(p, _mm256_permute2f128_ps(a, b, 0x20));
  Store(p + 8, _mm256_permute2f128_ps(a, b, 0x31));
}
void StorePairs(double *p, __m256d re, __m256d im) {
  const __m256d a = _mm256_unpacklo_pd(re, im), b = _mm256_unpackhi_pd(re, im);
  Store(p, _mm256_permute2f128_pd(a, b, 0x20));
  Store(p + 4, _mm256_permute2f128_pd(a, b, 0x31));
}
#if defined(__AVX512F__)
void StorePairs(float *p, __m512 re, __m512 im) {
  const __m512i low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  const __m512i high = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  Store(p, _mm512_permutex2var_ps(re, low, im));
  Store(p + 16, _mm512_permutex2var_ps(re, high, im));
}
void StorePairs(double *p, __m512d re, __m512d im) {
  const __m512i low = _mm512_setr_epi64(0, 8, 1, 9, 2, 10, 3, 11),
                high = _mm512_setr_epi64(4, 12, 5, 13, 6, 14, 7, 15);
  Store(p, _mm512_permutex2var_pd(re, low, im));
  Store(p + 8, _mm512_permutex2var_pd(re, high, im));
}
#endif

template <class V, class T, auto F> void One(const T *src, T *dst, int len) {
  for (int i = 0; i < len; i += int(sizeof(V) / sizeof(T))) Store(dst + i, F(Load<V>(src + i)));
}
template <class V, class T, auto F> void Two(const T *a, const T *b, T *dst, int len) {
  for (int i = 0; i < len; i += int(sizeof(V) / sizeof(T))) Store(dst + i, F(Load<V>(a + i), Load<V>(b + i)));
}
template <class V, class T, auto F> void Pairs(const T *src, T *dst, int len) {
  for (int i = 0; i < len; i += int(sizeof(V) / sizeof(T))) {
    const auto both = F(Load<V>(src + i));
    StorePairs(dst + 2 * i, both.y, both.x);
  }
}

// Unit conversions as a plain loop would have them: one pass, the constants beside the function.
template <class V, auto Log10> V PowerRatioTodB(V x) { return Log10(x) * 10.0F; }
template <class V, auto Log10> V VoltTodBm(V x) { return Log10(x) * 20.0F + 13.0103F; }
template <class V, auto Exp10> V dBmToVolt(V x) { return Exp10((x - 13.0103F) * 0.05F); }

template <class T, class F> struct Entry {
  const char *name;
  F run;
};

template <class T, SleefSet Set> struct Lists;

#define QORN_ENTRIES(V, T, tag, set)                                                                         \
  {"Sin", One<V, T, Sleef_sin##tag##_u10##set>}, {"Cos", One<V, T, Sleef_cos##tag##_u10##set>},              \
      {"Atan", One<V, T, Sleef_atan##tag##_u10##set>}, {"Ln", One<V, T, Sleef_log##tag##_u10##set>},         \
      {"Log10", One<V, T, Sleef_log10##tag##_u10##set>}, {"Exp", One<V, T, Sleef_exp##tag##_u10##set>},      \
      {"Erf", One<V, T, Sleef_erf##tag##_u10##set>}, {"Pow10", One<V, T, Sleef_exp10##tag##_u10##set>},      \
      {"Expj", Pairs<V, T, Sleef_sincos##tag##_u10##set>},
#define QORN_LISTS(Floats, Doubles, f, d, set, choice)                                                       \
  template <> struct Lists<float, choice> {                                                                  \
    static constexpr Entry<float, OneArgument<float>> kOne[] = {                                             \
        QORN_ENTRIES(Floats, float, f, set){                                                                 \
            "PowerRatio2dB", One<Floats, float, PowerRatioTodB<Floats, Sleef_log10##f##_u10##set>>},         \
        {"Volt2dBm", One<Floats, float, VoltTodBm<Floats, Sleef_log10##f##_u10##set>>},                      \
        {"dBm2Volt", One<Floats, float, dBmToVolt<Floats, Sleef_exp10##f##_u10##set>>}};                     \
    static constexpr Entry<float, TwoArguments<float>> kTwo[] = {                                            \
        {"Atan2", Two<Floats, float, Sleef_atan2##f##_u10##set>},                                            \
        {"Pow", Two<Floats, float, Sleef_pow##f##_u10##set>}};                                               \
  };                                                                                                         \
  template <> struct Lists<double, choice> {                                                                 \
    static constexpr Entry<double, OneArgument<double>> kOne[] = {QORN_ENTRIES(Doubles, double, d, set)};    \
    static constexpr Entry<double, TwoArguments<double>> kTwo[] = {                                          \
        {"Atan2", Two<Doubles, double, Sleef_atan2##d##_u10##set>},                                          \
        {"Pow", Two<Doubles, double, Sleef_pow##d##_u10##set>}};                                             \
  };

QORN_LISTS(__m256, __m256d, f8, d4, avx2, SleefSet::kAvx2)
#if defined(__AVX512F__)
QORN_LISTS(__m512, __m512d, f16, d8, avx512f, SleefSet::kWidest)
#else
QORN_LISTS(__m256, __m256d, f8, d4, avx2, SleefSet::kWidest)
#endif

template <class F, class List> F Find(const List &list, const char *name) {
  for (const auto &entry : list) {
    if (std::strcmp(entry.name, name) == 0) return entry.run;
  }
  return nullptr;
}

} // namespace

template <class T> OneArgument<T> FindSleef(const char *name, SleefSet set) {
  return set == SleefSet::kAvx2 ? Find<OneArgument<T>>(Lists<T, SleefSet::kAvx2>::kOne, name)
                                : Find<OneArgument<T>>(Lists<T, SleefSet::kWidest>::kOne, name);
}
template <class T> TwoArguments<T> FindSleef2(const char *name, SleefSet set) {
  return set == SleefSet::kAvx2 ? Find<TwoArguments<T>>(Lists<T, SleefSet::kAvx2>::kTwo, name)
                                : Find<TwoArguments<T>>(Lists<T, SleefSet::kWidest>::kTwo, name);
}
#else
template <class T> OneArgument<T> FindSleef(const char *, SleefSet) { return nullptr; }
template <class T> TwoArguments<T> FindSleef2(const char *, SleefSet) { return nullptr; }
#endif

template OneArgument<float> FindSleef(const char *, SleefSet);
template OneArgument<double> FindSleef(const char *, SleefSet);
template TwoArguments<float> FindSleef2(const char *, SleefSet);
template TwoArguments<double> FindSleef2(const char *, SleefSet);

} // namespace qorn_bench
