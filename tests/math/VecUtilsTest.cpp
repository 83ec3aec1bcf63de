#include "qorn/math/VecUtils.h"

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

#include "qorn/infra/QORNException.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::Element;
using test::ElementOf;
using test::List;
using test::Numbers;
using test::Of;

static_assert(std::is_base_of_v<VectorConversion, VecUtils>);

template <class V> void Expect(const V &vec, const std::vector<int> &numbers) {
  EXPECT_EQ(List(vec), List(Numbers<V>(numbers)));
}

template <class V> class VecUtilsOnAll : public testing::Test {};
using AllVectors = testing::Types<VecReal32, VecReal64, VecCplx32, VecCplx64, VecInt32>;
TYPED_TEST_SUITE(VecUtilsOnAll, AllVectors);

template <class V> class VecUtilsOnSamples : public testing::Test {};
using SampleVectors = testing::Types<VecReal32, VecReal64, VecCplx32, VecCplx64>;
TYPED_TEST_SUITE(VecUtilsOnSamples, SampleVectors);

TYPED_TEST(VecUtilsOnAll, Concat_TwoVectors_JoinsThem) {
  using V = TypeParam;
  V dst;
  VecUtils::Concat(dst, Numbers<V>({1, 2, 3}), Numbers<V>({4, 5}));
  Expect(dst, {1, 2, 3, 4, 5});
  VecUtils::Concat(dst, V(), Numbers<V>({7}));
  Expect(dst, {7});
  VecUtils::Concat(dst, Numbers<V>({8}), V());
  Expect(dst, {8});
  VecUtils::Concat(dst, V(), V());
  EXPECT_EQ(dst.GetSize(), 0);
}

TYPED_TEST(VecUtilsOnAll, Concat_Ranges_JoinsThem) {
  using V = TypeParam;
  const V a = Numbers<V>({0, 1, 2, 3, 4});
  const V b = Numbers<V>({10, 11, 12});
  V dst;
  VecUtils::Concat(dst, a, 1, 2, b, 1, -1);
  Expect(dst, {1, 2, 11, 12});
  VecUtils::Concat(dst, a, 3, -1, b, 0, 1);
  Expect(dst, {3, 4, 10});
  VecUtils::Concat(dst, a, 5, -1, b, 0, 2);
  Expect(dst, {10, 11});
  VecUtils::Concat(dst, a, 0, 0, b, 0, -7);
  EXPECT_EQ(dst.GetSize(), 0);
}

TYPED_TEST(VecUtilsOnAll, Prepend_Vector_PutsItBefore) {
  using V = TypeParam;
  V vec = Numbers<V>({3, 4});
  VecUtils::Prepend(vec, Numbers<V>({1, 2}));
  Expect(vec, {1, 2, 3, 4});
  VecUtils::Prepend(vec, V());
  Expect(vec, {1, 2, 3, 4});
}

TYPED_TEST(VecUtilsOnAll, Append_Vector_PutsItBehind) {
  using V = TypeParam;
  V vec = Numbers<V>({3, 4});
  VecUtils::Append(vec, Numbers<V>({1, 2}));
  Expect(vec, {3, 4, 1, 2});
  V empty;
  VecUtils::Append(empty, vec);
  Expect(empty, {3, 4, 1, 2});
}

TYPED_TEST(VecUtilsOnAll, PrependAndAppend_Itself_DoubleTheVector) {
  using V = TypeParam;
  V vec = Numbers<V>({1, 2, 3});
  VecUtils::Append(vec, vec);
  Expect(vec, {1, 2, 3, 1, 2, 3});
  VecUtils::Prepend(vec, vec);
  Expect(vec, {1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3});
  // With capacity to spare, nothing is moved aside by a new block.
  vec.Resize(2);
  VecUtils::Append(vec, vec);
  Expect(vec, {1, 2, 1, 2});
}

