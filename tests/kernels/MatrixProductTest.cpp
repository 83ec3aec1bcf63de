// The product of matrices, each element against its definition: products rounded to the element type, summed
// in double over rising k.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "support/KernelCheck.h"

namespace {

using namespace QORN;
using test::Guarded;

auto ProductOf(const kernels::Table &table, float) { return table.MatrixProduct_32f; }
auto ProductOf(const kernels::Table &table, double) { return table.MatrixProduct_64f; }

template <class T> class MatrixProduct : public testing::Test {};
using Elements = testing::Types<float, double>;
TYPED_TEST_SUITE(MatrixProduct, Elements);

template <class T> void Check(int rows, int inner, int cols, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> uniform(-1, 1);
  std::vector<T> a(static_cast<std::size_t>(rows * inner)), b(static_cast<std::size_t>(inner * cols));
  for (T &x : a) x = static_cast<T>(uniform(random));
  for (T &x : b) x = static_cast<T>(uniform(random));
  std::vector<T> expected;
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < cols; ++j) {
      volatile double sum = 0;
      for (int k = 0; k < inner; ++k) {
        volatile T product =
            a[static_cast<std::size_t>(i * inner + k)] * b[static_cast<std::size_t>(k * cols + j)];
        sum = sum + static_cast<double>(product);
      }
      expected.push_back(static_cast<T>(sum));
    }
  }
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    Guarded<T> dst(rows * cols, 3);
    ProductOf(*level.table, T{})(a.data(), b.data(), dst.data(), rows, inner, cols);
    EXPECT_TRUE(dst.Intact()) << level.name;
    ASSERT_EQ(std::memcmp(dst.data(), expected.data(), expected.size() * sizeof(T)), 0)
        << level.name << ' ' << rows << ' ' << inner << ' ' << cols;
  }
}

TYPED_TEST(MatrixProduct, AnyShape_AtEveryLevel_GivesTheSameBytes) {
  unsigned seed = 1;
  for (int rows = 1; rows <= 9; ++rows) {
    for (int cols = 1; cols <= 35; ++cols) {
      for (const int inner : {0, 1, 2, 5}) Check<TypeParam>(rows, inner, cols, seed++);
    }
  }
  Check<TypeParam>(64, 64, 64, seed);
  Check<TypeParam>(3, 1000, 5, seed);
}

} // namespace
