// What all three matrix classes inherit: storage, row table, value semantics and failing allocations.
#include "qorn/infra/BaseMatrix.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "qorn/infra/BitVector.h"
#include "qorn/infra/MatReal32.h"
#include "qorn/infra/MatReal64.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/Matrices.h"
#include "support/Slots.h"

namespace {

using QORN::test::AllocationCount;
using QORN::test::AllocationLimit;
using QORN::test::ByRows;
using QORN::test::ExpectThrown;
using QORN::test::Flat;
using QORN::test::LatestRequest;
using QORN::test::MatrixOf;
using QORN::test::PrintedBy;

template <class Matrix, class Element> struct Kind {
  using M = Matrix;
  using T = Element;
};
struct OfReal32 : Kind<QORN::MatReal32, float> {
  static constexpr const char *kName = "MatReal32", *kPath = "infra/Matrix";
};
struct OfReal64 : Kind<QORN::MatReal64, double> {
  static constexpr const char *kName = "MatReal64", *kPath = "infra/Matrix";
};
struct OfBits : Kind<QORN::BitVector, unsigned char> {
  static constexpr const char *kName = "BitVector", *kPath = "infra/BitVector";
};
using Kinds = testing::Types<OfReal32, OfReal64, OfBits>;
struct KindName {
  template <class K> static std::string GetName(int) { return K::kName; }
};

using Elements = std::vector<double>;
using Rows = std::vector<Elements>;

// Opens what is protected.
template <class K> struct Probe : K::M {
  using K::M::M;
  explicit Probe(const typename K::M &matrix) : K::M(matrix) {}
  using K::M::Create;
  using K::M::Dealloc;
  using K::M::GetElementSize;
  using K::M::m_capacity;
  using K::M::m_cols;
  using K::M::m_pData;
  using K::M::m_ppRows;
  using K::M::m_pStorage;
  using K::M::m_rows;
  using K::M::m_size;
  using K::M::SetupPoints;

  bool HasNoStorage() const {
    return m_pStorage == nullptr && m_capacity == 0 && m_pData == nullptr && m_ppRows == nullptr;
  }
  bool IsEmpty() const { return HasNoStorage() && m_size == 0 && m_rows == 0 && m_cols == 0; }
};

template <class K> class BaseMatrix : public testing::Test {
public:
  // A matrix that holds 1, 2, ... row by row.
  static typename K::M Counting(int rows, int cols) {
    typename K::M matrix(rows, cols);
    for (int i = 0; i < rows * cols; ++i) *matrix.GetPtr(i) = static_cast<typename K::T>(i + 1);
    return matrix;
  }
};
TYPED_TEST_SUITE(BaseMatrix, Kinds, KindName);

// Layout.

TYPED_TEST(BaseMatrix, Layout_OfMatrixClass_IsThatOfItsBase) {
  using M = typename TypeParam::M;
  using T = typename TypeParam::T;
  static_assert(std::is_base_of_v<QORN::BaseMatrix<T>, M>);
  static_assert(sizeof(M) == sizeof(QORN::BaseMatrix<T>));
  static_assert(sizeof(M) == 7 * sizeof(void *), "the virtual table, three pointers and four ints");
  const Probe<TypeParam> probe;
  const auto offset = [&](const void *field) {
    return static_cast<const char *>(field) - reinterpret_cast<const char *>(&probe);
  };
  EXPECT_EQ(offset(&probe.m_pStorage), 8);
  EXPECT_EQ(offset(&probe.m_capacity), 16);
  EXPECT_EQ(offset(&probe.m_pData), 24);
  EXPECT_EQ(offset(&probe.m_size), 32);
  EXPECT_EQ(offset(&probe.m_ppRows), 40);
  EXPECT_EQ(offset(&probe.m_rows), 48);
  EXPECT_EQ(offset(&probe.m_cols), 52);
}

#if defined(QORN_TEST_SLOTS)
TYPED_TEST(BaseMatrix, VirtualSlots_InOrder_AreDestructorAndAlloc) {
  static_assert(std::has_virtual_destructor_v<QORN::BaseMatrix<typename TypeParam::T>>);
  struct OfBase : QORN::BaseMatrix<typename TypeParam::T> {
    static auto AllocMember() { return &OfBase::Alloc; }
  };
  struct OfMatrix : TypeParam::M {
    virtual void Next() {}
  };
  // The destructor, declared first, takes the slots 0 and 1.
  EXPECT_EQ(QORN::test::SlotOf(OfBase::AllocMember()), 2U);
  EXPECT_EQ(QORN::test::SlotOf(&OfMatrix::Next), 3U) << "a virtual operation was added";
}
#endif

TYPED_TEST(BaseMatrix, GetElementSize_OfMatrixClass_IsThatOfItsElement) {
  EXPECT_EQ(Probe<TypeParam>().GetElementSize(), static_cast<int>(sizeof(typename TypeParam::T)));
}

// Construction.

TYPED_TEST(BaseMatrix, Constructor_Default_IsEmpty) {
  const long before = AllocationCount();
  const Probe<TypeParam> matrix;
  EXPECT_TRUE(matrix.IsEmpty());
  EXPECT_EQ(matrix.GetPtr(), nullptr);
  EXPECT_EQ(AllocationCount(), before);
}

TYPED_TEST(BaseMatrix, Constructor_NoElements_KeepsTheShapeAndAllocatesNothing) {
  const long before = AllocationCount();
  const Probe<TypeParam> noRows(0, 5), noColumns(4, 0);
  EXPECT_EQ(AllocationCount(), before);
  EXPECT_EQ(noRows.GetRows(), 0);
  EXPECT_EQ(noRows.GetCols(), 5);
  EXPECT_EQ(noRows.GetSize(), 0);
  EXPECT_TRUE(noRows.HasNoStorage());
  EXPECT_EQ(noColumns.GetRows(), 4);
  EXPECT_EQ(noColumns.GetCols(), 0);
  EXPECT_TRUE(noColumns.HasNoStorage());
}

TYPED_TEST(BaseMatrix, Constructor_Shape_GivesAnAlignedBlockAndARowTable) {
  for (const auto &[rows, cols] : {std::pair(1, 1), std::pair(3, 5), std::pair(64, 2), std::pair(1, 300)}) {
    const long before = AllocationCount();
    Probe<TypeParam> matrix(rows, cols);
    EXPECT_EQ(AllocationCount(), before + 2);
    EXPECT_EQ(LatestRequest(), sizeof(void *) * static_cast<std::size_t>(rows));
    EXPECT_EQ(matrix.GetRows(), rows);
    EXPECT_EQ(matrix.GetCols(), cols);
    EXPECT_EQ(matrix.GetSize(), rows * cols);
    EXPECT_EQ(matrix.GetCapacity(), rows * cols);
    int r = 0, c = 0;
    matrix.GetSize(r, c);
    EXPECT_EQ(std::pair(r, c), std::pair(rows, cols));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(matrix.GetPtr()) % 64, 0U);
    EXPECT_EQ(matrix.m_pData, matrix.m_pStorage);
    for (int i = 0; i < rows; ++i) EXPECT_EQ(matrix[i], matrix.GetPtr(i * cols));
  }
}

