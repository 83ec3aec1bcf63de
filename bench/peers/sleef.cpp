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

#if defined(__AVX512F__)
using Floats = __m512;
using Doubles = __m512d;
#define QORN_SLEEF(function, type) Sleef_##function##type##_u10avx512f
#define QORN_FLOATS f16
#define QORN_DOUBLES d8
Floats Load(const float *p) { return _mm512_loadu_ps(p); }
Doubles Load(const double *p) { return _mm512_loadu_pd(p); }
void Store(float *p, Floats x) { _mm512_storeu_ps(p, x); }
void Store(double *p, Doubles x) { _mm512_storeu_pd(p, x); }
void StorePairs(float *p, Floats re, Floats im) {
  const __m512i low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  const __m512i high = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  Store(p, _mm512_permutex2var_ps(re, low, im));
  Store(p + 16, _mm512_permutex2var_ps(re, high, im));
}
void StorePairs(double *p, Doubles re, Doubles im) {
  const __m512i low = _mm512_setr_epi64(0, 8, 1, 9, 2, 10, 3, 11),
                high = _mm512_setr_epi64(4, 12, 5, 13, 6, 14, 7, 15);
  Store(p, _mm512_permutex2var_pd(re, low, im));
  Store(p + 8, _mm512_permutex2var_pd(re, high, im));
}
#else
using Floats = __m256;
using Doubles = __m256d;
#define QORN_SLEEF(function, type) Sleef_##function##type##_u10avx2
#define QORN_FLOATS f8
#define QORN_DOUBLES d4
Floats Load(const float *p) { return _mm256_loadu_ps(p); }
Doubles Load(const double *p) { return _mm256_loadu_pd(p); }
void Store(float *p, Floats x) { _mm256_storeu_ps(p, x); }
void Store(double *p, Doubles x) { _mm256_storeu_pd(p, x); }
void StorePairs(float *p, Floats re, Floats im) {
  const __m256 a = _mm256_unpacklo_ps(re, im), b = _mm256_unpackhi_ps(re, im);
  Store(p, _mm256_permute2f128_ps(a, b, 0x20));
  Store(p + 8, _mm256_permute2f128_ps(a, b, 0x31));
}
void StorePairs(double *p, Doubles re, Doubles im) {
  const __m256d a = _mm256_unpacklo_pd(re, im), b = _mm256_unpackhi_pd(re, im);
  Store(p, _mm256_permute2f128_pd(a, b, 0x20));
  Store(p + 4, _mm256_permute2f128_pd(a, b, 0x31));
}
#endif
#define QORN_SLEEF2(function, type) QORN_SLEEF(function, type)

template <class T> struct Width;
template <> struct Width<float> { static constexpr int kValue = sizeof(Floats) / sizeof(float); };
template <> struct Width<double> { static constexpr int kValue = sizeof(Doubles) / sizeof(double); };

template <class T, auto F> void One(const T *src, T *dst, int len) {
  for (int i = 0; i < len; i += Width<T>::kValue) Store(dst + i, F(Load(src + i)));
}
template <class T, auto F> void Two(const T *a, const T *b, T *dst, int len) {
  for (int i = 0; i < len; i += Width<T>::kValue) Store(dst + i, F(Load(a + i), Load(b + i)));
}
template <class T, auto F> void Pairs(const T *src, T *dst, int len) {
  for (int i = 0; i < len; i += Width<T>::kValue) {
    const auto both = F(Load(src + i));
    StorePairs(dst + 2 * i, both.y, both.x);
  }
}

// Unit conversions as a plain loop would have them: one pass, the constants beside the function.
Floats PowerRatioTodB(Floats x) { return QORN_SLEEF2(log10, QORN_FLOATS)(x) * 10.0F; }
Floats VoltTodBm(Floats x) { return QORN_SLEEF2(log10, QORN_FLOATS)(x) * 20.0F + 13.0103F; }
Floats dBmToVolt(Floats x) { return QORN_SLEEF2(exp10, QORN_FLOATS)((x - 13.0103F) * 0.05F); }

template <class T, class F> struct Entry {
  const char *name;
  F run;
};

#define QORN_ENTRIES(T, type)                                                                                \
  {"Sin", One<T, QORN_SLEEF2(sin, type)>}, {"Cos", One<T, QORN_SLEEF2(cos, type)>},                          \
      {"Atan", One<T, QORN_SLEEF2(atan, type)>}, {"Ln", One<T, QORN_SLEEF2(log, type)>},                     \
      {"Log10", One<T, QORN_SLEEF2(log10, type)>}, {"Exp", One<T, QORN_SLEEF2(exp, type)>},                  \
      {"Erf", One<T, QORN_SLEEF2(erf, type)>}, {"Pow10", One<T, QORN_SLEEF2(exp10, type)>},                  \
      {"Expj", Pairs<T, QORN_SLEEF2(sincos, type)>},
#define QORN_ENTRIES2(T, type)                                                                               \
  {"Atan2", Two<T, QORN_SLEEF2(atan2, type)>}, {"Pow", Two<T, QORN_SLEEF2(pow, type)>},

template <class T> struct Lists;
template <> struct Lists<float> {
  static constexpr Entry<float, OneArgument<float>> kOne[] = {
      QORN_ENTRIES(float, QORN_FLOATS){"PowerRatio2dB", One<float, PowerRatioTodB>},
      {"Volt2dBm", One<float, VoltTodBm>},
      {"dBm2Volt", One<float, dBmToVolt>}};
  static constexpr Entry<float, TwoArguments<float>> kTwo[] = {QORN_ENTRIES2(float, QORN_FLOATS)};
};
template <> struct Lists<double> {
  static constexpr Entry<double, OneArgument<double>> kOne[] = {QORN_ENTRIES(double, QORN_DOUBLES)};
  static constexpr Entry<double, TwoArguments<double>> kTwo[] = {QORN_ENTRIES2(double, QORN_DOUBLES)};
};

} // namespace

template <class T> OneArgument<T> FindSleef(const char *name) {
  for (const auto &entry : Lists<T>::kOne) {
    if (std::strcmp(entry.name, name) == 0) return entry.run;
  }
  return nullptr;
}
template <class T> TwoArguments<T> FindSleef2(const char *name) {
  for (const auto &entry : Lists<T>::kTwo) {
    if (std::strcmp(entry.name, name) == 0) return entry.run;
  }
  return nullptr;
}
#else
template <class T> OneArgument<T> FindSleef(const char *) { return nullptr; }
template <class T> TwoArguments<T> FindSleef2(const char *) { return nullptr; }
#endif

template OneArgument<float> FindSleef(const char *);
template OneArgument<double> FindSleef(const char *);
template TwoArguments<float> FindSleef2(const char *);
template TwoArguments<double> FindSleef2(const char *);

} // namespace qorn_bench
