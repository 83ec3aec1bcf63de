// SLEEF's functions of at most 1 unit in the last place, over arrays, in the widest registers of the machine
// that measures or in those of AVX2.
#ifndef QORN_BENCH_PEERS_SLEEF_H
#define QORN_BENCH_PEERS_SLEEF_H

namespace qorn_bench {

template <class T> using OneArgument = void (*)(const T *, T *, int);
template <class T> using TwoArguments = void (*)(const T *, const T *, T *, int);

enum class SleefSet { kWidest, kAvx2 };

/// By the kernel's name without its type tag; null where SLEEF is not installed or has no such function.
/// Lengths must be multiples of 16. Expj writes pairs of cosine and sine. PowerRatio2dB, Volt2dBm and
/// dBm2Volt, in float, are loops with the function's arithmetic around it.
template <class T> OneArgument<T> FindSleef(const char *name, SleefSet set = SleefSet::kWidest);
template <class T> TwoArguments<T> FindSleef2(const char *name, SleefSet set = SleefSet::kWidest);

extern template OneArgument<float> FindSleef(const char *, SleefSet);
extern template OneArgument<double> FindSleef(const char *, SleefSet);
extern template TwoArguments<float> FindSleef2(const char *, SleefSet);
extern template TwoArguments<double> FindSleef2(const char *, SleefSet);

} // namespace qorn_bench

#endif