TYPED_TEST(BaseMatrix, Constructor_NegativeOrRefusedShape_ThrowsAndPrintsNothing) {
  using M = typename TypeParam::M;
  for (const auto &[rows, cols] :
       {std::pair(-1, 1), std::pair(2, -3), std::pair(-2, -3), std::pair(1, 2147482648),
        std::pair(65536, 65536), std::pair(2147483647, 2147483647), std::pair(-2147483647 - 1, 2147483647)}) {
    const auto make = [r = rows, c = cols] { M matrix(r, c); };
    EXPECT_EQ(PrintedBy([&] { ExpectThrown(make, 11001, "memory allocation error", TypeParam::kPath); }), "");
  }
}

TYPED_TEST(BaseMatrix, Constructor_NoMemoryForTheRowTable_ThrowsAndFreesTheBlock) {
  using M = typename TypeParam::M;
  // 100 rows need a table of 800 bytes, the block at most as many.
  const AllocationLimit limit(799);
  if (sizeof(typename TypeParam::T) == 8) {
    ExpectThrown([] { M matrix(100, 1); }, 11001, "memory allocation error", TypeParam::kPath);
  } else {
    const long before = AllocationCount();
    ExpectThrown([] { M matrix(100, 1); }, 11001, "memory allocation error", TypeParam::kPath);
    EXPECT_EQ(AllocationCount(), before + 2) << "the table was the one that was refused";
  }
}

