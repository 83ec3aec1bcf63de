// The filters that can be made by their kind.
#ifndef QORN_SRC_DSP_FIRFILTERTABLE_H
#define QORN_SRC_DSP_FIRFILTERTABLE_H

#include <memory>

#include "qorn/dsp/FIRBaseFilter.h"

namespace QORN {

/// An independent copy of a filter that the factory made, of the same class; null for one of a class that the
/// factory does not know.
std::unique_ptr<FIRBaseFilter> CloneFilter(const FIRBaseFilter &filter);

} // namespace QORN

#endif
