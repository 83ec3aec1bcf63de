#include "peers/sort.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#if defined(QORN_PEER_HWY)
#include <hwy/contrib/sort/vqsort.h>
#endif

namespace peers {

namespace {

// The order-preserving bits of a value above its place.
std::uint64_t Packed(float value, int place) {
  std::uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  bits ^= (bits >> 31) != 0 ? 0xFFFFFFFFU : 0x80000000U;
  return std::uint64_t{bits} << 32 | static_cast<std::uint32_t>(place);
}

float ValueOf(std::uint64_t packed) {
  auto bits = static_cast<std::uint32_t>(packed >> 32);
  bits ^= (bits >> 31) != 0 ? 0x80000000U : 0xFFFFFFFFU;
  float value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

template <class SortWords> void SortPacked(float *values, int *places, int len, SortWords sort) {
  static std::vector<std::uint64_t> words;
  words.resize(static_cast<std::size_t>(len));
  for (int i = 0; i < len; ++i) words[static_cast<std::size_t>(i)] = Packed(values[i], i);
  sort(words.data(), words.size());
  for (int i = 0; i < len; ++i) {
    values[i] = ValueOf(words[static_cast<std::size_t>(i)]);
    places[i] = static_cast<int>(words[static_cast<std::size_t>(i)] & 0xFFFFFFFFU);
  }
}

} // namespace

void Sort::Std(float *values, int len) { std::sort(values, values + len); }

void Sort::StdNumbersFirst(float *values, int len) {
  std::sort(values, values + len, [](float a, float b) { return a < b || (b != b && a == a); });
}

void Sort::StdIndex(float *values, int *places, int len) {
  SortPacked(values, places, len, [](std::uint64_t *words, std::size_t n) { std::sort(words, words + n); });
}

#if defined(QORN_PEER_HWY)
void Sort::Vqsort(float *values, int len) {
  static hwy::Sorter sorter;
  sorter(values, static_cast<std::size_t>(len), hwy::SortAscending());
}

void Sort::VqsortIndex(float *values, int *places, int len) {
  static hwy::Sorter sorter;
  SortPacked(values, places, len,
             [](std::uint64_t *words, std::size_t n) { sorter(words, n, hwy::SortAscending()); });
}
#endif

} // namespace peers