TYPED_TEST(VecUtilsOnAll, Copy_Range_GivesDstItsLength) {
  using V = TypeParam;
  const V src = Numbers<V>({0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  V dst;
  VecUtils::Copy(dst, src, 3, -1);
  Expect(dst, {3, 4, 5, 6, 7, 8, 9});
  VecUtils::Copy(dst, src, 2, 5);
  Expect(dst, {2, 3, 4, 5, 6});
  VecUtils::Copy(dst, src, 10, -1);
  EXPECT_EQ(dst.GetSize(), 0);
  VecUtils::Copy(dst, src, 0, 0);
  EXPECT_EQ(dst.GetSize(), 0);
  VecUtils::Copy(dst, src, 0, -2);
  EXPECT_EQ(dst.GetSize(), 0);
}

TYPED_TEST(VecUtilsOnAll, Insert_Range_OverwritesWithoutResize) {
  using V = TypeParam;
  V dst = Numbers<V>({0, 1, 2, 3, 4});
  VecUtils::Insert(dst, 1, Numbers<V>({10, 11, 12}), 1, -1);
  Expect(dst, {0, 11, 12, 3, 4});
  VecUtils::Insert(dst, 4, Numbers<V>({10, 11, 12}), 0, 1);
  Expect(dst, {0, 11, 12, 3, 10});
  VecUtils::Insert(dst, 0, Numbers<V>({20, 21}), 2, -1);
  Expect(dst, {0, 11, 12, 3, 10});
  VecUtils::Insert(dst, 0, dst, 1, 4);
  Expect(dst, {11, 12, 3, 10, 10});
}

TYPED_TEST(VecUtilsOnAll, CopyByIndex_Indices_Gather) {
  using V = TypeParam;
  V dst;
  VecUtils::CopyByIndex(dst, Numbers<V>({10, 11, 12}), Of<VecInt32>({2, 0, 0, 1, 2}));
  Expect(dst, {12, 10, 10, 11, 12});
  VecUtils::CopyByIndex(dst, Numbers<V>({10}), VecInt32());
  EXPECT_EQ(dst.GetSize(), 0);
}

TYPED_TEST(VecUtilsOnSamples, Downsample_TenByThree_TakesEveryThirdFromThePhase) {
  using V = TypeParam;
  const V src = Numbers<V>({0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  V dst;
  VecUtils::Downsample(dst, src, 3, 0);
  Expect(dst, {0, 3, 6, 9});
  VecUtils::Downsample(dst, src, 3, 1);
  Expect(dst, {1, 4, 7});
  VecUtils::Downsample(dst, src, 3, 2);
  Expect(dst, {2, 5, 8});
  VecUtils::Downsample(dst, src, 1, 0);
  Expect(dst, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  VecUtils::Downsample(dst, src, 20, 15);
  EXPECT_EQ(dst.GetSize(), 0);
  VecUtils::Downsample(dst, V(), 2, 0);
  EXPECT_EQ(dst.GetSize(), 0);
}

TYPED_TEST(VecUtilsOnSamples, Downsample_LargestFactor_DoesNotOverflow) {
  using V = TypeParam;
  V dst;
  VecUtils::Downsample(dst, Numbers<V>({4, 5, 6}), std::numeric_limits<int>::max(), 0);
  Expect(dst, {4});
}

TYPED_TEST(VecUtilsOnSamples, Downsample_PhaseOutside_ResizesAndLeavesTheElements) {
  using V = TypeParam;
  V dst = Numbers<V>({7, 8, 9, 10});
  VecUtils::Downsample(dst, Numbers<V>({0, 1, 2, 3, 4, 5}), 2, 2);
  Expect(dst, {7, 8});
  VecUtils::Downsample(dst, Numbers<V>({0, 1}), 2, 100);
  EXPECT_EQ(dst.GetSize(), 0);
}

TYPED_TEST(VecUtilsOnSamples, Downsample_FactorBelowOne_LeavesDst) {
  using V = TypeParam;
  V dst = Numbers<V>({7, 8, 9});
  VecUtils::Downsample(dst, Numbers<V>({0, 1, 2}), 0, 0);
  VecUtils::Downsample(dst, Numbers<V>({0, 1, 2}), -3, 0);
  Expect(dst, {7, 8, 9});
}

TYPED_TEST(VecUtilsOnSamples, Upsample_TwoByThree_InsertsZeros) {
  using V = TypeParam;
  V dst = Numbers<V>({9, 9, 9, 9, 9, 9, 9, 9});
  VecUtils::Upsample(dst, Numbers<V>({1, 2}), 3, 1);
  ASSERT_EQ(dst.GetSize(), 6);
  using T = ElementOf<V>;
  EXPECT_EQ(List(dst), (std::vector<T>{T{}, Element<T>(1), T{}, T{}, Element<T>(2), T{}}));
  VecUtils::Upsample(dst, Numbers<V>({1, 2}), 1, 0);
  Expect(dst, {1, 2});
}

TYPED_TEST(VecUtilsOnSamples, Upsample_Refused_ResizesAndLeavesTheElements) {
  using V = TypeParam;
  V dst = Numbers<V>({7, 8, 9, 10, 11});
  VecUtils::Upsample(dst, Numbers<V>({1, 2}), 2, 2);
  Expect(dst, {7, 8, 9, 10});
  VecUtils::Upsample(dst, Numbers<V>({1, 2}), -1, 0);
  EXPECT_EQ(dst.GetSize(), 0);
}

TYPED_TEST(VecUtilsOnSamples, Duplicate_Elements_RepeatsEachInPlace) {
  using V = TypeParam;
  V dst;
  VecUtils::Duplicate(dst, Numbers<V>({1, 2}), 3);
  Expect(dst, {1, 1, 1, 2, 2, 2});
  VecUtils::Duplicate(dst, Numbers<V>({1, 2}), 2);
  Expect(dst, {1, 1, 2, 2});
  VecUtils::Duplicate(dst, Numbers<V>({1, 2}), 0);
  EXPECT_EQ(dst.GetSize(), 0);
  VecUtils::Duplicate(dst, Numbers<V>({1, 2}), -1);
  EXPECT_EQ(dst.GetSize(), 0);
}

TYPED_TEST(VecUtilsOnSamples, DuplicateAndUpsample_BeyondAnyVector_FailAsALackOfMemory) {
  using V = TypeParam;
  const V src(1000);
  testing::internal::CaptureStdout();
  for (int which = 0; which < 2; ++which) {
    V dst;
    try {
      // 1000 * 4294968 is just above 2^32: in an int it would look like a small length.
      if (which == 0) VecUtils::Duplicate(dst, src, 4294968);
      if (which == 1) VecUtils::Upsample(dst, src, 4294968, 0);
      ADD_FAILURE() << "no exception";
    } catch (const QORNException &e) {
      EXPECT_EQ(e.GetErrorCode(), 11001);
    }
  }
  testing::internal::GetCapturedStdout();
}

TYPED_TEST(VecUtilsOnSamples, DeleteElement_Indices_ClosesTheGaps) {
  using V = TypeParam;
  V vec = Numbers<V>({1, 2, 3});
  VecUtils::DeleteElement(vec, Of<VecInt32>({0, 2}));
  Expect(vec, {2});
  vec = Numbers<V>({0, 1, 2, 3, 4, 5});
  VecUtils::DeleteElement(vec, Of<VecInt32>({1, 2, 5}));
  Expect(vec, {0, 3, 4});
  EXPECT_EQ(vec.GetCapacity(), 6);
}

TYPED_TEST(VecUtilsOnSamples, DeleteElement_All_LeavesTheVector) {
  using V = TypeParam;
  V vec = Numbers<V>({1, 2, 3});
  VecUtils::DeleteElement(vec, Of<VecInt32>({0, 1, 2}));
  Expect(vec, {1, 2, 3});
  V one = Numbers<V>({4});
  VecUtils::DeleteElement(one, 0);
  Expect(one, {4});
}

TYPED_TEST(VecUtilsOnSamples, DeleteElement_OneIndex_RemovesIt) {
  using V = TypeParam;
  V vec = Numbers<V>({1, 2, 3});
  VecUtils::DeleteElement(vec, 1);
  Expect(vec, {1, 3});
  VecUtils::DeleteElement(vec, 9);
  Expect(vec, {1, 3});
}

TYPED_TEST(VecUtilsOnSamples, DeleteElement_IndexThatFallsBehind_StopsTheScan) {
  using V = TypeParam;
  V vec = Numbers<V>({0, 1, 2, 3, 4});
  VecUtils::DeleteElement(vec, Of<VecInt32>({1, 1, 3}));
  Expect(vec, {0, 2, 3, 4});
  VecUtils::DeleteElement(vec, VecInt32());
  Expect(vec, {0, 2, 3, 4});
}

TYPED_TEST(VecUtilsOnSamples, DeleteElement_NarrowedView_StaysWithinIt) {
  using V = TypeParam;
  V vec = Numbers<V>({0, 1, 2, 3, 4, 5});
  vec.Trim(1, 4);
  VecUtils::DeleteElement(vec, 0);
  Expect(vec, {2, 3, 4});
  EXPECT_EQ(*(vec.GetPtr() - 1), Element<ElementOf<V>>(0));
}

TYPED_TEST(VecUtilsOnSamples, Flip_AnyLength_Reverses) {
  using V = TypeParam;
  for (int n = 0; n < 70; ++n) {
    std::vector<int> up;
    std::vector<int> down;
    for (int i = 0; i < n; ++i) {
      up.push_back(i);
      down.push_back(n - 1 - i);
    }
    V vec = Numbers<V>(up);
    VecUtils::Flip(vec);
    Expect(vec, down);
  }
}

TYPED_TEST(VecUtilsOnAll, Sort_BothWays_GivesValuesAndFormerPlaces) {
  using V = TypeParam;
  V vec = Numbers<V>({3, 1, 2});
  VecInt32 order;
  VecUtils::Sort(vec, order, VecUtils::SortAscending);
  Expect(vec, {1, 2, 3});
  EXPECT_EQ(List(order), (std::vector<int>{1, 2, 0}));
  for (const int dir : {0, 2, -1}) {
    V other = Numbers<V>({3, 1, 2});
    VecUtils::Sort(other, order, static_cast<VecUtils::SortDir>(dir));
    Expect(other, {3, 2, 1});
    EXPECT_EQ(List(order), (std::vector<int>{0, 2, 1}));
  }
}

TYPED_TEST(VecUtilsOnAll, Sort_WithoutOrder_GivesTheSameValues) {
  using V = TypeParam;
  V vec = Numbers<V>({3, 1, 2, 1});
  VecUtils::Sort(vec, VecUtils::SortAscending);
  Expect(vec, {1, 1, 2, 3});
  VecUtils::Sort(vec, VecUtils::SortDescending);
  Expect(vec, {3, 2, 1, 1});
  V empty;
  VecInt32 order(3);
  VecUtils::Sort(empty, VecUtils::SortAscending);
  VecUtils::Sort(empty, order, VecUtils::SortDescending);
  EXPECT_EQ(empty.GetSize(), 0);
  EXPECT_EQ(order.GetSize(), 0);
}

TEST(VecUtils, Sort_Complex_GoesByMagnitude) {
  auto f = Of<VecCplx32>({{3.0F, 4.0F}, {1.0F, 0.0F}, {-2.0F, 0.0F}});
  VecUtils::Sort(f, VecUtils::SortAscending);
  EXPECT_EQ(List(f), (std::vector<Cplx32>{{1.0F, 0.0F}, {-2.0F, 0.0F}, {3.0F, 4.0F}}));
  auto d = Of<VecCplx64>({{3.0, 4.0}, {1.0, 0.0}, {-2.0, 0.0}});
  VecUtils::Sort(d, VecUtils::SortDescending);
  EXPECT_EQ(List(d), (std::vector<Cplx64>{{3.0, 4.0}, {-2.0, 0.0}, {1.0, 0.0}}));
}

// The magnitudes of the first two are one float and two doubles.
TEST(VecUtils, Sort_Complex_ComparesInTheElementsPrecision) {
  const Cplx32 larger{1.0F, 1e-5F}, one{1.0F, 0.0F}, small{0.5F, 0.0F};
  auto f = Of<VecCplx32>({larger, one, small});
  VecInt32 order;
  VecUtils::Sort(f, order, VecUtils::SortAscending);
  EXPECT_EQ(List(f), (std::vector<Cplx32>{small, larger, one}));
  EXPECT_EQ(List(order), (std::vector<int>{2, 0, 1}));
  auto d = Of<VecCplx64>({{1.0, 1e-5}, {1.0, 0.0}, {0.5, 0.0}});
  VecUtils::Sort(d, order, VecUtils::SortAscending);
  EXPECT_EQ(List(order), (std::vector<int>{2, 1, 0}));
}

TYPED_TEST(VecUtilsOnAll, Sort_EqualElements_KeepTheirOrder) {
  using V = TypeParam;
  for (const auto dir : {VecUtils::SortAscending, VecUtils::SortDescending}) {
    V vec = Numbers<V>({5, 5, 5, 5});
    VecInt32 order;
    VecUtils::Sort(vec, order, dir);
    EXPECT_EQ(List(order), (std::vector<int>{0, 1, 2, 3}));
  }
}

TEST(VecUtils, Sort_NotANumber_IsLastAscendingAndFirstDescending) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  auto vec = Of<VecReal64>({nan, 2.0, -1.0});
  VecInt32 order;
  VecUtils::Sort(vec, order, VecUtils::SortAscending);
  EXPECT_EQ(List(order), (std::vector<int>{2, 1, 0}));
  VecUtils::Sort(vec, order, VecUtils::SortDescending);
  EXPECT_EQ(List(order), (std::vector<int>{2, 1, 0}));
  auto pairs = Of<VecCplx64>({{nan, 0.0}, {2.0, 0.0}, {0.0, -1.0}});
  VecUtils::Sort(pairs, order, VecUtils::SortAscending);
  EXPECT_EQ(List(order), (std::vector<int>{2, 1, 0}));
}

TEST(VecUtils, SortDir_Values_AreThoseOfTheInterface) {
  EXPECT_EQ(VecUtils::SortDescending, 0);
  EXPECT_EQ(VecUtils::SortAscending, 1);
}

TEST(VecUtils, Convert_IsInherited) {
  VecInt32 dst;
  VecUtils::Convert(dst, Of<VecReal32>({2.9F, -2.9F}));
  EXPECT_EQ(List(dst), (std::vector<int>{2, -2}));
}

TYPED_TEST(VecUtilsOnSamples, Families_OnKeptDestinations_AllocateNothing) {
  using V = TypeParam;
  const V src(500);
  V dst(2000);
  const VecInt32 index(100);
  const long before = test::AllocationCount();
  VecUtils::Concat(dst, src, src);
  VecUtils::Copy(dst, src, 1, -1);
  VecUtils::Insert(dst, 0, src, 0, 5);
  VecUtils::CopyByIndex(dst, src, index);
  VecUtils::Downsample(dst, src, 2, 0);
  VecUtils::Upsample(dst, src, 2, 0);
  VecUtils::Duplicate(dst, src, 2);
  VecUtils::Flip(dst);
  VecUtils::DeleteElement(dst, 3);
  EXPECT_EQ(test::AllocationCount(), before);
}

} // namespace