TYPED_TEST(BaseMatrix, Create_OnBareBase_Throws10001) {
  struct Bare : QORN::BaseMatrix<typename TypeParam::T> {
    using Bare::BaseMatrix::Create;
  };
  ExpectThrown([] { Bare().Create(0, 0); }, 10001, "unexpected software error", "infra/Matrix");
  ExpectThrown([] { Bare().Create(2, 2); }, 10001, "unexpected software error", "infra/Matrix");
  ExpectThrown([] { Bare().Resize(1, 1); }, 10001, "unexpected software error", "infra/Matrix");
}

TYPED_TEST(BaseMatrix, CopyOfTheBase_IsMemberwise_SharesTheStorage) {
  const auto matrix = this->Counting(2, 3);
  const QORN::BaseMatrix<typename TypeParam::T> shared = matrix;
  QORN::BaseMatrix<typename TypeParam::T> assigned;
  assigned = shared;
  EXPECT_EQ(assigned.GetPtr(), matrix.GetPtr());
  EXPECT_EQ(shared[1], matrix[1]);
  EXPECT_EQ(assigned.GetRows(), 2);
  EXPECT_EQ(assigned.GetCols(), 3);
  EXPECT_EQ(assigned.GetCapacity(), 6);
}

// Access.

TYPED_TEST(BaseMatrix, Access_ByRowAndFlat_ReadsAndWritesTheSameElements) {
  auto matrix = this->Counting(2, 3);
  const auto &constant = matrix;
  EXPECT_EQ(constant[1][0], 4);
  EXPECT_EQ(*constant.GetPtr(4), 5);
  matrix[1][2] = 60;
  EXPECT_EQ(Flat(matrix), (Elements{1, 2, 3, 4, 5, 60}));
  std::swap(matrix[0], matrix[1]);
  EXPECT_EQ(ByRows(matrix), (Rows{{4, 5, 60}, {1, 2, 3}}));
  EXPECT_EQ(Flat(matrix), (Elements{1, 2, 3, 4, 5, 60})) << "only the table changed";
  matrix.Resize(2, 3);
  EXPECT_EQ(ByRows(matrix), (Rows{{1, 2, 3}, {4, 5, 60}}));
}

// Resize.

TYPED_TEST(BaseMatrix, Resize_ThatFits_KeepsTheElementsWhereTheyLie) {
  auto matrix = this->Counting(3, 2);
  const auto *block = matrix.GetPtr();
  long before = AllocationCount();
  matrix.Resize(2, 3);
  EXPECT_EQ(AllocationCount(), before);
  EXPECT_EQ(matrix.GetPtr(), block);
  EXPECT_EQ(matrix[1][0], 4);
  EXPECT_EQ(ByRows(matrix), (Rows{{1, 2, 3}, {4, 5, 6}}));
  matrix.Resize(1, 4);
  EXPECT_EQ(ByRows(matrix), (Rows{{1, 2, 3, 4}}));
  EXPECT_EQ(matrix.GetCapacity(), 6);
  before = AllocationCount();
  matrix.Resize(0, 9);
  EXPECT_EQ(matrix.GetSize(), 0);
  EXPECT_EQ(matrix.GetCols(), 9);
  EXPECT_EQ(AllocationCount(), before);
}

TYPED_TEST(BaseMatrix, Resize_ToMoreRows_ReallocatesThoughTheElementsFit) {
  auto matrix = this->Counting(2, 2);
  const long before = AllocationCount();
  matrix.Resize(4, 1);
  EXPECT_EQ(AllocationCount(), before + 2);
  EXPECT_EQ(matrix.GetRows(), 4);
  for (int r = 0; r < 4; ++r) EXPECT_EQ(matrix[r], matrix.GetPtr(r));
  matrix.Resize(1, 4);
  EXPECT_EQ(AllocationCount(), before + 2);
  matrix.Resize(4, 1);
  EXPECT_EQ(AllocationCount(), before + 4) << "rows are compared with the present ones";
}

