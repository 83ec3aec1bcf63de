// The picture of a filter.
#ifndef QORN_TOOL_FILTERPICTURE_H
#define QORN_TOOL_FILTERPICTURE_H

#include <ostream>

#include "FilterFigures.h"

namespace tool {

/// Writes a sheet of the taps, the frequency response, its pass band and the group delay there, and the
/// figures.
void WriteSvg(std::ostream &out, const FilterFigures &figures);

} // namespace tool

#endif
