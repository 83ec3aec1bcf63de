// Resizing of images by values that follow from dst(x, y) = src((x - xShift) / xFactor, (y - yShift) /
// yFactor).
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "infra/Bitmap.h"
#include "qorn/infra/QORNException.h"
#include "qorn/infra/TargetLib.h"
#include "support/Allocations.h"

namespace {

using QORN::QORNException;
using QORN::TargetLib;
using QORN::test::AllocationCount;
using QORN::test::AllocationLimit;

constexpr int kNearest = 1, kLinear = 2;
constexpr unsigned char kGuard = 0xA5;

// An image of 4 channels with some bytes behind each row.
struct Image {
  int width, height, step;
  std::vector<unsigned char> bytes;

  Image(int w, int h, int gap = 3)
      : width(w), height(h), step(4 * w + gap), bytes(static_cast<std::size_t>(step * h), kGuard) {}

  // Channel c of a pixel is its value plus 10 c.
  void Set(int x, int y, int value) {
    for (int c = 0; c < 4; ++c) bytes[Place(x, y, c)] = static_cast<unsigned char>(value + 10 * c);
  }
  int Get(int x, int y, int c = 0) const { return bytes[Place(x, y, c)]; }
  std::size_t Place(int x, int y, int c) const { return static_cast<std::size_t>(y * step + 4 * x + c); }

  std::vector<int> Row(int y, int c = 0) const {
    std::vector<int> row;
    for (int x = 0; x < width; ++x) row.push_back(Get(x, y, c));
    return row;
  }
};

struct Roi {
  int x, y, width, height;
};

struct Map {
  double xFactor = 1, yFactor = 1, xShift = 0, yShift = 0;
};

void Stretch(const Image &src, Roi from, Image &dst, Roi to, Map map, int interpolation) {
  TargetLib::StretchBitmap(src.bytes.data(), src.width, src.height, src.step, from.x, from.y, from.width,
                           from.height, dst.bytes.data(), dst.step, to.x, to.y, to.width, to.height,
                           map.xFactor, map.yFactor, 0.5, -7, map.xShift, map.yShift, interpolation);
}

Roi Whole(const Image &image) { return {0, 0, image.width, image.height}; }

Image Line(const std::vector<int> &values) {
  Image image(static_cast<int>(values.size()), 1);
  for (int x = 0; x < image.width; ++x) image.Set(x, 0, values[static_cast<std::size_t>(x)]);
  return image;
}

class TargetLibBitmap : public testing::Test {
protected:
  ~TargetLibBitmap() override { TargetLib::DestroyStretchBuffer(); }

