#ifndef QORN_MATH_DETECTOR_H
#define QORN_MATH_DETECTOR_H

#include "qorn/Export.h"

namespace QORN {

class VecReal32;

/// The rule by which a block of samples x[0] to x[ratio - 1] becomes one display point, or two. Any other
/// value acts as DetectorNone.
enum DetectorType : int {
  DetectorAverage = 0,     ///< the mean: TargetLib::Mean_32f
  DetectorPeak = 1,        ///< the largest: TargetLib::Max_32f
  DetectorMin = 2,         ///< the smallest: TargetLib::Min_32f
  DetectorPeakAndMin = 3,  ///< two points, the largest and then the smallest
  DetectorRms = 4,         ///< sqrt(sum of x[i]^2) / sqrt(ratio), the quotient of two floats
  DetectorPointSample = 5, ///< x[0]
  DetectorNone = 6,        ///< nothing is computed
  DetectorAverageAlt = 7,  ///< as DetectorAverage
  DetectorPeakAlt = 8,     ///< as DetectorPeak
  DetectorLogAverage = 9   ///< the geometric mean: exp(mean of ln(x[i] + MathUtils::kLogZeroOffset))
};

/// The detectors of a spectrum analyser, which reduce a trace to the points of a display.
class QORN_API Detector {
public:
  /// Point b of dst is what the type makes of the samples src[b * ratio] to src[b * ratio + ratio - 1], for
  /// 0 <= b < (length of src) / ratio, rounded down; DetectorPeakAndMin puts the largest at 2 b and the
  /// smallest at 2 b + 1. dst is resized to that number of points; samples that do not fill a block take no
  /// part. With DetectorNone the points hold what the storage of dst held, zeros where it is new.
  ///
  /// A ratio of 1 copies src, whatever the type, and gives each sample twice for DetectorPeakAndMin. A ratio
  /// above the length of src or below 1 leaves dst empty.
  ///
  /// Each point has the bits that the kernel named at its type gives for its block: sums are formed in
  /// double, not-a-number is passed over by the extremes and spoils means and norms. A zero
  /// counts in DetectorLogAverage as the offset, about 1e-40, and a negative sample as not-a-number.
  ///
  /// dst may be src, which costs a copy; otherwise nothing is allocated but what dst needs to grow. Throws
  /// nothing but 11001, from a dst that cannot grow. Reentrant.
  static void DetectAndDecimate(VecReal32 &dst, const VecReal32 &src, int ratio, DetectorType type);
};

} // namespace QORN

#endif
