#include "Factorise.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Cyclic.h"
#include "FourStep.h"
#include "Passes.h"

namespace QORN::fourier {

namespace {

// Vector operations on one value in a butterfly of r points, without loads, stores and factors. Counted from
// the butterflies' text.
double Arithmetic(int r) {
  switch (r) {
  case 1:
    return 0;
  case 2:
    return 2;
  case 3:
    return 4;
  case 4:
    return 4;
  case 8:
    return 6.5;
  case 9:
    return 10;
  case 16:
    return 10;
  default:
    break;
  }
  for (const int a : {4, 3, 2}) {
    if (r % a == 0) return Arithmetic(a) + Arithmetic(r / a);
  }
  return r + 2;
}

constexpr double kMemory = 4; // to load and store a value, real and imaginary part
constexpr double kTurn = 4;   // to multiply it by a factor
constexpr double kJoin = 8;   // to transpose and interleave it
constexpr double kPart = 20;  // to store a row that does not fill its vector

// The radices of grids, but for the two smallest ones; as many rows as the widest vector has values, so that
// three steps pay; and the longest transform that goes through one.
constexpr int kGridSides[] = {4, 5, 6, 7, 8, 9, 10, 12, 14, 15, 16};
constexpr int kGridGroup = 8;
constexpr int kMaxGrid = 2048;
constexpr int kMaxGridBytes = 24 << 10; // half a first-level cache

int RoundUp(int a, int b) { return (a + b - 1) / b; }

double CostWith(int lanes, std::int64_t n, int scalar) {
  const std::int64_t blocks = n / lanes;
  const int width = lanes <= 8 ? 8 : 16;
  const int perRegister = std::min(width, 64 / scalar);
  double perBlock = 0;
  for (const int r : Radices(blocks)) perBlock += Arithmetic(r) + kMemory + kTurn;
  const bool partial = blocks % perRegister != 0;
  const double joins = static_cast<double>((blocks + perRegister - 1) / perRegister) * lanes;
  return static_cast<double>(blocks) * RoundUp(lanes, perRegister) * perBlock +
         joins * (Arithmetic(lanes) + kMemory + kTurn + kJoin) + (partial ? kPart * lanes : 0);
}

// Samples of so many bytes do not stay in the caches from pass to pass.
constexpr std::int64_t kTiledBytes = std::int64_t{1} << 24;
// Parts and lines of so many blocks stay in the first and in the second cache.
constexpr std::int64_t kNearBlocks = 160, kFarBlocks = 4096;
constexpr double kFar = 8; // what it adds to a line if they do not

double PassCost(int radix) { return Arithmetic(radix) + kMemory + kTurn; }

// Of a line of n blocks, for each of them, if its parts are joined with that radix.
double LineCostWith(std::int64_t n, int last) {
  if (n % last != 0 || n == last) return std::numeric_limits<double>::infinity();
  double cost = PassCost(last);
  for (const int radix : Radices(n / last)) cost += PassCost(radix);
  const std::int64_t part = n / last;
  if (part > kNearBlocks) cost += kMemory * static_cast<double>(Radices(part).size());
  return cost;
}

constexpr int kLastRadices[] = {1, 2, 3, 4, 5, 7, 8, 9};

double LineCost(std::int64_t n) { return LineCostWith(n, LastRadix(n)); }

bool HasRadices(std::int64_t n) {
  for (int p = 2; p <= kMaxRadix; ++p) {
    while (n % p == 0) n /= p;
  }
  return n == 1;
}

} // namespace

GridShape GridFor(int n, int scalar) {
  // Two steps, as near to a square as can be: both sides should hold the widest vectors.
  for (const int rows : kGridSides) {
    for (const int columns : kGridSides) {
      if (columns <= rows && rows * columns == n) return {rows, 1, columns};
    }
  }
  GridShape best{};
  double least = std::numeric_limits<double>::infinity();
  if (n > kMaxGrid || 2 * n * scalar > kMaxGridBytes) return best;
  for (const int rows : kGridSides) {
    if (rows < kGridGroup || n % rows != 0) continue;
    for (const int middle : kGridSides) {
      for (const int columns : kGridSides) {
        if (rows * middle * columns != n) continue;
        // The middle step works on whole groups of rows. At equal cost, more rows: they lie nearer to each
        // other, so that their cache lines meet in fewer sets.
        const double part = static_cast<double>(RoundUp(rows, kGridGroup) * kGridGroup) / rows;
        const double cost =
            Arithmetic(rows) + part * (Arithmetic(middle) + kMemory + kTurn) + Arithmetic(columns);
        if (cost <= least) {
          least = cost;
          best = {rows, middle, columns};
        }
      }
    }
  }
  return best;
}

GridShape LinesFor(int n, int scalar) {
  if (n == 4096 && scalar == sizeof(double)) return {}; // two sweeps are faster
  for (const GridShape &shape : {GridShape{8, 8, 8}, GridShape{8, 8, 16}, GridShape{8, 12, 16},
                                 GridShape{8, 16, 16}, GridShape{16, 16, 16}}) {
    if (shape.rows * shape.middle * shape.columns == n) return shape;
  }
  return {};
}

namespace {

// What a transform of n points that goes through a grid takes of the cost by passes, as measured: least where
// no memory lies between the steps, little where all strides are known; 1 of another transform.
double GridPart(std::int64_t n, int scalar) {
  constexpr double kKnown = 0.75, kAny = 0.8;
  const double inRegisters = scalar == sizeof(float) ? 0.4 : 0.6;
  if (n > std::numeric_limits<int>::max()) return 1;
  const int points = static_cast<int>(n);
  const bool isPower = (points & (points - 1)) == 0;
  if (isPower && points <= 128) return inRegisters;
  if ((isPower && points == 256) || LinesFor(points, scalar).rows != 0) return kKnown;
  return GridFor(points, scalar).rows != 0 || FourStepFor(n, scalar).first != 0 ? kAny : 1;
}

} // namespace

namespace {

// Of a step of a strip, beside its butterfly: little, as its lines are near. As measured, radices of 4, 8 and
// 16 take the less for each bit the larger they are, but hardly.
constexpr double kStep = 2.25;

// The radices of a strip of n lines, `least` to `most` of them at the least cost, in ascending order; none
// and an infinite cost if it has none.
struct StripShape {
  std::vector<int> radices;
  double cost = std::numeric_limits<double>::infinity();
};
StripShape StripFor(std::int64_t n, std::size_t least, std::size_t most) {
  StripShape best;
  std::vector<int> radices;
  const auto extend = [&](const auto &self, std::int64_t rest, double cost) -> void {
    if (rest == 1 && radices.size() >= least && cost < best.cost) best = {radices, cost};
    if (radices.size() == most) return;
    for (const int radix : kGridSides) {
      if (rest % radix != 0 || (!radices.empty() && radix < radices.back())) continue;
      radices.push_back(radix);
      self(self, rest / radix, cost + Arithmetic(radix) + kStep);
      radices.pop_back();
    }
  };
  extend(extend, n, 0);
  return best;
}

} // namespace

FourStepShape FourStepFor(std::int64_t n, int scalar) {
  // Longer ones leave the caches. From the second length on the factors of the first step, as many as there
  // are samples, cost more than two steps of factors between the sweeps.
  constexpr std::int64_t kLongest = std::int64_t{4} << 20, kTwoSweeps = std::int64_t{1} << 18;
  constexpr double kManyFactors = 4, kBetweenSweeps = 3.5;
  // A strip of more lines leaves the near caches; one of three steps between two sweeps is read once more;
  // and twice 8 lines that meet in one set of the cache are too many.
  constexpr std::int64_t kFewLines = 1024, kPage = 4096;
  constexpr double kManyLines = 1, kThirdStep = 1, kMeeting = 2, kUneven = 0.05;
  const std::int64_t width = 64 / (2 * scalar), bytes = 2 * n * scalar;
  FourStepShape best{};
  if (bytes > kLongest) return best;
  double least = std::numeric_limits<double>::infinity();
  for (const int first : {8, 16}) {
    if (n % first != 0) continue;
    for (std::int64_t down = 1; down * first * width <= n; ++down) {
      if (n % (first * down) != 0 || (down > 1 && bytes < kTwoSweeps)) continue;
      const std::int64_t rows = first * down, columns = n / rows;
      const StripShape across = StripFor(columns, 2, kMaxStripSteps);
      const StripShape strip = down == 1 ? StripShape{{}, 0} : StripFor(down, 1, kMaxStripSteps);
      // The last columns fill their lines by some of the ones before.
      const double filled =
          static_cast<double>((columns + width - 1) / width * width) / static_cast<double>(columns);
      double cost = filled * (Arithmetic(first) + kStep + strip.cost) + across.cost;
      if (down == 1) {
        if (bytes >= kTwoSweeps) cost += kManyFactors;
        if (scalar == sizeof(double) && first == 16 && bytes / first % kPage == 0) cost += kMeeting;
      } else {
        cost += kBetweenSweeps + (across.radices.size() > 2 ? kThirdStep : 0) +
                kUneven * std::abs(std::log2(static_cast<double>(rows) / static_cast<double>(columns)));
      }
      if (columns > kFewLines) cost += kManyLines;
      if (cost < least) {
        least = cost;
        best = {first, strip.radices, across.radices};
      }
    }
  }
  // The largest radix last but one: the last one's lines meet in one set of the cache.
  for (std::vector<int> *radices : {&best.down, &best.across}) {
    if (radices->size() > 1) std::swap(radices->back(), radices->end()[-2]);
  }
  return best;
}

CyclicShape CyclicFor(std::int64_t n) {
  CyclicShape best{};
  double least = std::numeric_limits<double>::infinity();
  for (const int first : {8, 16}) {
    // The largest radix last: between it and its inverse no factors are applied, and nothing is stored.
    const StripShape strip = StripFor(n / first, 1, CyclicSteps::kMaxSteps);
    const double cost = Arithmetic(first) + strip.cost;
    if (cost < least) {
      least = cost;
      best = {first, strip.radices};
    }
  }
  return best;
}

bool IsSmooth(std::int64_t n) {
  for (const int p : {2, 3, 5, 7, 11, 13}) {
    while (n % p == 0) n /= p;
  }
  return n == 1;
}

std::vector<int> Radices(std::int64_t n) {
  std::vector<int> radices;
  const auto take = [&](int radix) {
    while (n % radix == 0) {
      radices.push_back(radix);
      n /= radix;
    }
  };
  int twos = 0;
  for (; n % 2 == 0; n /= 2) ++twos;
  // As few passes over the powers of two as radix 8 allows, and those as even as can be.
  const int passes = (twos + 2) / 3;
  for (int i = 0; i < passes; ++i) radices.push_back(1 << (twos / passes + (i < twos % passes ? 1 : 0)));
  for (const int radix : {13, 11, 9, 7, 5, 3}) take(radix);
  int radix = kMaxStraight + 4;
  while (n > 1) {
    take(radix);
    radix += 2;
  }
  return radices;
}

int LanesFor(std::int64_t n, int scalar) {
  int best = 0;
  double least = std::numeric_limits<double>::infinity();
  for (int lanes = 5; lanes <= 16; ++lanes) {
    if (n % lanes != 0) continue;
    const double cost = CostWith(lanes, n, scalar);
    if (cost < least) {
      least = cost;
      best = lanes;
    }
  }
  return best;
}

double Cost(std::int64_t n, int scalar) {
  return GridPart(n, scalar) * CostWith(LanesFor(n, scalar), n, scalar);
}

int LastRadix(std::int64_t n) {
  int best = 1;
  for (const int last : kLastRadices) {
    if (LineCostWith(n, last) < LineCostWith(n, best)) best = last;
  }
  return best;
}

std::int64_t TileRows(std::int64_t n, int scalar) {
  if (!HasRadices(n) || (IsSmooth(n) && 2 * n * scalar < kTiledBytes)) return 0;
  const std::int64_t width = 64 / scalar;
  // Of the transforms of `lanes` lines, in whole vectors of lanes.
  const auto lineCost = [&](std::int64_t blocks, std::int64_t lanes) {
    const double filled =
        static_cast<double>((lanes + width - 1) / width * width) / static_cast<double>(lanes);
    return (LineCost(blocks) + (blocks > kFarBlocks ? kFar : 0)) * filled;
  };
  double least = std::numeric_limits<double>::infinity();
  std::int64_t best = 0;
  for (std::int64_t low = width; low * low <= n; ++low) {
    if (n % low != 0) continue;
    for (const std::int64_t rows : {low, n / low}) {
      const double cost = lineCost(rows, n / rows) + lineCost(n / rows, rows);
      if (cost < least) {
        least = cost;
        best = rows;
      }
    }
  }
  return best;
}

int CyclicGenerator(int n, int scalar) {
  constexpr int kLargestFactor = 31;
  for (std::int64_t p = 2; p * p <= n; ++p) {
    if (n % p == 0) return 0;
  }
  std::vector<int> factors; // of n - 1
  int rest = n - 1;
  for (int p = 2; p <= kLargestFactor; ++p) {
    if (rest % p == 0) factors.push_back(p);
    while (rest % p == 0) rest /= p;
  }
  if (rest != 1 || (!IsSmooth(n - 1) && TileRows(n - 1, scalar) == 0)) return 0;
  const auto power = [n](std::int64_t base, int exponent) {
    std::int64_t result = 1;
    for (; exponent > 0; exponent /= 2, base = base * base % n) {
      if (exponent % 2 != 0) result = result * base % n;
    }
    return result;
  };
  for (int g = 2;; ++g) {
    if (std::none_of(factors.begin(), factors.end(), [&](int p) { return power(g, (n - 1) / p) == 1; }))
      return g;
  }
}

std::int64_t ConvolutionLength(std::int64_t least, int scalar) {
  std::int64_t best = 0;
  double cost = std::numeric_limits<double>::infinity();
  // Powers of two times a small odd number: these have the cheapest passes, and one of them is near.
  for (const int odd : {1, 3, 5, 7, 9, 11, 13, 15, 21, 25, 27}) {
    std::int64_t n = 16 * odd;
    if (n == 16) n = 32;
    while (n < least) n *= 2;
    const double c = Cost(n, scalar);
    if (c < cost) {
      cost = c;
      best = n;
    }
  }
  return best;
}

} // namespace QORN::fourier
