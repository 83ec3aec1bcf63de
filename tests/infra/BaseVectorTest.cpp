// What all eight vector classes inherit: storage, view, value semantics, filling and failing allocations.
#include "qorn/infra/BaseVector.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt16.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/infra/VecUInt32.h"
#include "qorn/infra/VecUInt8.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/Slots.h"

namespace {

using QORN::Cplx32;
using QORN::Cplx64;
using QORN::VecReal32;
using QORN::test::AllocationCount;
using QORN::test::AllocationLimit;
using QORN::test::ExpectThrown;
using QORN::test::LatestRequest;
using QORN::test::PrintedBy;

// One row per class: its element, the element's bytes, the allocation that it names and the path of 11001.
template <class Vector, class Element, int bytes> struct Kind {
  using V = Vector;
  using T = Element;
  static constexpr int kBytes = bytes;
};
struct OfUInt8 : Kind<QORN::VecUInt8, unsigned char, 1> {
  static constexpr const char *kName = "VecUInt8", *kMalloc = "MallocUInt8", *kPath = "infra/IntVector";
};
struct OfInt16 : Kind<QORN::VecInt16, short, 2> {
  static constexpr const char *kName = "VecInt16", *kMalloc = "MallocInt16", *kPath = "infra/IntVector";
};
struct OfInt32 : Kind<QORN::VecInt32, int, 4> {
  static constexpr const char *kName = "VecInt32", *kMalloc = "MallocInt32", *kPath = "infra/IntVector";
};
struct OfUInt32 : Kind<QORN::VecUInt32, unsigned int, 4> {
  static constexpr const char *kName = "VecUInt32", *kMalloc = "Malloc(U)Int32", *kPath = "infra/IntVector";
};
struct OfReal32 : Kind<QORN::VecReal32, float, 4> {
  static constexpr const char *kName = "VecReal32", *kMalloc = "MallocReal32", *kPath = "infra/Vector";
};
struct OfReal64 : Kind<QORN::VecReal64, double, 8> {
  static constexpr const char *kName = "VecReal64", *kMalloc = "MallocReal64", *kPath = "infra/Vector";
};
struct OfCplx32 : Kind<QORN::VecCplx32, Cplx32, 8> {
  static constexpr const char *kName = "VecCplx32", *kMalloc = "MallocCplx32", *kPath = "infra/Vector";
};
struct OfCplx64 : Kind<QORN::VecCplx64, Cplx64, 16> {
  static constexpr const char *kName = "VecCplx64", *kMalloc = "MallocCplx64", *kPath = "infra/Vector";
};

using Kinds = testing::Types<OfUInt8, OfInt16, OfInt32, OfUInt32, OfReal32, OfReal64, OfCplx32, OfCplx64>;
struct KindName {
  template <class K> static std::string GetName(int) { return K::kName; }
};

// Elements as integers from 0 to 127, so that one text serves every element type.
template <class T> T ElementOf(int i) {
  if constexpr (std::is_arithmetic_v<T>) {
    return static_cast<T>(i);
  } else {
    using S = decltype(T::re);
    return {static_cast<S>(i), static_cast<S>(2 * i)};
  }
}
template <class T> int IntegerOf(T x) {
  if constexpr (std::is_arithmetic_v<T>) {
    return static_cast<int>(x);
  } else {
    return x.re + x.re == x.im ? static_cast<int>(x.re) : -1;
  }
}

using Integers = std::vector<int>;

template <class T> Integers Values(const QORN::BaseVector<T> &vector) {
  Integers values;
  for (int i = 0; i < vector.GetSize(); ++i) values.push_back(IntegerOf(vector[i]));
  return values;
}

// A vector of n elements that holds 1, 2, ... n.
template <class K> typename K::V Counting(int n) {
  typename K::V vector(n);
  for (int i = 0; i < n; ++i) vector[i] = ElementOf<typename K::T>(i + 1);
  return vector;
}

// Opens what is protected.
template <class K> struct Probe : K::V {
  using K::V::V;
  explicit Probe(const typename K::V &vector) : K::V(vector) {}
  using K::V::Create;
  using K::V::GetElementSize;
  using K::V::m_capacity;
  using K::V::m_length;
  using K::V::m_pData;
  using K::V::m_pStorage;

  // All fields are zero.
  bool IsEmpty() const {
    return m_pStorage == nullptr && m_capacity == 0 && m_pData == nullptr && m_length == 0;
  }
};

// The two lines that a refused request of n elements prints.
template <class K> std::string RefusalOf(int n) {
  return std::string("QORNMalloc: System tried to allocate ")
      .append(std::to_string(n))
      .append(" items x ")
      .append(std::to_string(K::kBytes))
      .append(" bytes each = ")
      .append(std::to_string(static_cast<long long>(n) * K::kBytes))
      .append(" bytes\nFailed QORNMalloc::")
      .append(K::kMalloc)
      .append(" \n");
}

template <class K> class BaseVector : public testing::Test {};
TYPED_TEST_SUITE(BaseVector, Kinds, KindName);

// Layout.

TYPED_TEST(BaseVector, Layout_OfVectorClass_IsThatOfItsBase) {
  using V = typename TypeParam::V;
  using T = typename TypeParam::T;
  static_assert(std::is_base_of_v<QORN::BaseVector<T>, V>);
  static_assert(sizeof(V) == sizeof(QORN::BaseVector<T>));
  static_assert(sizeof(V) == 5 * sizeof(void *), "the virtual table, two pointers and two padded ints");
  const Probe<TypeParam> probe;
  const auto offset = [&](const void *field) {
    return static_cast<const char *>(field) - reinterpret_cast<const char *>(&probe);
  };
  EXPECT_EQ(offset(&probe.m_pStorage), 8);
  EXPECT_EQ(offset(&probe.m_capacity), 16);
  EXPECT_EQ(offset(&probe.m_pData), 24);
  EXPECT_EQ(offset(&probe.m_length), 32);
}

#if defined(QORN_TEST_SLOTS)
TYPED_TEST(BaseVector, VirtualSlots_InOrder_AreDestructorAndAlloc) {
  static_assert(std::has_virtual_destructor_v<QORN::BaseVector<typename TypeParam::T>>);
  struct OfBase : QORN::BaseVector<typename TypeParam::T> {
    static auto AllocMember() { return &OfBase::Alloc; }
  };
  struct OfVector : TypeParam::V {
    virtual void Next() {}
  };
  // The destructor, declared first, takes the slots 0 and 1.
  EXPECT_EQ(QORN::test::SlotOf(OfBase::AllocMember()), 2U);
  EXPECT_EQ(QORN::test::SlotOf(&OfVector::Next), 3U) << "a virtual operation was added";
}
#endif

TYPED_TEST(BaseVector, GetElementSize_OfVectorClass_IsThatOfItsElement) {
  EXPECT_EQ(Probe<TypeParam>().GetElementSize(), TypeParam::kBytes);
}

// Construction.

TYPED_TEST(BaseVector, Constructor_Default_IsEmpty) {
  const long before = AllocationCount();
  const Probe<TypeParam> vector;
  EXPECT_TRUE(vector.IsEmpty());
  EXPECT_EQ(vector.GetPtr(), nullptr);
  EXPECT_EQ(AllocationCount(), before);
}

TYPED_TEST(BaseVector, Constructor_LengthZero_HoldsNoBlock) {
  const long before = AllocationCount();
  Probe<TypeParam> vector(0);
  vector.Resize(0);
  EXPECT_EQ(vector.GetPtr(0), nullptr);
  EXPECT_EQ(vector.GetSize(), 0);
  EXPECT_EQ(vector.GetCapacity(), 0);
  EXPECT_TRUE(vector.IsEmpty());
  EXPECT_EQ(AllocationCount(), before);
}

TYPED_TEST(BaseVector, Constructor_Length_GivesAlignedZeroedElements) {
  for (const int n : {1, 2, 15, 64, 1001}) {
    Probe<TypeParam> vector(n);
    EXPECT_EQ(LatestRequest(), static_cast<std::size_t>(n) * TypeParam::kBytes);
    EXPECT_EQ(vector.GetSize(), n);
    EXPECT_EQ(vector.GetCapacity(), n);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(vector.GetPtr(0)) % 64, 0U);
    EXPECT_EQ(vector.m_pData, vector.m_pStorage);
    EXPECT_EQ(Values(vector), Integers(static_cast<std::size_t>(n), 0));
  }
}

