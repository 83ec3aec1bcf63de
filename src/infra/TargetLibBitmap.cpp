// A pixel is a sample at its integer coordinates. Since both maps are monotonous and each depends on one
// coordinate only, the columns' source positions and weights are computed once per call, into the work
// buffer.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <tuple>

#include "Bitmap.h"
#include "Errors.h"
#include "qorn/infra/QORNMalloc.h"
#include "qorn/infra/TargetLib.h"

namespace QORN {

constinit bool traceStretch = false;

namespace {

constexpr int kChannels = 4;
constexpr int kNearest = 1;

struct FreeBlock {
  void operator()(unsigned char *block) const { QORNMalloc::Delete(block); }
};

std::unique_ptr<unsigned char, FreeBlock> stretchBuffer;
int stretchBytes = 0;

// One coordinate of a destination pixel: the source samples on both sides, and the weight of the second.
struct Place {
  int first;
  int second;
  float weight;
};

// The map of one coordinate, clipped to what exists on both sides.
class Axis {
public:
  Axis(int srcSize, int srcRoi, int srcRoiSize, int dstRoi, int dstRoiSize, int dstLimit, double factor,
       double shift)
      : m_factor(factor), m_shift(shift) {
    m_low = srcRoi > 0 ? srcRoi : 0;
    m_high = End(srcRoi, srcRoiSize, srcSize) - 1;
    m_begin = dstRoi > 0 ? dstRoi : 0;
    m_end = End(dstRoi, dstRoiSize, dstLimit);
    if (m_low > m_high || !(factor > 0) || !std::isfinite(factor) || !std::isfinite(shift)) m_end = m_begin;
    Clip();
  }

  int Begin() const { return m_begin; }
  int End() const { return m_end; }
  int Count() const { return m_end > m_begin ? m_end - m_begin : 0; }

  Place At(int x) const {
    const double position = Position(x);
    const double below = std::floor(position);
    const int first = static_cast<int>(below);
    return {first, first < m_high ? first + 1 : first, static_cast<float>(position - below)};
  }

  int Nearest(int x) const {
    const Place place = At(x);
    return place.weight < 0.5F ? place.first : place.second;
  }

private:
  // The end of a region, not beyond the limit and not below 0. In 64 bits: start and size may both be large.
  static int End(int first, int size, int limit) {
    const std::int64_t end = static_cast<std::int64_t>(first) + size;
    return end < 0 || limit < 0 ? 0 : end < limit ? static_cast<int>(end) : limit;
  }

  double Position(int x) const { return (x - m_shift) / m_factor; }

  // Keeps the pixels whose position lies in the source region, from its first sample to the end of its last
  // pixel. The position never decreases with x, so both ends are found by bisection.
  void Clip() {
    m_begin = FirstAtOrAbove(m_low);
    m_end = FirstAtOrAbove(static_cast<double>(m_high) + 1);
  }

  int FirstAtOrAbove(double position) const {
    std::int64_t begin = m_begin, end = m_end > m_begin ? m_end : m_begin;
    while (begin < end) {
      const std::int64_t middle = (begin + end) / 2;
      if (Position(static_cast<int>(middle)) < position) {
        begin = middle + 1;
      } else {
        end = middle;
      }
    }
    return static_cast<int>(begin);
  }

