// The taps of the IS-95 measurement filters, by oversampling ratio: samples per chip.
//
// ratio                         2    4    8   16
// transmitter, both            81  161  321  643 taps, peak near 1.05 / ratio, sum near 0.9185
// reference                   103  207  415  829 taps, peak near 4 / ratio, sum near 4.06
//
// The delay of a filter of n taps is (n - 1) / 2. The peak of the transmitter's taps at ratio 16 lies at
// place 320, one before that. How the tables come from those of ratio 2: scripts/coefficients/is95_taps.py.
#ifndef QORN_SRC_DSP_IS95TAPS_H
#define QORN_SRC_DSP_IS95TAPS_H

#include <span>

namespace QORN {

/// The taps at the ratio, which live as long as the program. Empty for a ratio other than 2, 4, 8 and 16.
/// The transmitter filter is nearly symmetric about its peak, that with phase equaliser is not, the reference
/// filter is exactly.
///@{
std::span<const float> IS95TxTaps(int ratio);
std::span<const float> IS95TxEqTaps(int ratio);
std::span<const float> IS95ReferenceTaps(int ratio);
///@}

} // namespace QORN

#endif