  static std::vector<int> StretchLine(const std::vector<int> &values, int width, Map map, int interpolation) {
    const Image src = Line(values);
    Image dst(width, 1);
    Stretch(src, Whole(src), dst, Whole(dst), map, interpolation);
    return dst.Row(0);
  }
};

TEST_F(TargetLibBitmap, Stretch_FactorOne_Copies) {
  const std::vector<int> values = {1, 50, 200, 7};
  EXPECT_EQ(StretchLine(values, 4, {}, kNearest), values);
  EXPECT_EQ(StretchLine(values, 4, {}, kLinear), values);
}

TEST_F(TargetLibBitmap, Stretch_NearestTwice_TakesTheNearerPixelHalvesUp) {
  // Positions 0, 0.5, 1, 1.5, 2, 2.5.
  EXPECT_EQ(StretchLine({10, 20, 30}, 6, {2, 1, 0, 0}, kNearest), (std::vector<int>{10, 20, 20, 30, 30, 30}));
}

TEST_F(TargetLibBitmap, Stretch_LinearTwice_TakesTheMeanHalvesUp) {
  // Means 15 and 25.5; the last position, 2.5, is beyond the last pixel, which goes on to its end.
  EXPECT_EQ(StretchLine({10, 20, 31}, 6, {2, 1, 0, 0}, kLinear), (std::vector<int>{10, 15, 20, 26, 31, 31}));
}

TEST_F(TargetLibBitmap, Stretch_LinearByFour_WeighsByDistance) {
  EXPECT_EQ(StretchLine({0, 100}, 8, {4, 1, 0, 0}, kLinear),
            (std::vector<int>{0, 25, 50, 75, 100, 100, 100, 100}));
  EXPECT_EQ(StretchLine({255, 0}, 4, {4, 1, 0, 0}, kLinear - 7), (std::vector<int>{255, 191, 128, 64}));
}

TEST_F(TargetLibBitmap, Stretch_Half_TakesEverySecond) {
  for (const int interpolation : {kNearest, kLinear}) {
    EXPECT_EQ(StretchLine({1, 2, 3, 4, 5, 6}, 3, {0.5, 1, 0, 0}, interpolation), (std::vector<int>{1, 3, 5}));
  }
  // Positions 0, 1.5, 3, 4.5.
  EXPECT_EQ(StretchLine({0, 10, 20, 30, 40, 50}, 4, {1 / 1.5, 1, 0, 0}, kLinear),
            (std::vector<int>{0, 15, 30, 45}));
}

TEST_F(TargetLibBitmap, Stretch_Shifts_MoveAndLeaveTheRest) {
  EXPECT_EQ(StretchLine({1, 2, 3}, 6, {1, 1, 2, 0}, kNearest),
            (std::vector<int>{kGuard, kGuard, 1, 2, 3, kGuard}));
  EXPECT_EQ(StretchLine({1, 2, 3}, 3, {1, 1, -1, 0}, kNearest), (std::vector<int>{2, 3, kGuard}));
  // Positions -0.5, 0.5, 1.5, 2.5.
  EXPECT_EQ(StretchLine({10, 20, 30}, 4, {1, 1, 0.5, 0}, kLinear), (std::vector<int>{kGuard, 15, 25, 30}));
  EXPECT_EQ(StretchLine({1, 2, 3}, 3, {1, 1, 100, 0}, kLinear), (std::vector<int>{kGuard, kGuard, kGuard}));
}

TEST_F(TargetLibBitmap, Stretch_TwoDimensions_IsBilinearInEveryChannel) {
  Image src(2, 2), dst(4, 4);
  src.Set(0, 0, 0), src.Set(1, 0, 100), src.Set(0, 1, 50), src.Set(1, 1, 201);
  Stretch(src, Whole(src), dst, Whole(dst), {2, 2, 0, 0}, kLinear);
  const std::vector<std::vector<int>> expected = {
      {0, 50, 100, 100}, {25, 88, 151, 151}, {50, 126, 201, 201}, {50, 126, 201, 201}};
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 4; ++x) {
      for (int c = 0; c < 4; ++c) {
        EXPECT_EQ(dst.Get(x, y, c),
                  expected[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] + 10 * c)
            << x << ' ' << y << ' ' << c;
      }
    }
    for (int gap = 0; gap < 3; ++gap) EXPECT_EQ(dst.bytes[dst.Place(4, y, gap)], kGuard);
  }
}

TEST_F(TargetLibBitmap, Stretch_NearestInTwoDimensions_TakesWholePixels) {
  Image src(2, 2), dst(5, 4);
  src.Set(0, 0, 1), src.Set(1, 0, 2), src.Set(0, 1, 3), src.Set(1, 1, 4);
  Stretch(src, Whole(src), dst, Whole(dst), {2, 2, 1, 0}, kNearest);
  EXPECT_EQ(dst.Row(0), (std::vector<int>{kGuard, 1, 2, 2, 2}));
  EXPECT_EQ(dst.Row(1), (std::vector<int>{kGuard, 3, 4, 4, 4}));
  EXPECT_EQ(dst.Row(3, 2), (std::vector<int>{kGuard, 23, 24, 24, 24}));
}

TEST_F(TargetLibBitmap, Stretch_SourceRegion_IsAllThatIsRead) {
  Image src(4, 3), dst(4, 3);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 4; ++x) src.Set(x, y, 10 * (4 * y + x));
  }
  Stretch(src, {1, 1, 2, 1}, dst, Whole(dst), {}, kNearest);
  EXPECT_EQ(dst.Row(0), std::vector<int>(4, kGuard));
  EXPECT_EQ(dst.Row(1), (std::vector<int>{kGuard, 50, 60, kGuard}));
  EXPECT_EQ(dst.Row(2), std::vector<int>(4, kGuard));
  // The right neighbour outside of the region takes no part: position 2.5 is as the region's last pixel.
  Image wide(8, 1);
  Stretch(src, {1, 0, 2, 1}, wide, Whole(wide), {2, 1, 0, 0}, kLinear);
  EXPECT_EQ(wide.Row(0), (std::vector<int>{kGuard, kGuard, 10, 15, 20, 20, kGuard, kGuard}));
}

