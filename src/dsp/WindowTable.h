// The windows that can be made by their kind.
#ifndef QORN_SRC_DSP_WINDOWTABLE_H
#define QORN_SRC_DSP_WINDOWTABLE_H

#include <memory>

#include "qorn/dsp/Window.h"

namespace QORN {

/// An independent copy of a window that the factory made, of the same class; null for one of a class that the
/// factory does not know.
std::unique_ptr<Window> CloneWindow(const Window &window);

} // namespace QORN

#endif
