// The noise floor of an averaged power spectrum, and the signals that stand out of it.
#ifndef QORN_TOOL_PEAKS_H
#define QORN_TOOL_PEAKS_H

#include <qorn/qorn.h>

#include <cstdint>
#include <vector>

namespace tool {

/// The points of a spectrum: how far apart in bins, and whether the last is a neighbour of the first.
struct Grid {
  double spacing = 1.0;
  bool circle = true;
};

struct Peak {
  int index;    ///< the point
  double place; ///< the interpolated one, within half a point of index
  double power; ///< at index
};

/// The noise power per bin of a mean of so many spectra: its median, corrected for the median of the
/// distribution that such a mean of noise has lying below its mean. True if signals occupy less than half of
/// the bins.
double NoiseFloor(const QORN::VecReal64 &mean, std::int64_t blocks);

/// How far below a tone its own leakage stays at least: element d is the largest ratio of powers at d or more
/// bins from the bin of the tone, wherever in that bin the tone lies.
std::vector<double> LeakageOf(const QORN::Window &window);

/// The strongest peaks, at most `limit` of them: local maxima above what noise reaches by chance, with a
/// valley to either side, and not explained by the leakage of a stronger one. scatter holds the standard
/// error of each mean, relative to it: next to nothing for a steady tone, much for a signal that comes in
/// bursts.
std::vector<Peak> FindPeaks(const QORN::VecReal64 &mean, const QORN::VecReal64 &scatter, std::int64_t blocks,
                            double noiseFloor, const std::vector<double> &leakage, const Grid &grid = {},
                            int limit = 8);

} // namespace tool

#endif