TYPED_TEST(BaseVector, Constructor_NegativeOrRefusedLength_PrintsTwoLinesAndThrows) {
  using V = typename TypeParam::V;
  for (const int n : {-1, -2147483647 - 1, 2147482648, 2147483647}) {
    const std::string printed = PrintedBy(
        [n] { ExpectThrown([n] { V vector(n); }, 11001, "memory allocation error", TypeParam::kPath); });
    EXPECT_EQ(printed, RefusalOf<TypeParam>(n));
  }
}

TYPED_TEST(BaseVector, Constructor_NoMemory_PrintsTwoLinesAndThrows) {
  using V = typename TypeParam::V;
  const std::string printed = PrintedBy([] {
    const AllocationLimit limit(63);
    ExpectThrown([] { V vector(64); }, 11001, "memory allocation error", TypeParam::kPath);
  });
  EXPECT_EQ(printed, RefusalOf<TypeParam>(64));
}

TYPED_TEST(BaseVector, Create_OnBareBase_Throws10001) {
  struct Bare : QORN::BaseVector<typename TypeParam::T> {
    using Bare::BaseVector::Create;
  };
  for (const int n : {0, 1, -1}) {
    ExpectThrown([n] { Bare().Create(n); }, 10001, "unexpected software error", "infra/Vector");
  }
  Bare bare;
  ExpectThrown([&] { bare.Resize(1); }, 10001, "unexpected software error", "infra/Vector");
  bare.Resize(0);
  EXPECT_EQ(bare.GetSize(), 0);
}

