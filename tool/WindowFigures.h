// What an engineer wants to know of a window, and its response to a tone.
#ifndef QORN_TOOL_WINDOWFIGURES_H
#define QORN_TOOL_WINDOWFIGURES_H

#include <qorn/qorn.h>

#include <optional>
#include <string>
#include <vector>

#include "WindowKinds.h"

namespace tool {

/// Bandwidths in bins, levels in decibels.
struct WindowFigures {
  const WindowKind *kind;
  double noiseBandwidth;          ///< as the library gives it
  double width3dB;                ///< of the response between the points of half the power
  double width6dB;                ///< and of half the amplitude
  double scallopingLoss;          ///< how far a tone between two bins reads low
  std::optional<double> sidelobe; ///< the highest one, relative to the top; none if there is no room for it
  double mainLobe;                ///< from the top to the first minimum
  double rbwScaling;              ///< the resolution bandwidth, as the library gives it
  QORN::VecReal32 weights;        ///< relative to the largest
  QORN::VecReal64 response;       ///< relative to the top, kPerBin points per bin from the top on

  static constexpr int kPerBin = 32;
};

WindowFigures FiguresOf(const WindowKind &kind, int points);

/// The figures as cells of text: two heads, for name and unit, and a row for each window.
std::vector<std::vector<std::string>> TableOf(const std::vector<WindowFigures> &figures);

void WriteText(std::ostream &out, const std::vector<WindowFigures> &figures, int points);
void WriteJson(std::ostream &out, const std::vector<WindowFigures> &figures, int points);
void WriteCsv(std::ostream &out, const std::vector<WindowFigures> &figures);

} // namespace tool

#endif