TYPED_TEST(BaseMatrix, Resize_ToMoreElements_GivesExactlyThatMany) {
  auto matrix = this->Counting(2, 2);
  matrix.Resize(2, 5);
  EXPECT_EQ(matrix.GetCapacity(), 10);
  EXPECT_EQ(matrix[1], matrix.GetPtr(5));
}

TYPED_TEST(BaseMatrix, Resize_NegativeOrNoMemory_ThrowsAndLeavesTheShapeWithoutStorage) {
  Probe<TypeParam> matrix(this->Counting(2, 2));
  const auto grow = [&] {
    const AllocationLimit limit(99);
    matrix.Resize(100, 3);
  };
  EXPECT_EQ(PrintedBy([&] { ExpectThrown(grow, 11001, "memory allocation error", TypeParam::kPath); }), "");
  EXPECT_TRUE(matrix.HasNoStorage());
  EXPECT_EQ(matrix.GetRows(), 100);
  EXPECT_EQ(matrix.GetCols(), 3);
  EXPECT_EQ(matrix.GetSize(), 300);
  matrix.Resize(2, 1);
  EXPECT_EQ(matrix.GetCapacity(), 2);
  ExpectThrown([&] { matrix.Resize(3, -1); }, 11001, "memory allocation error", TypeParam::kPath);
  matrix.Del();
  EXPECT_TRUE(matrix.IsEmpty());
}

// As the product of the counts, which decides, is not above what there is.
TYPED_TEST(BaseMatrix, Resize_NegativeWithoutMoreRows_KeepsTheCountsAndActsAsEmpty) {
  for (const auto &[rows, cols] : {std::pair(-1, 5), std::pair(1, -1), std::pair(-1, -5)}) {
    Probe<TypeParam> matrix(this->Counting(3, 3));
    const auto *const block = matrix.GetPtr();
    matrix.Resize(rows, cols);
    EXPECT_EQ(matrix.GetRows(), rows);
    EXPECT_EQ(matrix.GetCols(), cols);
    EXPECT_LT(matrix.GetSize(), 0) << rows << " x " << cols;
    EXPECT_EQ(matrix.GetCapacity(), 9);
    matrix.SetZero();
    ExpectThrown([&] { const typename TypeParam::M copy(matrix); }, 11001, "memory allocation error",
                 TypeParam::kPath);
    for (int i = 0; i < 9; ++i) EXPECT_EQ(block[i], i + 1);
    matrix.Resize(1, 2);
    EXPECT_EQ(matrix.GetSize(), 2) << rows << " x " << cols;
  }
}

TYPED_TEST(BaseMatrix, Resize_NoMemoryForTheRowTable_KeepsTheBlockUntilDel) {
  Probe<TypeParam> matrix;
  const int cols = 8 / matrix.GetElementSize(); // block and table are of one size
  {
    const AllocationLimit limit(100 * 8);
    matrix.Resize(100, cols);
  }
  matrix.Del();
  {
    const AllocationLimit limit(999 * 8);
    ExpectThrown([&] { matrix.Resize(1000, 1); }, 11001, "memory allocation error", TypeParam::kPath);
  }
  EXPECT_EQ(matrix.m_pStorage == nullptr, sizeof(typename TypeParam::T) == 8);
  EXPECT_EQ(matrix.GetPtr(), nullptr);
  EXPECT_EQ(matrix.GetCapacity(), 0);
  EXPECT_EQ(matrix.GetSize(), 1000);
  matrix.Resize(1, 1);
  EXPECT_EQ(matrix.GetCapacity(), 1);
}

TYPED_TEST(BaseMatrix, SetZero_OfPartOfTheBlock_ClearsTheElementsOnly) {
  auto matrix = this->Counting(2, 3);
  matrix.Resize(2, 2);
  matrix.SetZero();
  EXPECT_EQ(Flat(matrix), (Elements{0, 0, 0, 0}));
  matrix.Resize(2, 3);
  EXPECT_EQ(Flat(matrix), (Elements{0, 0, 0, 0, 5, 6}));
  typename TypeParam::M().SetZero();
}