TYPED_TEST(BaseVector, Create_OnFilledVector_ReplacesTheBlock) {
  Probe<TypeParam> vector(Counting<TypeParam>(9));
  vector.Trim(2);
  vector.Create(3);
  EXPECT_EQ(Values(vector), (Integers{0, 0, 0}));
  EXPECT_EQ(vector.GetCapacity(), 3);
  EXPECT_EQ(vector.m_pData, vector.m_pStorage);
}

TYPED_TEST(BaseVector, CopyOfTheBase_IsMemberwise_SharesTheBlock) {
  const auto vector = Counting<TypeParam>(4);
  const QORN::BaseVector<typename TypeParam::T> shared = vector;
  EXPECT_EQ(shared.GetPtr(), vector.GetPtr());
  EXPECT_EQ(shared.GetSize(), 4);
  EXPECT_EQ(shared.GetCapacity(), 4);
  QORN::BaseVector<typename TypeParam::T> assigned;
  assigned = shared;
  EXPECT_EQ(assigned.GetPtr(), vector.GetPtr());
  EXPECT_EQ(assigned.GetSize(), 4);
  EXPECT_EQ(assigned.GetCapacity(), 4);
}

// Access.

TYPED_TEST(BaseVector, Access_OfView_ReadsAndWritesItsElements) {
  auto vector = Counting<TypeParam>(6);
  const auto &constant = vector;
  EXPECT_EQ(IntegerOf(vector[2]), 3);
  EXPECT_EQ(IntegerOf(constant[2]), 3);
  EXPECT_EQ(IntegerOf(constant.GetLastValue()), 6);
  EXPECT_EQ(constant.GetPtr(3), constant.GetPtr() + 3);
  EXPECT_EQ(constant.DataPtr(3), constant.GetPtr(3));
  EXPECT_EQ(constant.DataPtr(), constant.GetPtr(0));
  vector[2] = ElementOf<typename TypeParam::T>(50);
  *vector.GetPtr(3) = ElementOf<typename TypeParam::T>(60);
  EXPECT_EQ(Values(vector), (Integers{1, 2, 50, 60, 5, 6}));
  vector.Truncate(2, 2);
  EXPECT_EQ(IntegerOf(vector[0]), 50);
  EXPECT_EQ(IntegerOf(constant.GetLastValue()), 60);
}

// Resize.