TEST_F(TargetLibBitmap, Stretch_DestinationRegion_IsAllThatIsWritten) {
  Image src(4, 3), dst(4, 3);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 4; ++x) src.Set(x, y, 10 * (4 * y + x));
  }
  for (const int interpolation : {kNearest, kLinear}) {
    std::fill(dst.bytes.begin(), dst.bytes.end(), kGuard);
    Stretch(src, Whole(src), dst, {2, 1, 1, 1}, {}, interpolation);
    EXPECT_EQ(dst.Row(0), std::vector<int>(4, kGuard));
    EXPECT_EQ(dst.Row(1), (std::vector<int>{kGuard, kGuard, 60, kGuard}));
    EXPECT_EQ(dst.Row(2), std::vector<int>(4, kGuard));
  }
}

// Nothing outside of the two images is touched, which the sanitizers see.
TEST_F(TargetLibBitmap, Stretch_HostileSizes_StayInside) {
  const int hostile[] = {INT_MIN, INT_MIN + 1, -5, -1, 0, 1, 2, 3, INT_MAX - 1, INT_MAX};
  const Image src = Line({1, 2, 3});
  for (const int a : hostile) {
    for (const int b : hostile) {
      for (const int interpolation : {kNearest, kLinear}) {
        Image dst(3, 1, 0);
        Stretch(src, {a, 0, b, 1}, dst, Whole(dst), {}, interpolation);
        Stretch(src, {0, a, 3, b}, dst, Whole(dst), {}, interpolation);
        Stretch(src, Whole(src), dst, {a, 0, b, 1}, {}, interpolation);
        Stretch(src, Whole(src), dst, {0, a, 3, b}, {}, interpolation);
        Stretch(src, Whole(src), dst, {0, 0, a, b}, {}, interpolation);
        TargetLib::StretchBitmap(src.bytes.data(), a, b, src.step, 0, 0, 3, 1, dst.bytes.data(), dst.step, 0,
                                 0, 3, 1, 1, 1, 0, 0, 0, 0, interpolation);
      }
    }
  }
}

// A source row that its step does not hold is refused; a destination row ends where its step does.
TEST_F(TargetLibBitmap, Stretch_StepsTooSmall_AreKept) {
  const Image src = Line({1, 2, 3});
  for (const int step : {11, 4, 0, -12, INT_MIN}) {
    Image dst(3, 1, 0);
    TargetLib::StretchBitmap(src.bytes.data(), 3, 1, step, 0, 0, 3, 1, dst.bytes.data(), dst.step, 0, 0, 3, 1,
                             1, 1, 0, 0, 0, 0, kNearest);
    EXPECT_EQ(dst.Row(0), std::vector<int>(3, kGuard)) << step;
  }
  Image dst(3, 1, 0);
  TargetLib::StretchBitmap(src.bytes.data(), 3, 1, src.step, 0, 0, 3, 1, dst.bytes.data(), 8, 0, 0, 3, 1, 1,
                           1, 0, 0, 0, 0, kNearest);
  EXPECT_EQ(dst.Row(0), (std::vector<int>{1, 2, kGuard}));
}

TEST_F(TargetLibBitmap, Stretch_ImpossibleFactorsOrShifts_DoNothing) {
  const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  const Image src = Line({1, 2, 3});
  for (const double bad : {0.0, -1.0, inf, -inf, nan}) {
    for (const Map map : {Map{bad, 1, 0, 0}, Map{1, bad, 0, 0}}) {
      Image dst(3, 1);
      Stretch(src, Whole(src), dst, Whole(dst), map, kLinear);
      EXPECT_EQ(dst.Row(0), std::vector<int>(3, kGuard)) << bad;
    }
    if (bad == 0.0 || bad == -1.0) continue;
    for (const Map map : {Map{1, 1, bad, 0}, Map{1, 1, 0, bad}}) {
      Image dst(3, 1);
      Stretch(src, Whole(src), dst, Whole(dst), map, kNearest);
      EXPECT_EQ(dst.Row(0), std::vector<int>(3, kGuard)) << bad;
    }
  }
  for (const double extreme : {1e300, 1e-300, 5e-324}) {
    Image dst(3, 1);
    Stretch(src, Whole(src), dst, Whole(dst), {extreme, 1, 0, 0}, kLinear);
    EXPECT_EQ(dst.Get(0, 0), 1) << extreme;
  }
}

