#ifndef QORN_DSP_FIRFILTERFACTORY_H
#define QORN_DSP_FIRFILTERFACTORY_H

#include "qorn/Export.h"
#include "qorn/dsp/FIRBaseFilter.h"

namespace QORN {

/// Makes filters by their kind: static functions only.
class QORN_API FIRFilterFactory {
public:
  /// A new filter without taps, of the class that the kind names, or null for a kind that is not named. It
  /// belongs to the caller, who keeps it in a std::unique_ptr<FIRBaseFilter>. Its GetType() is the kind,
  /// except for FIRFilterGaussRect, which reports FIRFilterIntegralGaussian.
  static FIRBaseFilter *MakeFilter(FIRFilterTypeTag type);
};

} // namespace QORN

#endif
