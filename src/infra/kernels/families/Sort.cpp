// Elements are turned, in place, into integer keys whose order is the wanted one; the keys are sorted and
// turned back. Among the keys -0 stands before 0, and not-a-numbers by sign and payload behind all numbers,
// so the result does not depend on the algorithm. With former places, equal keys are told apart by their
// places, and the two groups in which different keys count as equal, zeros and not-a-numbers, are put in
// order by place afterwards.
#include "Kernel.h"

#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace QORN::kernels::QORN_LEVEL {
namespace {

constexpr bool kAscend = false;
constexpr bool kDescend = true;

// How an element's bits become a key. The keys live in the caller's array, whatever its element type; hence
// may_alias.
struct Int32 {
  using Element = int;
  using Value = std::int32_t;
  using Bits = std::uint32_t;
  typedef std::int32_t Key [[gnu::may_alias]];
  static constexpr bool kFloating = false;
};

struct Float32 {
  using Element = float;
  using Value = std::int32_t;
  using Bits = std::uint32_t;
  typedef std::int32_t Key [[gnu::may_alias]];
  static constexpr bool kFloating = true;
  static constexpr Bits kInfinity = 0x7F800000U;
};

struct Float64 {
  using Element = double;
  using Value = std::int64_t;
  using Bits = std::uint64_t;
  typedef std::int64_t Key [[gnu::may_alias]];
  static constexpr bool kFloating = true;
  static constexpr Bits kInfinity = 0x7FF0000000000000U;
};

template <class F>
constexpr typename F::Bits kSign = typename F::Bits{1} << (8 * sizeof(typename F::Bits) - 1);

// Keys of floating elements count from minus infinity upwards; that takes the negative not-a-numbers, which
// are below minus infinity by their bits, round to the top.
template <class F> constexpr typename F::Bits kBelowInfinity = kSign<F> - 1 - F::kInfinity;

template <class F> constexpr typename F::Value KeyOf(typename F::Bits bits) {
  if constexpr (F::kFloating) {
    const typename F::Bits ordered = bits ^ (bits & kSign<F> ? static_cast<typename F::Bits>(-1) : kSign<F>);
    bits = (ordered - kBelowInfinity<F>)^kSign<F>;
  }
  return static_cast<typename F::Value>(bits);
}

template <class F> constexpr typename F::Bits BitsOf(typename F::Value key) {
  typename F::Bits bits = static_cast<typename F::Bits>(key);
  if constexpr (F::kFloating) {
    const typename F::Bits ordered = (bits ^ kSign<F>)+kBelowInfinity<F>;
    bits = ordered ^ (ordered & kSign<F> ? kSign<F> : static_cast<typename F::Bits>(-1));
  }
  return bits;
}

// Whether something holds from a place on to the end, looked at in stretches that have no branch.
template <class Holds> [[gnu::always_inline]] inline bool AllOf(Index n, Index first, Holds holds) {
  constexpr Index kAtOnce = 64;
  Index i = first;
  for (; i + kAtOnce <= n; i += kAtOnce) {
    int failures = 0;
    for (Index j = i; j < i + kAtOnce; ++j) failures |= holds(j) ? 0 : 1;
    if (failures != 0) return false;
  }
  for (; i < n; ++i) {
    if (!holds(i)) return false;
  }
  return true;
}

// Whether the elements stand in their order as they are, which nothing is written to find out. The bits of
// floating elements below 0 fall as the elements rise; turned round, all rise, but that negative
// not-a-numbers begin where they should end.
template <class F> constexpr typename F::Value Rising(typename F::Value bits) {
  constexpr auto kAllButSign = static_cast<typename F::Value>(kSign<F> - 1);
  return F::kFloating ? bits ^ ((bits >> (8 * sizeof bits - 1)) & kAllButSign) : bits;
}
template <class F, bool kDown> bool AreInOrder(const typename F::Key *bits, Index len) {
  // One value alone takes half the time.
  const typename F::Value one = bits[0];
  if (bits[len - 1] == one &&
      AllOf(
          len, 1, [=](Index i) __attribute__((always_inline)) { return bits[i] == one; })) {
    return true;
  }
  const bool rise = AllOf(
      len, 1, [=](Index i) __attribute__((always_inline)) {
        const typename F::Value here = Rising<F>(bits[i]), before = Rising<F>(bits[i - 1]);
        return kDown ? here <= before : here >= before;
      });
  if constexpr (F::kFloating) {
    const typename F::Value lowest = Rising<F>(bits[kDown ? len - 1 : 0]);
    return rise && lowest >= Rising<F>(static_cast<typename F::Value>(kSign<F> | F::kInfinity));
  }
  return rise;
}

template <class F, bool kDown> void ToKeys(typename F::Key *keys, Index len) {
  if constexpr (!F::kFloating && !kDown) return;
  for (Index i = 0; i < len; ++i) {
    const typename F::Value key = KeyOf<F>(static_cast<typename F::Bits>(keys[i]));
    keys[i] = kDown ? ~key : key;
  }
}

template <class F, bool kDown> void FromKeys(typename F::Key *keys, Index len) {
  if constexpr (!F::kFloating && !kDown) return;
  for (Index i = 0; i < len; ++i) {
    const typename F::Value key = keys[i];
    keys[i] = static_cast<typename F::Value>(BitsOf<F>(kDown ? ~key : key));
  }
}

// What is sorted: keys; keys with their places, by both; keys with their places, by place. Only keys alone
// may be equal.

template <class F> struct Keys {
  using Item = typename F::Value;
  static constexpr bool kRepeats = true;
  typename F::Key *keys;

  Item Get(Index i) const { return keys[i]; }
  void Put(Index i, Item x) const { keys[i] = x; }
  Keys From(Index i) const { return {keys + i}; }
  static bool Less(Item a, Item b) { return a < b; }

  // Room for some items on the stack.
  template <int kCount> struct Buffer {
    typename F::Value keys[kCount];
    Keys Array() { return {keys}; }
  };
};

template <class F> struct Placed {
  typename F::Value key;
  int place;
};

template <class F> struct Pairs {
  using Item = Placed<F>;
  static constexpr bool kRepeats = false;
  typename F::Key *keys;
  int *places;

  Item Get(Index i) const { return {keys[i], places[i]}; }
  void Put(Index i, Item x) const { keys[i] = x.key, places[i] = x.place; }
  Pairs From(Index i) const { return {keys + i, places + i}; }
  // Without a branch: which way it goes cannot be foretold.
  static bool Less(Item a, Item b) { return (a.key < b.key) | ((a.key == b.key) & (a.place < b.place)); }

  template <int kCount> struct Buffer {
    typename F::Value keys[kCount];
    int places[kCount];
    Pairs Array() { return {keys, places}; }
  };
};

template <class F> struct PairsByPlace {
  using Item = Placed<F>;
  static constexpr bool kRepeats = false;
  typename F::Key *keys;
  int *places;

  Item Get(Index i) const { return {keys[i], places[i]}; }
  void Put(Index i, Item x) const { keys[i] = x.key, places[i] = x.place; }
  PairsByPlace From(Index i) const { return {keys + i, places + i}; }
  static bool Less(Item a, Item b) { return a.place < b.place; }
};

// Introsort (D. R. Musser: Introspective sorting and selection algorithms, 1997): quicksort that turns to
// heapsort where it degenerates.

template <class A> void InsertionSort(A a, Index n) {
  for (Index i = 1; i < n; ++i) {
    const auto x = a.Get(i);
    Index j = i;
    for (; j > 0 && A::Less(x, a.Get(j - 1)); --j) a.Put(j, a.Get(j - 1));
    a.Put(j, x);
  }
}

template <class A> void SiftDown(A a, Index n, Index hole, typename A::Item x) {
  for (Index child = 2 * hole + 1; child < n; child = 2 * hole + 1) {
    if (child + 1 < n && A::Less(a.Get(child), a.Get(child + 1))) ++child;
    if (!A::Less(x, a.Get(child))) break;
    a.Put(hole, a.Get(child));
    hole = child;
  }
  a.Put(hole, x);
}

template <class A> void HeapSort(A a, Index n) {
  for (Index i = n / 2 - 1; i >= 0; --i) SiftDown(a, n, i, a.Get(i));
  for (Index last = n - 1; last > 0; --last) {
    const auto x = a.Get(last);
    a.Put(last, a.Get(0));
    SiftDown(a, last, 0, x);
  }
}

template <class A> typename A::Item MedianOfThree(A a, Index i, Index j, Index k) {
  const auto x = a.Get(i), y = a.Get(j), z = a.Get(k);
  if (A::Less(x, y)) return A::Less(y, z) ? y : A::Less(x, z) ? z : x;
  return A::Less(x, z) ? x : A::Less(y, z) ? z : y;
}

template <class A> typename A::Item MedianOfSome(A a, Index n) {
  const Index half = n / 2;
  if (n < 128) return MedianOfThree(a, 0, half, n - 1);
  const Index step = n / 8;
  const typename A::Item medians[3] = {MedianOfThree(a, 0, step, 2 * step),
                                       MedianOfThree(a, half - step, half, half + step),
                                       MedianOfThree(a, n - 1 - 2 * step, n - 1 - step, n - 1)};
  if (A::Less(medians[0], medians[1])) {
    return A::Less(medians[1], medians[2])   ? medians[1]
           : A::Less(medians[0], medians[2]) ? medians[2]
                                             : medians[0];
  }
  return A::Less(medians[0], medians[2])   ? medians[0]
         : A::Less(medians[1], medians[2]) ? medians[2]
                                           : medians[1];
}

// Brings the items of which `before` is true to the front and returns their number. Every item is exchanged,
// so that there is no branch to mispredict.
template <class A, class Before> Index Partition(A a, Index n, Before before) {
  Index front = 0;
  for (Index i = 0; i < n; ++i) {
    const auto x = a.Get(i);
    a.Put(i, a.Get(front));
    a.Put(front, x);
    front += before(x) ? 1 : 0;
  }
  return front;
}

template <class A> bool AreAll(A a, Index n, typename A::Item item) {
  return AllOf(
      n, 0, [=](Index i) __attribute__((always_inline)) { return a.Get(i) == item; });
}

// What Introsort needs of a way of sorting: here, item by item.
template <class A> struct ByItems {
  using Item = typename A::Item;
  static constexpr Index kShort = 24;

  static void SortShort(A a, Index n) { InsertionSort(a, n); }
  static Item Pivot(A a, Index n) { return MedianOfSome(a, n); }
  static Index PartitionBelow(A a, Index n, Item pivot) {
    return Partition(a, n, [pivot](Item x) { return A::Less(x, pivot); });
  }
  static Index PartitionNotAbove(A a, Index n, Item pivot) {
    return Partition(a, n, [pivot](Item x) { return !A::Less(pivot, x); });
  }
};

template <class Way, class A> void Introsort(A a, Index n, int partitions) {
  while (n > Way::kShort) {
    if (partitions-- == 0) return HeapSort(a, n);
    const auto pivot = Way::Pivot(a, n);
    // One value alone would be partitioned twice. From others its ends tell it at once.
    if constexpr (A::kRepeats) {
      if (a.Get(0) == pivot && a.Get(n - 1) == pivot && AreAll(a, n, pivot)) return;
    }
    Index front = Way::PartitionBelow(a, n, pivot);
    if (front == 0) {
      // The pivot is the smallest item: it and its equals go to the front and are done.
      front = Way::PartitionNotAbove(a, n, pivot);
    } else if (front < n - front) {
      Introsort<Way>(a, front, partitions);
    } else {
      Introsort<Way>(a.From(front), n - front, partitions);
      n = front;
      continue;
    }
    a = a.From(front);
    n -= front;
  }
  Way::SortShort(a, n);
}

#if defined(__AVX2__)
#include "SortRegisters.h"
template <class A> struct BestWay { using Type = ByRegisters<A>; };
template <class F> struct BestWay<PairsByPlace<F>> { using Type = ByItems<PairsByPlace<F>>; };
#else
template <class A> struct BestWay { using Type = ByItems<A>; };
#endif

template <class A> bool IsSorted(A a, Index n) {
  return AllOf(
      n, 1, [=](Index i) __attribute__((always_inline)) { return !A::Less(a.Get(i), a.Get(i - 1)); });
}

template <class A> void SortItems(A a, Index n) {
  if (IsSorted(a, n)) return;
  int partitions = 0;
  for (Index m = n; m > 1; m /= 2) partitions += 2;
  Introsort<typename BestWay<A>::Type>(a, n, partitions);
}

// The number of the sorted keys that are below `bound`.
template <class F> Index CountBelow(const typename F::Key *keys, Index len, typename F::Value bound) {
  Index first = 0;
  while (len > 0) {
    const Index half = len / 2;
    if (keys[first + half] < bound) {
      first += half + 1;
      len -= half + 1;
    } else {
      len = half;
    }
  }
  return first;
}

// Puts the items with keys from `lowest` to `highest`, which count as equal, in the order of their places.
template <class F>
void OrderByPlace(typename F::Key *keys, int *places, Index len, typename F::Value lowest,
                  typename F::Value highest) {
  const Index first = CountBelow<F>(keys, len, lowest);
  Index end = first + CountBelow<F>(keys + first, len - first, highest);
  while (end < len && keys[end] == highest) ++end;
  SortItems(PairsByPlace<F>{keys + first, places + first}, end - first);
}

template <class F, bool kDown> void Sort(typename F::Element *srcDst, int len) {
  auto *keys = reinterpret_cast<typename F::Key *>(srcDst);
  if (AreInOrder<F, kDown>(keys, len)) return;
  ToKeys<F, kDown>(keys, len);
  SortItems(Keys<F>{keys}, len);
  FromKeys<F, kDown>(keys, len);
}

template <class F, bool kDown> void SortIndex(typename F::Element *srcDst, int *indices, int len) {
  auto *keys = reinterpret_cast<typename F::Key *>(srcDst);
  for (int i = 0; i < len; ++i) indices[i] = i;
  if (AreInOrder<F, kDown>(keys, len)) return;
  ToKeys<F, kDown>(keys, len);
  SortItems(Pairs<F>{keys, indices}, len);
  if constexpr (F::kFloating) {
    using Value = typename F::Value;
    constexpr Value kMinusZero = KeyOf<F>(kSign<F>), kZero = KeyOf<F>(0);
    constexpr Value kFirstNan = KeyOf<F>(F::kInfinity) + 1, kLastNan = static_cast<Value>(kSign<F> - 1);
    OrderByPlace<F>(keys, indices, len, kDown ? ~kZero : kMinusZero, kDown ? ~kMinusZero : kZero);
    OrderByPlace<F>(keys, indices, len, kDown ? ~kLastNan : kFirstNan, kDown ? ~kFirstNan : kLastNan);
  }
  FromKeys<F, kDown>(keys, len);
}

} // namespace

#define QORN_FAMILY "Sort.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
