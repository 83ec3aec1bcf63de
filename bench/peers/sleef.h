// SLEEF's functions of at most 1 unit in the last place, over arrays, in the widest registers of the machine
// that measures.
#ifndef QORN_BENCH_PEERS_SLEEF_H
#define QORN_BENCH_PEERS_SLEEF_H

namespace qorn_bench {

template <class T> using OneArgument = void (*)(const T *, T *, int);
template <class T> using TwoArguments = void (*)(const T *, const T *, T *, int);

/// By the kernel's name without its type tag; null where SLEEF is not installed or has no such function.
/// Lengths must be multiples of 16. Expj writes pairs of cosine and sine. PowerRatio2dB, Volt2dBm and
/// dBm2Volt, in float, are loops with the function's arithmetic around it.
template <class T> OneArgument<T> FindSleef(const char *name);
template <class T> TwoArguments<T> FindSleef2(const char *name);

extern template OneArgument<float> FindSleef(const char *);
extern template OneArgument<double> FindSleef(const char *);
extern template TwoArguments<float> FindSleef2(const char *);
extern template TwoArguments<double> FindSleef2(const char *);

} // namespace qorn_bench

#endif
