// What an engineer wants to know of a filter, and its frequency response.
#ifndef QORN_TOOL_FILTERFIGURES_H
#define QORN_TOOL_FILTERFIGURES_H

#include <complex>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "FilterDesign.h"

namespace tool {

struct Band {
  double low, high; ///< hertz

  double Width() const { return high - low; }
};

/// The response is that of the taps, or, where they are a step response, that of the pulse whose running sum
/// they are. It is told at the frequencies from 0 to half the sampling rate, of complex taps from minus that
/// on. Gains are ratios of amplitudes.
struct FilterFigures {
  FilterDesign design;
  std::vector<std::complex<double>> pulse; ///< what the response is of
  std::vector<double> gain;                ///< at first + i * spacing
  std::vector<double> delay;               ///< the group delay there, in samples
  double first;                            ///< hertz
  double spacing;                          ///< hertz
  double gainAtZero;
  double passFrequency;           ///< hertz: in the pass band
  double passGain;                ///< there
  Band width3dB, width6dB;        ///< around it, within half the power and half the amplitude
  std::optional<double> nullLow;  ///< hertz: the first minimum below the pass band
  std::optional<double> nullHigh; ///< and above it
  std::optional<double> stopGain; ///< the highest gain beyond these; none if there is nothing beyond
  Band delays;                    ///< the least and the largest group delay in the 3 dB band, in samples

  double FrequencyOf(std::size_t i) const { return first + static_cast<double>(i) * spacing; }
};

FilterFigures FiguresOf(const FilterDesign &design);

/// Names and values for a report.
using FigureTable = std::vector<std::pair<std::string, std::string>>;
FigureTable TableOf(const FilterFigures &figures);

/// "1.25 dB", and "none" for no gain at all.
std::string DecibelText(double gain, int decimals);

void WriteText(std::ostream &out, const FilterFigures &figures);

nlohmann::ordered_json JsonOf(const FilterFigures &figures);

/// One line per tap; a first line names the columns.
void WriteCsv(std::ostream &out, const FilterFigures &figures);

} // namespace tool

#endif
