// What the plans of the Fourier transforms take of the memory, for lengths of every way that a plan can go.
// The bounds follow from the tables that Grid.h, FourStep.h and Passes.h tell.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "infra/fourier/Direct.h"
#include "infra/fourier/Factorise.h"
#include "infra/fourier/Passes.h"
#include "infra/fourier/Plan.h"
#include "support/Allocations.h"

namespace {

using namespace QORN::fourier;
using QORN::test::LiveBytes;

enum class Way {
  Direct,
  Small,
  Grid,
  Lines,
  Sweeps,
  SweepsWithStrips,
  Columns,
  LongColumns,
  Tiles,
  Rader,
  Bluestein
};

template <class T> Way WayOf(int n) {
  constexpr int kScalar = sizeof(T);
  if (DirectComplex<T>(n) != nullptr) return Way::Direct;
  if (LinesFor(n, kScalar).rows != 0) return Way::Lines;
  if (GridFor(n, kScalar).rows != 0) return Way::Grid;
  if (n <= kMaxSmall) return Way::Small;
  const FourStepShape shape = FourStepFor(n, kScalar);
  if (shape.first != 0) return shape.down.empty() ? Way::Sweeps : Way::SweepsWithStrips;
  if (TileRows(n, kScalar) != 0) return Way::Tiles;
  if (IsSmooth(n)) return n < (1 << 18) ? Way::Columns : Way::LongColumns;
  return CyclicGenerator(n, kScalar) != 0 ? Way::Rader : Way::Bluestein;
}

// Cosines and sines of the prime radices that have no straight-line butterfly.
double OddTables(int n) {
  double values = 0;
  for (int p = 2; n > 1; ++p) {
    for (; n % p == 0; n /= p) values += p > kMaxStraight ? (p / 2) * (p / 2) : 0;
  }
  return values;
}

// The complex values that a plan of n may hold.
template <class T> double Allowed(int n) {
  switch (WayOf<T>(n)) {
  case Way::Direct:
  case Way::Small:
    return 0;
  case Way::Grid:
  case Way::Lines:
    return 2.0 * n; // R - 1 of R rows, and less than a row; each factor stored twice
  case Way::Sweeps:
    return 2.15 * n;
  case Way::SweepsWithStrips:
    return 0.4 * n;
  case Way::Columns:
    return 1.1 * n; // N / L in the passes, N (L - 1) / L between the lanes
  case Way::LongColumns:
    return 0.27 * n;
  case Way::Tiles:
    // Factors for a lane's worth of each column: a lot where there are few rows.
    return OddTables(n) + (n > 10000 ? 0.25 : 1.5) * n;
  case Way::Rader:
    // Half a spectrum, and half the powers as integers of four bytes.
    return 0.5 * n + n / (sizeof(T) == 4 ? 4.0 : 8.0) + Allowed<T>(n - 1);
  case Way::Bluestein: {
    // The chirp and half a spectrum.
    const int p = static_cast<int>(ConvolutionLength(2 * std::int64_t{n} - 1, sizeof(T)));
    return n + 0.5 * p + Allowed<T>(p);
  }
  }
  return 0;
}

// The bytes that stay allocated when make() has made a plan.
template <class Make> double BytesOf(const Make &make) {
  const std::size_t before = LiveBytes();
  const auto plan = make();
  EXPECT_NE(plan, nullptr);
  return static_cast<double>(LiveBytes() - before);
}

// The plans themselves; of short lengths, tables that fill whole blocks of lanes.
constexpr double kFixed = 4096;
double FixedOf(Way way) { return way < Way::Columns ? 1024 : kFixed; }

struct Row {
  Way way;
  std::vector<int> lengths;
};
template <class T> const std::vector<Row> &Rows() {
  static const std::vector<Row> rows = {
      {Way::Direct, {8, 32, 64, 128}},
      {Way::Small, {1, 7, 13}},
      {Way::Grid, {100, 196, 256, 360, 1000, 1800 / (sizeof(T) / 4)}},
      {Way::Lines, {512, 1024, 1536, 2048}},
      {Way::Sweeps, {8192, 10000}},
      {Way::SweepsWithStrips, {65536, 100000}},
      {Way::Columns, {2187, 3125, 28561}},
      {Way::LongColumns, {531441, 823543}},
      {Way::Tiles, {1023, 127 * Tiled<T>::kWidth, 16129, 262143}},
      {Way::Rader, {1009, 6481, 19441, 65537}},
      {Way::Bluestein, {1031, 5377, 15362, 30011, 99991}},
  };
  return rows;
}

template <class T> class FourierMemory : public testing::Test {};
using Scalars = testing::Types<float, double>;
TYPED_TEST_SUITE(FourierMemory, Scalars);

TYPED_TEST(FourierMemory, Make_EveryWay_KeepsWithinTheTables) {
  using T = TypeParam;
  constexpr double kValue = 2 * sizeof(T);
  for (const Row &row : Rows<T>()) {
    for (const int n : row.lengths) {
      ASSERT_EQ(WayOf<T>(n), row.way) << n;
      const double allowed = Allowed<T>(n) * kValue + FixedOf(row.way);
      EXPECT_LE(BytesOf([n] { return ComplexPlan<T>::Make(n); }), allowed) << n;
      if (n % 2 != 0) {
        EXPECT_LE(BytesOf([n] { return RealPlan<T>::Make(n); }), allowed + 128) << n;
      }
      const double half = DirectReal<T>(2 * n) != nullptr ? 0 : allowed + (n / 2 + 1) * kValue;
      EXPECT_LE(BytesOf([n] { return RealPlan<T>::Make(2 * n); }), half + 128) << 2 * n;
    }
  }
}

// What Plan.h promises.
TYPED_TEST(FourierMemory, Make_AnyLength_KeepsThreeValuesASample) {
  using T = TypeParam;
  constexpr double kValue = 2 * sizeof(T);
  const auto check = [](int n) {
    const Way way = WayOf<T>(n);
    double values = 3.0 * n;
    if (way == Way::Tiles) values += OddTables(n);
    if (way == Way::Bluestein && n * kValue < 120 << 10) values = 7.0 * n;
    EXPECT_LE(BytesOf([n] { return ComplexPlan<T>::Make(n); }), values * kValue + kFixed) << n;
  };
  for (int n = 1; n <= 2100; ++n) check(n);
  for (int n = 2101; n <= 40000; n += 97) check(n);
  for (const Row &row : Rows<T>()) {
    for (const int n : row.lengths) check(n);
  }
}

// A clone holds what its source does, so that copies are not larger.
TYPED_TEST(FourierMemory, Clone_EveryWay_KeepsWhatItsSourceDoes) {
  using T = TypeParam;
  for (const Row &row : Rows<T>()) {
    const int n = row.lengths.back();
    const auto source = ComplexPlan<T>::Make(n);
    const double bytes = BytesOf([n] { return ComplexPlan<T>::Make(n); });
    // Large blocks come in whole pages, with what the allocator puts before them.
    const double rounding = bytes < 1 << 17 ? 256 : 4 * 4096;
    EXPECT_NEAR(BytesOf([&source] { return source->Clone(); }), bytes, 0.01 * bytes + rounding) << n;
  }
}

} // namespace
