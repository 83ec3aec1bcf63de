#include "qorn/math/Detector.h"

#include "Elementwise.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/math/MathUtils.h"
#include "qorn/math/VecUtils.h"

namespace QORN {

namespace {

// point(samples, dst) makes what stands at dst of a block of `ratio` samples.
template <class Point>
void ForEachBlock(VecReal32 &dst, const VecReal32 &src, int ratio, int points, Point point) {
  for (int b = 0; b < src.GetSize() / ratio; ++b) point(src.GetPtr(b * ratio), dst.GetPtr(b * points));
}

void Detect(VecReal32 &dst, const VecReal32 &src, int ratio, DetectorType type) {
  switch (type) {
  case DetectorAverage:
  case DetectorAverageAlt:
    return ForEachBlock(dst, src, ratio, 1,
                        [=](const float *x, float *y) { TargetLib::Mean_32f(x, ratio, y); });
  case DetectorPeak:
  case DetectorPeakAlt:
    return ForEachBlock(dst, src, ratio, 1,
                        [=](const float *x, float *y) { TargetLib::Max_32f(x, ratio, y); });
  case DetectorMin:
    return ForEachBlock(dst, src, ratio, 1,
                        [=](const float *x, float *y) { TargetLib::Min_32f(x, ratio, y); });
  case DetectorPeakAndMin:
    return ForEachBlock(dst, src, ratio, 2, [=](const float *x, float *y) {
      TargetLib::Max_32f(x, ratio, y);
      TargetLib::Min_32f(x, ratio, y + 1);
    });
  case DetectorRms: {
    const auto root = static_cast<float>(MathUtils::Sqrt(static_cast<double>(ratio)));
    return ForEachBlock(dst, src, ratio, 1, [=](const float *x, float *y) {
      TargetLib::Norm_L2_32f(x, ratio, y);
      *y /= root;
    });
  }
  case DetectorPointSample:
    return ForEachBlock(dst, src, ratio, 1, [](const float *x, float *y) { *y = *x; });
  case DetectorLogAverage: {
    VecReal32 logarithms;
    MathUtils::Ln(logarithms, src, MathUtils::Log0Check);
    Detect(dst, logarithms, ratio, DetectorAverage);
    return MathUtils::Exp(dst);
  }
  default:
    return;
  }
}

} // namespace

void Detector::DetectAndDecimate(VecReal32 &dst, const VecReal32 &src, int ratio, DetectorType type) {
  if (&dst == &src) return DetectAndDecimate(dst, VecReal32(src), ratio, type);
  const int n = src.GetSize();
  if (ratio < 1 || n < ratio) {
    dst.Resize(0);
  } else if (ratio == 1) {
    if (type == DetectorPeakAndMin) {
      VecUtils::Duplicate(dst, src, 2);
    } else {
      dst = src;
    }
  } else {
    dst.Resize(n / ratio * (type == DetectorPeakAndMin ? 2 : 1));
    Detect(dst, src, ratio, type);
  }
}

} // namespace QORN
