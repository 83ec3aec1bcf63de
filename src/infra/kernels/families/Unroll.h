// How loops over arrays are unrolled.
#ifndef QORN_SRC_INFRA_KERNELS_UNROLL_H
#define QORN_SRC_INFRA_KERNELS_UNROLL_H

// Before a loop over an array: four vectors a round. In the first-level cache, GCC's rounds of one vector wait
// for loads and stores one by one and take half as long again; Clang unrolls by itself.
#if defined(__GNUC__) && !defined(__clang__)
#define QORN_UNROLLED _Pragma("GCC unroll 4")
#else
#define QORN_UNROLLED
#endif

#endif
