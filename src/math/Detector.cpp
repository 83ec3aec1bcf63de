#include "qorn/math/Detector.h"

#include "Elementwise.h"
#include "infra/kernels/Lanes.h"
#include "infra/kernels/Levels.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/math/MathUtils.h"
#include "qorn/math/VecUtils.h"

namespace QORN {

namespace {

// Samples of which the logarithms are kept at a time, in the nearest cache.
constexpr int kPiece = 4096;
static_assert(kPiece % kernels::kSumLanes == 0, "pieces of a block go on in the first lane");

void GuardedLn(float *dst, const float *src, int n) {
  Kernels<float>::Copy(src, dst, n);
  Kernels<float>::AddC(static_cast<float>(MathUtils::kLogZeroOffset), dst, n);
  Kernels<float>::Ln(dst, dst, n);
}

float MeanOfLn(const float *block, int ratio) {
  float logarithms[kPiece];
  double lanes[kernels::kSumLanes] = {};
  for (int start = 0; start < ratio; start += std::min(kPiece, ratio - start)) {
    const int n = std::min(kPiece, ratio - start);
    GuardedLn(logarithms, block + start, n);
    kernels::active->AddToLanes(logarithms, n, lanes);
  }
  return kernels::active->MeanOfLanes(lanes, ratio);
}

void MeansOfLn(const float *src, int ratio, float *dst, int blocks) {
  if (ratio > kPiece) {
    for (int b = 0; b < blocks; ++b) dst[b] = MeanOfLn(src + std::ptrdiff_t{b} * ratio, ratio);
    return;
  }
  float logarithms[kPiece];
  const int group = kPiece / ratio;
  for (int b = 0; b < blocks; b += std::min(group, blocks - b)) {
    const int count = std::min(group, blocks - b);
    GuardedLn(logarithms, src + std::ptrdiff_t{b} * ratio, count * ratio);
    kernels::active->DetectMean(logarithms, ratio, dst + b, count);
  }
}

void Detect(VecReal32 &dst, const VecReal32 &src, int ratio, DetectorType type) {
  const kernels::Table &kernel = *kernels::active;
  const float *x = src.GetPtr();
  float *y = dst.GetPtr();
  const int blocks = src.GetSize() / ratio;
  switch (type) {
  case DetectorAverage:
  case DetectorAverageAlt:
    return kernel.DetectMean(x, ratio, y, blocks);
  case DetectorPeak:
  case DetectorPeakAlt:
    return kernel.DetectMax(x, ratio, y, blocks);
  case DetectorMin:
    return kernel.DetectMin(x, ratio, y, blocks);
  case DetectorPeakAndMin:
    return kernel.DetectMaxMin(x, ratio, y, blocks);
  case DetectorRms:
    return kernel.DetectNorm(x, ratio, static_cast<float>(MathUtils::Sqrt(static_cast<double>(ratio))), y,
                             blocks);
  case DetectorPointSample: {
    int written = 0, phase = 0;
    return TargetLib::SampleDown_32f(x, blocks * ratio, y, &written, ratio, &phase);
  }
  case DetectorLogAverage:
    MeansOfLn(x, ratio, y, blocks);
    return MathUtils::Exp(dst);
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
