// The symbols of PSK, QAM and the 802.11a burst as a receiver sees them.
#ifndef QORN_TOOL_CONSTELLATION_H
#define QORN_TOOL_CONSTELLATION_H

#include <qorn/qorn.h>

#include <complex>
#include <vector>

#include "SignalKinds.h"

namespace tool {

struct Constellation {
  std::vector<std::complex<double>> ideal;  ///< of unit mean power
  std::vector<std::complex<double>> points; ///< received; empty if the signal is too short
  double evm = 0.0;                         ///< root mean square distance from the nearest ideal ones
};

/// Receives a signal, turned and scaled to fit the ideal points. PSK and QAM go through the matched filter
/// and are read at the instants at which the magnitudes differ least: at most 1000 symbols from the start,
/// without those that the filter sees in part. Of a burst the carriers of the data symbols are read, about
/// 1000 at most, and not equalised.
Constellation Receive(const SignalParameters &parameters, const QORN::VecCplx32 &signal);

} // namespace tool

#endif
