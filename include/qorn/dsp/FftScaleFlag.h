#ifndef QORN_DSP_FFTSCALEFLAG_H
#define QORN_DSP_FFTSCALEFLAG_H

namespace QORN {

/// Which direction of a Fourier transform of N points is scaled, and how. The factor is part of the
/// transform's last pass and costs nothing. Any other value scales as FftScaleInverseByN.
enum FftScaleFlag : int {
  FftScaleForwardByN = 1, ///< forward divided by N, inverse not scaled
  FftScaleInverseByN = 2, ///< forward not scaled, inverse divided by N; the default everywhere
  FftScaleBySqrtN = 4,    ///< both divided by sqrt(N)
  FftScaleNone = 8        ///< neither scaled: forward then inverse gives N times the input
};

/// A hint on how a Fourier transform weighs speed against accuracy. It is kept, and every value gives the
/// same transform: the fastest that this library has is also its most accurate one.
enum QORNAlgorithm : int {
  QORNAlgorithmDefault = 0,
  QORNAlgorithmFast = 1,
  QORNAlgorithmAccurate = 2 ///< the default everywhere
};

} // namespace QORN

#endif