TEST_F(TargetLibBitmap, Stretch_NullPointers_DoNothing) {
  const Image src = Line({1, 2, 3});
  Image dst(3, 1);
  TargetLib::StretchBitmap(nullptr, 3, 1, src.step, 0, 0, 3, 1, dst.bytes.data(), dst.step, 0, 0, 3, 1, 1, 1,
                           0, 0, 0, 0, kNearest);
  TargetLib::StretchBitmap(src.bytes.data(), 3, 1, src.step, 0, 0, 3, 1, nullptr, dst.step, 0, 0, 3, 1, 1, 1,
                           0, 0, 0, 0, kNearest);
  EXPECT_EQ(dst.Row(0), std::vector<int>(3, kGuard));
}

TEST_F(TargetLibBitmap, Stretch_SameSizeAgain_KeepsTheBuffer) {
  const Image src = Line({1, 2, 3, 4});
  Image small(4, 1), large(8, 1);
  Stretch(src, Whole(src), small, Whole(small), {}, kLinear);
  const long before = AllocationCount();
  Stretch(src, Whole(src), small, Whole(small), {}, kNearest);
  EXPECT_EQ(AllocationCount(), before);
  Stretch(src, Whole(src), large, Whole(large), {2, 1, 0, 0}, kLinear);
  EXPECT_EQ(AllocationCount(), before + 1);
  Stretch(src, Whole(src), small, Whole(small), {}, kLinear);
  EXPECT_EQ(AllocationCount(), before + 2);
  TargetLib::DestroyStretchBuffer();
  TargetLib::DestroyStretchBuffer();
  Stretch(src, Whole(src), small, Whole(small), {}, kLinear);
  EXPECT_EQ(AllocationCount(), before + 3);
  EXPECT_EQ(small.Row(0), (std::vector<int>{1, 2, 3, 4}));
}

TEST_F(TargetLibBitmap, Stretch_WithoutMemory_Throws11001AndRecovers) {
  const Image src = Line({1, 2, 3});
  Image dst(3, 1);
  int code = 0;
  const char *message = "", *path = "";
  {
    const AllocationLimit none(0);
    try {
      Stretch(src, Whole(src), dst, Whole(dst), {}, kLinear);
    } catch (const QORNException &error) {
      code = error.GetErrorCode();
      message = error.GetMessage();
      path = error.GetFileName();
    }
  }
  EXPECT_EQ(code, 11001);
  EXPECT_STREQ(message, "memory allocation error");
  EXPECT_STREQ(path, "infra\\TargetLib_ipp");
  Stretch(src, Whole(src), dst, Whole(dst), {}, kLinear);
  EXPECT_EQ(dst.Row(0), (std::vector<int>{1, 2, 3}));
}

TEST_F(TargetLibBitmap, Stretch_Traced_ReportsChangesOfParameters) {
  const Image src = Line({1, 2, 3});
  Image dst(3, 1);
  const auto run = [&](Map map, int interpolation) {
    testing::internal::CaptureStderr();
    Stretch(src, Whole(src), dst, Whole(dst), map, interpolation);
    return testing::internal::GetCapturedStderr();
  };
  EXPECT_EQ(run({}, kNearest), "");
  QORN::traceStretch = true;
  EXPECT_EQ(run({}, 1), "Interp: NEAREST *\n");
  EXPECT_EQ(run({}, 1), "");
  EXPECT_EQ(run({2, 1, 0, 0}, 1), "Interp: NEAREST  \n");
  EXPECT_EQ(run({2, 1, 0, 0}, 2), "Interp: LINEAR *\n");
  EXPECT_EQ(run({2, 1, 0, 1}, 2), "Interp: LINEAR  \n");
  EXPECT_EQ(run({2, 1, 0, 1}, 5), "Interp: UNKNOWN *\n");
  QORN::traceStretch = false;
  EXPECT_EQ(run({}, 2), "");
}

} // namespace
