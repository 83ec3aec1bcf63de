// The picture of several windows.
#ifndef QORN_TOOL_WINDOWPICTURE_H
#define QORN_TOOL_WINDOWPICTURE_H

#include <ostream>
#include <vector>

#include "WindowFigures.h"

namespace tool {

/// Writes a sheet that shows each window's weights and its response to a tone, all in the same scales, and
/// their figures in a table. At most ten windows fit a page of A4.
void WriteSvg(std::ostream &out, const std::vector<WindowFigures> &figures, int points);

} // namespace tool

#endif
