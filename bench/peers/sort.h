// Sorting as others do it. With places, they sort keys of 64 bits made of value and place, or places by
// value.
#ifndef QORN_BENCH_PEERS_SORT_H
#define QORN_BENCH_PEERS_SORT_H

namespace peers {

struct Sort {
  static void Std(float *values, int len);
  /// The same with not-a-number behind all numbers.
  static void StdNumbersFirst(float *values, int len);
  static void StdIndex(float *values, int *places, int len);
#if defined(QORN_PEER_HWY)
  static void Vqsort(float *values, int len);
  static void VqsortIndex(float *values, int *places, int len);
#endif
};

} // namespace peers

#endif