TYPED_TEST(BaseVector, Resize_UpToTheCapacity_KeepsBlockAndElements) {
  auto vector = Counting<TypeParam>(10);
  const auto *block = vector.GetPtr();
  const long before = AllocationCount();
  vector.Resize(4);
  EXPECT_EQ(vector.GetSize(), 4);
  EXPECT_EQ(vector.GetCapacity(), 10);
  vector.Resize(10);
  EXPECT_EQ(AllocationCount(), before);
  EXPECT_EQ(vector.GetPtr(), block);
  EXPECT_EQ(Values(vector), (Integers{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
}

TYPED_TEST(BaseVector, Resize_BeyondTheCapacity_GivesExactlyThatManyZeros) {
  auto vector = Counting<TypeParam>(10);
  vector.Resize(11);
  EXPECT_EQ(vector.GetCapacity(), 11);
  EXPECT_EQ(Values(vector), Integers(11, 0));
}

TYPED_TEST(BaseVector, Resize_Negative_BecomesTheLength) {
  auto empty = Counting<TypeParam>(0);
  empty.Resize(-1);
  EXPECT_EQ(empty.GetSize(), -1);
  auto vector = Counting<TypeParam>(3);
  vector.Resize(-1);
  EXPECT_EQ(vector.GetSize(), -1);
  EXPECT_EQ(vector.GetCapacity(), 3);
  vector.SetZero();
  vector.Set(ElementOf<typename TypeParam::T>(7));
  vector.Resize(3);
  EXPECT_EQ(Values(vector), (Integers{1, 2, 3}));
}

TYPED_TEST(BaseVector, Resize_NoMemory_ThrowsAndLeavesAnEmptyVector) {
  Probe<TypeParam> vector(Counting<TypeParam>(8));
  const std::string printed = PrintedBy([&] {
    const AllocationLimit limit(99);
    ExpectThrown([&] { vector.Resize(100); }, 11001, "memory allocation error", TypeParam::kPath);
  });
  EXPECT_EQ(printed, RefusalOf<TypeParam>(100));
  EXPECT_TRUE(vector.IsEmpty());
  vector.Resize(2);
  EXPECT_EQ(Values(vector), (Integers{0, 0}));
}

TYPED_TEST(BaseVector, ResizeExactly_ToTheCapacity_KeepsContentsUnlessForced) {
  auto vector = Counting<TypeParam>(7);
  vector.Trim(2, 3);
  const auto *block = vector.GetPtr() - 2;
  vector.ResizeExactly(7, false);
  EXPECT_EQ(vector.GetPtr(), block);
  EXPECT_EQ(Values(vector), (Integers{1, 2, 3, 4, 5, 6, 7}));
  vector.ResizeExactly(7);
  EXPECT_EQ(Values(vector), (Integers{1, 2, 3, 4, 5, 6, 7}));
  vector.ResizeExactly(7, true);
  EXPECT_EQ(Values(vector), Integers(7, 0));
  EXPECT_EQ(vector.GetCapacity(), 7);
}

TYPED_TEST(BaseVector, ResizeExactly_OtherThanTheCapacity_GivesThatCapacityZeroed) {
  for (const int n : {5, 9}) {
    auto vector = Counting<TypeParam>(7);
    vector.ResizeExactly(n, false);
    EXPECT_EQ(vector.GetCapacity(), n);
    EXPECT_EQ(Values(vector), Integers(static_cast<std::size_t>(n), 0));
  }
  Probe<TypeParam> vector(Counting<TypeParam>(7));
  vector.ResizeExactly(0);
  EXPECT_TRUE(vector.IsEmpty());
}

// The view.

TYPED_TEST(BaseVector, Trim_ToTheEnd_NarrowsUntilTheNextResize) {
  auto vector = Counting<TypeParam>(10);
  EXPECT_TRUE(vector.Trim(2, -1));
  EXPECT_EQ(Values(vector), (Integers{3, 4, 5, 6, 7, 8, 9, 10}));
  EXPECT_EQ(vector.GetCapacity(), 10);
  vector.Resize(3);
  EXPECT_EQ(Values(vector), (Integers{1, 2, 3}));
}

TYPED_TEST(BaseVector, Trim_Repeated_IsRelativeToTheView) {
  auto vector = Counting<TypeParam>(10);
  EXPECT_TRUE(vector.Trim(1, 8));
  EXPECT_TRUE(vector.Trim(2));
  EXPECT_TRUE(vector.Trim(0, 3));
  EXPECT_EQ(Values(vector), (Integers{4, 5, 6, 7}));
}

TYPED_TEST(BaseVector, Trim_LastJustBeforeFirst_IsEmpty) {
  auto vector = Counting<TypeParam>(10);
  EXPECT_TRUE(vector.Trim(3, 2));
  EXPECT_EQ(vector.GetSize(), 0);
}

#if !defined(QORN_CHECKED)
TYPED_TEST(BaseVector, Trim_LastFarBeforeFirst_GivesANegativeLength) {
  auto vector = Counting<TypeParam>(10);
  EXPECT_TRUE(vector.Trim(5, 2));
  EXPECT_EQ(vector.GetSize(), -2);
}
#endif

TYPED_TEST(BaseVector, Truncate_Count_NarrowsToThatMany) {
  auto vector = Counting<TypeParam>(10);
  EXPECT_TRUE(vector.Truncate(2, 3));
  EXPECT_EQ(Values(vector), (Integers{3, 4, 5}));
  EXPECT_EQ(vector.GetCapacity(), 10);
  EXPECT_TRUE(vector.Truncate(1, 1));
  EXPECT_EQ(Values(vector), (Integers{4}));
}

TYPED_TEST(BaseVector, Truncate_CountMinusOne_IsTheRest) {
  auto vector = Counting<TypeParam>(10);
  EXPECT_TRUE(vector.Truncate(2, -1));
  EXPECT_EQ(vector.GetSize(), 8);
  EXPECT_TRUE(vector.Truncate(3));
  EXPECT_EQ(Values(vector), (Integers{6, 7, 8, 9, 10}));
}

TYPED_TEST(BaseVector, Truncate_CountZero_EmptiesUnlessFirstIsZero) {
  auto vector = Counting<TypeParam>(10);
  EXPECT_TRUE(vector.Truncate(0, 0));
  EXPECT_EQ(vector.GetSize(), 10);
  EXPECT_TRUE(vector.Truncate(1, 0));
  EXPECT_EQ(vector.GetSize(), 0);
}

TYPED_TEST(BaseVector, SetZero_OfNarrowedVector_ClearsTheViewOnly) {
  auto vector = Counting<TypeParam>(6);
  vector.Truncate(2, 3);
  vector.SetZero();
  EXPECT_EQ(Values(vector), (Integers{0, 0, 0}));
  vector.Resize(6);
  EXPECT_EQ(Values(vector), (Integers{1, 2, 0, 0, 0, 6}));
}

TYPED_TEST(BaseVector, Release_InAnyState_LeavesAnEmptyVector) {
  Probe<TypeParam> whole(3), narrowed(4), empty;
  narrowed.Trim(1);
  whole.Release();
  narrowed.Del();
  empty.Release();
  empty.Release();
  EXPECT_TRUE(whole.IsEmpty());
  EXPECT_TRUE(narrowed.IsEmpty());
  EXPECT_TRUE(empty.IsEmpty());
}

// Copies, assignment and moves.

TYPED_TEST(BaseVector, Copy_OfAnyVector_IsAnIndependentValue) {
  auto source = Counting<TypeParam>(10);
  source.Resize(4);
  auto copy = source;
  EXPECT_EQ(Values(copy), (Integers{1, 2, 3, 4}));
  EXPECT_EQ(copy.GetCapacity(), 4);
  EXPECT_NE(copy.GetPtr(), source.GetPtr());
  copy[0] = ElementOf<typename TypeParam::T>(9);
  EXPECT_EQ(IntegerOf(source[0]), 1);
  source.Release();
  EXPECT_EQ(Values(copy), (Integers{9, 2, 3, 4}));
}

TYPED_TEST(BaseVector, Copy_OfNarrowedVector_IsWhole) {
  auto source = Counting<TypeParam>(10);
  source.Trim(3, 5);
  Probe<TypeParam> copy(source);
  EXPECT_EQ(Values(copy), (Integers{4, 5, 6}));
  EXPECT_EQ(copy.GetCapacity(), 3);
  EXPECT_EQ(copy.m_pData, copy.m_pStorage);
}

TYPED_TEST(BaseVector, Copy_OfEmptyVector_IsEmpty) {
  auto source = Counting<TypeParam>(5);
  source.Resize(0);
  EXPECT_TRUE(Probe<TypeParam>(source).IsEmpty());
}

TYPED_TEST(BaseVector, Copy_OfNegativeLength_IsRefused) {
  using V = typename TypeParam::V;
  V source;
  source.Resize(-1);
  const std::string printed = PrintedBy(
      [&] { ExpectThrown([&] { V copy(source); }, 11001, "memory allocation error", TypeParam::kPath); });
  EXPECT_EQ(printed, RefusalOf<TypeParam>(-1));
}

TYPED_TEST(BaseVector, Assignment_OfShorterVector_KeepsTheCapacity) {
  auto vector = Counting<TypeParam>(10);
  const auto source = Counting<TypeParam>(3);
  vector.Trim(4);
  const long before = AllocationCount();
  EXPECT_EQ(&(vector = source), &vector);
  EXPECT_EQ(AllocationCount(), before);
  EXPECT_EQ(vector.GetCapacity(), 10);
  EXPECT_EQ(Values(vector), (Integers{1, 2, 3}));
  vector.Resize(5);
  EXPECT_EQ(Values(vector), (Integers{1, 2, 3, 4, 5})) << "the elements behind are those of before";
}

TYPED_TEST(BaseVector, Assignment_OfLongerOrNarrowedVector_IsAnIndependentValue) {
  auto vector = Counting<TypeParam>(2);
  auto source = Counting<TypeParam>(6);
  source.Trim(1, 4);
  vector = source;
  source.SetZero();
  EXPECT_EQ(Values(vector), (Integers{2, 3, 4, 5}));
  EXPECT_EQ(vector.GetCapacity(), 4);
}

TYPED_TEST(BaseVector, Assignment_OfEmptyVector_EmptiesAndKeepsTheBlock) {
  auto vector = Counting<TypeParam>(4);
  vector = typename TypeParam::V();
  EXPECT_EQ(vector.GetSize(), 0);
  EXPECT_EQ(vector.GetCapacity(), 4);
}

TYPED_TEST(BaseVector, Assignment_ToItself_ChangesNothing) {
  auto vector = Counting<TypeParam>(6);
  vector.Trim(2, 4);
  auto &self = vector;
  const auto *view = vector.GetPtr();
  vector = self;
  EXPECT_EQ(Values(vector), (Integers{3, 4, 5}));
  vector = std::move(self);
  EXPECT_EQ(Values(vector), (Integers{3, 4, 5}));
  EXPECT_EQ(vector.GetPtr(), view) << "the view stays narrowed";
}

TYPED_TEST(BaseVector, MoveConstructor_OfAnyVector_TakesTheBlockOver) {
  using V = typename TypeParam::V;
  static_assert(std::is_nothrow_move_constructible_v<V> && std::is_nothrow_move_assignable_v<V>);
  Probe<TypeParam> source(Counting<TypeParam>(6));
  source.Trim(1);
  const auto *view = source.GetPtr();
  const long before = AllocationCount();
  const V moved(std::move(source));
  EXPECT_EQ(AllocationCount(), before);
  EXPECT_EQ(moved.GetPtr(), view);
  EXPECT_EQ(Values(moved), (Integers{2, 3, 4, 5, 6}));
  EXPECT_EQ(moved.GetCapacity(), 6);
  EXPECT_TRUE(source.IsEmpty());
}

TYPED_TEST(BaseVector, MoveAssignment_OfLongerVector_TakesTheBlockOver) {
  auto vector = Counting<TypeParam>(2);
  Probe<TypeParam> source(Counting<TypeParam>(6));
  const auto *block = source.GetPtr();
  const long before = AllocationCount();
  vector = std::move(source);
  EXPECT_EQ(AllocationCount(), before);
  EXPECT_EQ(vector.GetPtr(), block);
  EXPECT_EQ(Values(vector), (Integers{1, 2, 3, 4, 5, 6}));
  EXPECT_TRUE(source.IsEmpty());
}

TYPED_TEST(BaseVector, MoveAssignment_OfVectorThatFits_KeepsTheBlock) {
  auto vector = Counting<TypeParam>(10);
  const auto *block = vector.GetPtr();
  vector = Counting<TypeParam>(3);
  EXPECT_EQ(vector.GetPtr(), block);
  EXPECT_EQ(vector.GetCapacity(), 10);
  EXPECT_EQ(Values(vector), (Integers{1, 2, 3}));
}

TYPED_TEST(BaseVector, Swap_OfTwoVectors_ExchangesTheirValues) {
  auto shorter = Counting<TypeParam>(2);
  auto longer = Counting<TypeParam>(5);
  std::swap(shorter, longer);
  EXPECT_EQ(Values(longer), (Integers{1, 2}));
  EXPECT_EQ(Values(shorter), (Integers{1, 2, 3, 4, 5}));
}

// Filling.

TYPED_TEST(BaseVector, Set_WithLength_ResizesAndFills) {
  auto vector = Counting<TypeParam>(2);
  const auto seven = ElementOf<typename TypeParam::T>(7);
  vector.Set(seven, 5);
  EXPECT_EQ(Values(vector), Integers(5, 7));
  EXPECT_EQ(vector.GetCapacity(), 5);
  vector.Set(ElementOf<typename TypeParam::T>(8), 3);
  vector.Resize(5);
  EXPECT_EQ(Values(vector), (Integers{8, 8, 8, 7, 7}));
}

TYPED_TEST(BaseVector, Set_WithoutLength_FillsTheViewOnly) {
  const auto seven = ElementOf<typename TypeParam::T>(7);
  for (const int n : {0, -1, -5}) {
    auto vector = Counting<TypeParam>(5);
    vector.Set(seven, n);
    EXPECT_EQ(Values(vector), Integers(5, 7));
  }
  auto vector = Counting<TypeParam>(5);
  vector.Trim(1, 2);
  vector.Set(seven);
  EXPECT_EQ(Values(vector), (Integers{7, 7}));
  vector.Resize(5);
  EXPECT_EQ(Values(vector), (Integers{1, 7, 7, 4, 5}));
  typename TypeParam::V empty;
  empty.Set(seven, 0);
  EXPECT_EQ(empty.GetSize(), 0);
}

TYPED_TEST(BaseVector, OutputVector_UsedRepeatedly_AllocatesNothing) {
  using V = typename TypeParam::V;
  const V source = Counting<TypeParam>(100);
  V output;
  output = source;
  const long before = AllocationCount();
  for (const int n : {100, 1, 0, 99, 100}) {
    output.Resize(n);
    output.Set(ElementOf<typename TypeParam::T>(3), n);
    output.SetZero();
    output = source;
    output.Truncate(1, 5);
  }
  EXPECT_EQ(AllocationCount(), before);
}

#if defined(QORN_CHECKED)
TEST(BaseVectorDeathTest, Index_OutsideTheView_StopsWithBothValues) {
  VecReal32 vector(5);
  vector.Trim(1);
  const VecReal32 &constant = vector;
  EXPECT_DEATH(vector[4] = 0, "QORN: index = 4, length = 4");
  EXPECT_DEATH(vector[-1] = 0, "QORN: index = -1, length = 4");
  EXPECT_DEATH(static_cast<void>(constant[4]), "QORN: index = 4, length = 4");
  EXPECT_DEATH(static_cast<void>(VecReal32().GetLastValue()), "QORN: index = -1, length = 0");
  EXPECT_EQ(vector.GetPtr(4), vector.GetPtr() + 4);
  EXPECT_DEATH(static_cast<void>(vector.GetPtr(5)), "QORN: index = 5, length = 4");
  EXPECT_DEATH(static_cast<void>(vector.DataPtr(-1)), "QORN: index = -1, length = 4");
}

TEST(BaseVectorDeathTest, Range_OutsideTheView_StopsWithBothValues) {
  VecReal32 vector(5);
  EXPECT_DEATH(vector.Trim(6), "QORN: first = 6, length = 5");
  EXPECT_DEATH(vector.Trim(-1), "QORN: first = -1, length = 5");
  EXPECT_DEATH(vector.Trim(0, 5), "QORN: last = 5, length = 5");
  EXPECT_DEATH(vector.Trim(5, 2), "QORN: last = 2, length = 5");
  EXPECT_DEATH(vector.Truncate(6, 0), "QORN: first = 6, length = 5");
  EXPECT_DEATH(vector.Truncate(2, 4), "QORN: count = 4, length - first = 3");
  EXPECT_DEATH(vector.Truncate(2, -2), "QORN: count = -2, length - first = 3");
}
#endif

} // namespace
