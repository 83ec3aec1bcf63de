#include "qorn/infra/QORNMalloc.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "support/Allocations.h"

namespace {

using QORN::QORNMalloc;
using QORN::test::AllocationCount;
using QORN::test::AllocationLimit;
using QORN::test::LatestRequest;

struct Request {
  const char *name;
  void *(*malloc)(int);
  int bytes;
};

const Request kRequests[] = {
    {"MallocBit", [](int n) -> void * { return QORNMalloc::MallocBit(n); }, 1},
    {"MallocUInt8", [](int n) -> void * { return QORNMalloc::MallocUInt8(n); }, 1},
    {"MallocByte", [](int n) -> void * { return QORNMalloc::MallocByte(n); }, 1},
    {"MallocInt16", [](int n) -> void * { return QORNMalloc::MallocInt16(n); }, 2},
    {"MallocInt32", [](int n) -> void * { return QORNMalloc::MallocInt32(n); }, 4},
    {"MallocReal32", [](int n) -> void * { return QORNMalloc::MallocReal32(n); }, 4},
    {"MallocReal64", [](int n) -> void * { return QORNMalloc::MallocReal64(n); }, 8},
    {"MallocCplx32", [](int n) -> void * { return QORNMalloc::MallocCplx32(n); }, 8},
    {"MallocCplx64", [](int n) -> void * { return QORNMalloc::MallocCplx64(n); }, 16},
};

TEST(QORNMalloc, Malloc_AnyType_GivesAlignedBlockOfItsElementSize) {
  for (const Request &request : kRequests) {
    for (const int count : {1, 3, 64, 1001}) {
      void *block = request.malloc(count);
      ASSERT_NE(block, nullptr) << request.name;
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0U) << request.name;
      EXPECT_EQ(LatestRequest(), static_cast<std::size_t>(count) * static_cast<std::size_t>(request.bytes))
          << request.name;
      QORNMalloc::Delete(block);
    }
  }
}

TEST(QORNMalloc, Malloc_LargestCount_AsksTheAllocator) {
  const AllocationLimit none(0);
  for (const Request &request : kRequests) {
    const long before = AllocationCount();
    EXPECT_EQ(request.malloc(2147482647), nullptr) << request.name;
    EXPECT_EQ(AllocationCount(), before + 1) << request.name;
    EXPECT_EQ(LatestRequest(), 2147482647U * static_cast<std::size_t>(request.bytes)) << request.name;
  }
}

TEST(QORNMalloc, Malloc_CountBeyondTheLimitOrNegative_IsNullWithoutAskingTheAllocator) {
  for (const Request &request : kRequests) {
    for (const int count : {2147482648, 2147483647, -1, -2147483647 - 1}) {
      const long before = AllocationCount();
      EXPECT_EQ(request.malloc(count), nullptr) << request.name << ' ' << count;
      EXPECT_EQ(AllocationCount(), before) << request.name << ' ' << count;
    }
  }
}

TEST(QORNMalloc, Malloc_CountZero_IsPassedOn) {
  const long before = AllocationCount();
  void *block = QORNMalloc::MallocReal32(0);
  EXPECT_EQ(AllocationCount(), before + 1);
  EXPECT_EQ(LatestRequest(), 0U);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0U);
  QORNMalloc::Delete(block);
}

TEST(QORNMalloc, Delete_Null_DoesNothing) { QORNMalloc::Delete(nullptr); }

TEST(QORNMalloc, MallocErrorDump_WithoutText_PrintsOneLine) {
  testing::internal::CaptureStdout();
  QORNMalloc::MallocErrorDump(3, 8, nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "QORNMalloc: System tried to allocate 3 items x 8 bytes each = 24 bytes\n");
}

TEST(QORNMalloc, MallocErrorDump_WithText_PrintsTextAndOneBlank) {
  testing::internal::CaptureStdout();
  QORNMalloc::MallocErrorDump(-5, 16, "Failed QORNMalloc::MallocCplx64");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "QORNMalloc: System tried to allocate -5 items x 16 bytes each = -80 bytes\n"
            "Failed QORNMalloc::MallocCplx64 \n");
}

TEST(QORNMalloc, MallocErrorDump_LargeRequest_FormsTheProductInDouble) {
  testing::internal::CaptureStdout();
  QORNMalloc::MallocErrorDump(2147482647, 16, nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "QORNMalloc: System tried to allocate 2147482647 items x 16 bytes each = 34359722352 bytes\n");
}

} // namespace
