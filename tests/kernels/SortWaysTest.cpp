// The parts of sorting that data seldom reach: what happens where quicksort degenerates. The family's file is
// compiled once more here, so that its parts are in reach.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#define QORN_LEVEL sort_parts
#include "infra/kernels/families/Sort.cpp" // NOLINT(bugprone-suspicious-include)

namespace {

namespace parts = QORN::kernels::sort_parts;

struct Item {
  int key, place;
  bool operator==(const Item &other) const { return key == other.key && place == other.place; }
};

std::vector<Item> RandomItems(std::size_t n) {
  std::mt19937 random(static_cast<unsigned>(n));
  std::vector<Item> items;
  for (std::size_t i = 0; i < n; ++i) {
    items.push_back({static_cast<int>(random() % (n + 1)) - 3, static_cast<int>(i)});
  }
  return items;
}

// Sorts keys with places, then keys alone, by `sort`.
template <class Sort> void Check(Sort sort) {
  for (std::size_t n = 0; n < 300; n = n < 40 ? n + 1 : n + 37) {
    std::vector<Item> items = RandomItems(n);
    std::vector<std::int32_t> keys, alone;
    std::vector<int> places;
    for (const Item &item : items) {
      keys.push_back(item.key);
      places.push_back(item.place);
    }
    alone = keys;
    const auto length = static_cast<parts::Index>(n);
    sort(parts::Pairs<parts::Int32>{keys.data(), places.data()}, length);
    sort(parts::Keys<parts::Int32>{alone.data()}, length);
    std::stable_sort(items.begin(), items.end(), [](const Item &a, const Item &b) { return a.key < b.key; });
    for (std::size_t i = 0; i < n; ++i) {
      ASSERT_EQ((Item{keys[i], places[i]}), items[i]) << n << ' ' << i;
      ASSERT_EQ(alone[i], items[i].key) << n << ' ' << i;
    }
  }
}

TEST(Sort, HeapSort_AnyLength_Sorts) {
  Check([](auto array, parts::Index n) { parts::HeapSort(array, n); });
}

TEST(Sort, InsertionSort_AnyLength_Sorts) {
  Check([](auto array, parts::Index n) { parts::InsertionSort(array, n); });
}

TEST(Sort, Introsort_PartitionsUsedUp_TurnsToHeapsort) {
  for (const int partitions : {0, 1, 2, 3}) {
    Check([partitions](auto array, parts::Index n) {
      parts::Introsort<parts::ByItems<decltype(array)>>(array, n, partitions);
    });
  }
}

} // namespace