TYPED_TEST(BaseMatrix, Del_InAnyState_LeavesAnEmptyMatrix) {
  Probe<TypeParam> matrix(3, 2), empty;
  matrix.Del();
  empty.Dealloc();
  EXPECT_TRUE(matrix.IsEmpty());
  EXPECT_TRUE(empty.IsEmpty());
  matrix.SetupPoints();
  EXPECT_TRUE(matrix.IsEmpty());
}

// Copies, assignment and moves.

TYPED_TEST(BaseMatrix, Copy_OfAnyMatrix_IsAnIndependentValue) {
  auto source = this->Counting(3, 3);
  source.Resize(2, 2);
  auto copy = source;
  EXPECT_EQ(ByRows(copy), (Rows{{1, 2}, {3, 4}}));
  EXPECT_EQ(copy.GetCapacity(), 4);
  copy[0][0] = 9;
  EXPECT_EQ(source[0][0], 1);
  source.Del();
  EXPECT_EQ(ByRows(copy), (Rows{{9, 2}, {3, 4}}));
  const typename TypeParam::M flat(0, 5), same(flat);
  EXPECT_EQ(same.GetCols(), 5);
}

TYPED_TEST(BaseMatrix, Assignment_OfAnyMatrix_AlwaysReallocates) {
  auto matrix = this->Counting(4, 4);
  const auto source = this->Counting(2, 3);
  const long before = AllocationCount();
  EXPECT_EQ(&(matrix = source), &matrix);
  EXPECT_EQ(AllocationCount(), before + 2);
  EXPECT_EQ(matrix.GetCapacity(), 6);
  EXPECT_NE(matrix.GetPtr(), source.GetPtr());
  EXPECT_EQ(ByRows(matrix), (Rows{{1, 2, 3}, {4, 5, 6}}));
}

TYPED_TEST(BaseMatrix, Assignment_ToItself_ChangesNothing) {
  auto matrix = this->Counting(2, 2);
  auto &self = matrix;
  const long before = AllocationCount();
  matrix = self;
  matrix = std::move(self);
  EXPECT_EQ(AllocationCount(), before);
  EXPECT_EQ(Flat(matrix), (Elements{1, 2, 3, 4}));
}

TYPED_TEST(BaseMatrix, Moves_OfAnyMatrix_TakeTheStorageOver) {
  using M = typename TypeParam::M;
  static_assert(std::is_nothrow_move_constructible_v<M> && std::is_nothrow_move_assignable_v<M>);
  Probe<TypeParam> source(this->Counting(2, 2));
  const auto *block = source.GetPtr();
  const long before = AllocationCount();
  M moved(std::move(source));
  EXPECT_EQ(moved.GetPtr(), block);
  EXPECT_TRUE(source.IsEmpty());
  M assigned;
  assigned = std::move(moved);
  EXPECT_EQ(AllocationCount(), before);
  EXPECT_EQ(assigned.GetPtr(), block);
  EXPECT_EQ(ByRows(assigned), (Rows{{1, 2}, {3, 4}}));
}

// Arrays.

TYPED_TEST(BaseMatrix, Import_OfAnArray_ResizesAndCopies) {
  using T = typename TypeParam::T;
  const T source[] = {1, 2, 3, 4, 5, 6, 7};
  auto matrix = this->Counting(3, 3);
  const auto *block = matrix.GetPtr();
  matrix.Import(source, 2, 3);
  EXPECT_EQ(ByRows(matrix), (Rows{{1, 2, 3}, {4, 5, 6}}));
  matrix.Import(matrix.GetPtr(2), 2, 2);
  EXPECT_EQ(ByRows(matrix), (Rows{{3, 4}, {5, 6}}));
  EXPECT_EQ(matrix.GetPtr(), block);
}

#if defined(QORN_CHECKED)
TYPED_TEST(BaseMatrix, DeathTest_RowBeyondTheLast_IsTold) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  auto matrix = this->Counting(2, 2);
  EXPECT_DEATH(matrix[2], "row = 2, rows = 2");
  EXPECT_DEATH(std::as_const(matrix)[-1], "row = -1, rows = 2");
}
#endif

} // namespace