  double m_factor, m_shift;
  int m_low = 0, m_high = 0;  // the samples of the source region
  int m_begin = 0, m_end = 0; // the destination pixels that are written
};

// The work buffer for `count` columns; a buffer of another size is replaced.
Place *Columns(int count) {
  const std::int64_t bytes = static_cast<std::int64_t>(sizeof(Place)) * count;
  if (bytes > QORNMalloc::kMaxCount) Throw(errors::kMemoryAllocation, modules::kTargetLib);
  if (bytes != stretchBytes) {
    TargetLib::DestroyStretchBuffer();
    stretchBuffer.reset(QORNMalloc::MallocUInt8(static_cast<int>(bytes)));
    if (stretchBuffer == nullptr) Throw(errors::kMemoryAllocation, modules::kTargetLib);
    stretchBytes = static_cast<int>(bytes);
  }
  return reinterpret_cast<Place *>(stretchBuffer.get());
}

const unsigned char *Pixel(const unsigned char *row, int x) {
  return row + kChannels * static_cast<std::ptrdiff_t>(x);
}

void NearestRow(const unsigned char *row, const Place *columns, int count, unsigned char *dst) {
  for (int x = 0; x < count; ++x) {
    const unsigned char *from = Pixel(row, columns[x].first);
    for (int c = 0; c < kChannels; ++c) *dst++ = from[c];
  }
}

float Between(float a, float b, float weight) { return a + (b - a) * weight; }

// Halves round up.
void LinearRow(const unsigned char *upper, const unsigned char *lower, float weight, const Place *columns,
               int count, unsigned char *dst) {
  for (int x = 0; x < count; ++x) {
    const Place &place = columns[x];
    const std::ptrdiff_t left = kChannels * static_cast<std::ptrdiff_t>(place.first);
    const std::ptrdiff_t right = kChannels * static_cast<std::ptrdiff_t>(place.second);
    for (int c = 0; c < kChannels; ++c) {
      const float above = Between(upper[left + c], upper[right + c], place.weight);
      const float below = Between(lower[left + c], lower[right + c], place.weight);
      *dst++ = static_cast<unsigned char>(Between(above, below, weight) + 0.5F);
    }
  }
}

using Parameters = std::tuple<int, int, int, int, int, int, int, int, int, int, int, int, double, double,
                              double, double, double, double, int>;

void Trace(const Parameters &parameters) {
  static Parameters latest{};
  if (parameters == latest) return;
  constexpr std::size_t kInterpolation = std::tuple_size_v<Parameters> - 1;
  const int interpolation = std::get<kInterpolation>(parameters);
  const char *name = interpolation == kNearest ? "NEAREST" : interpolation == 2 ? "LINEAR" : "UNKNOWN";
  std::fprintf(stderr, "Interp: %s %c\n", name,
               interpolation != std::get<kInterpolation>(latest) ? '*' : ' ');
  latest = parameters;
}

} // namespace

void TargetLib::StretchBitmap(const unsigned char *src, int srcWidth, int srcHeight, int srcStep, int srcRoiX,
                              int srcRoiY, int srcRoiWidth, int srcRoiHeight, unsigned char *dst, int dstStep,
                              int dstRoiX, int dstRoiY, int dstRoiWidth, int dstRoiHeight, double xFactor,
                              double yFactor, double reservedA, double reservedB, double xShift,
                              double yShift, int interpolation) {
  if (traceStretch) {
    Trace({srcWidth, srcHeight, srcStep, srcRoiX, srcRoiY, srcRoiWidth, srcRoiHeight, dstStep, dstRoiX,
           dstRoiY, dstRoiWidth, dstRoiHeight, xFactor, yFactor, reservedA, reservedB, xShift, yShift,
           interpolation});
  }
  // A row must hold its pixels; a destination's row holds no more than fit in its step.
  if (src == nullptr || dst == nullptr || srcWidth > srcStep / kChannels) return;
  const Axis across(srcWidth, srcRoiX, srcRoiWidth, dstRoiX, dstRoiWidth, dstStep / kChannels, xFactor,
                    xShift);
  const Axis down(srcHeight, srcRoiY, srcRoiHeight, dstRoiY, dstRoiHeight, 2147483647, yFactor, yShift);
  if (across.Count() < 1 || down.Count() < 1) return;

  const bool nearest = interpolation == kNearest;
  const int count = across.Count();
  Place *columns = Columns(count);
  for (int x = 0; x < count; ++x) {
    columns[x] = nearest ? Place{across.Nearest(across.Begin() + x), 0, 0} : across.At(across.Begin() + x);
  }
  for (int y = down.Begin(); y < down.End(); ++y) {
    unsigned char *to = dst + static_cast<std::ptrdiff_t>(y) * dstStep +
                        kChannels * static_cast<std::ptrdiff_t>(across.Begin());
    const auto row = [&](int line) { return src + static_cast<std::ptrdiff_t>(line) * srcStep; };
    if (nearest) {
      NearestRow(row(down.Nearest(y)), columns, count, to);
    } else {
      const Place place = down.At(y);
      LinearRow(row(place.first), row(place.second), place.weight, columns, count, to);
    }
  }
}

void TargetLib::DestroyStretchBuffer() {
  stretchBuffer.reset();
  stretchBytes = 0;
}

} // namespace QORN
