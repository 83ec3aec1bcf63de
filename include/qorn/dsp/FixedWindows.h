#ifndef QORN_DSP_FIXEDWINDOWS_H
#define QORN_DSP_FIXEDWINDOWS_H

#include "qorn/dsp/Window.h"

namespace QORN {

/// The Hann window, w(t) = 0.5 - 0.5 cos t at t = 2 pi k / N, scaled to unit sum.
///
/// This and the other cosine-sum windows are periodic (DFT-even): w[k] = w[N - k], and w[0] has no partner.
/// They are computed in double for 0 <= k <= N / 2, narrowed to float and mirrored. They have no parameter:
/// one that is given is dropped. With N = 1 a shape that begins at 0 is not-a-number after scaling.
class QORN_API HannWindow : public Window {
public:
  HannWindow();
  explicit HannWindow(int n);
  void SetParameters(int n) override;
  void SetParameters(int n, float parameter) override;
};

/// The Hamming window, w(t) = 0.54 - 0.46 cos t. See HannWindow for t and what else holds.
class QORN_API HammingWindow : public Window {
public:
  HammingWindow();
  explicit HammingWindow(int n);
  void SetParameters(int n) override;
  void SetParameters(int n, float parameter) override;
};

/// The four-term Blackman-Harris window with sidelobes below -92 dB, w(t) = 0.35875 - 0.48829 cos t + 0.14128
/// cos 2t - 0.01168 cos 3t (F. J. Harris, 1978). See HannWindow for t and what else holds.
class QORN_API BlackmanHarrisWindow : public Window {
public:
  BlackmanHarrisWindow();
  explicit BlackmanHarrisWindow(int n);
  void SetParameters(int n) override;
  void SetParameters(int n, float parameter) override;
};

/// The five-term flat-top window, which reads the amplitude of a tone between bins to 0.01 dB: w(t) =
/// 0.21557895 - 0.41663158 cos t + 0.277263158 cos 2t - 0.083578947 cos 3t + 0.006947368 cos 4t. See
/// HannWindow for t and what else holds.
class QORN_API FlatTopWindow : public Window {
public:
  FlatTopWindow();
  explicit FlatTopWindow(int n);
  void SetParameters(int n) override;
  void SetParameters(int n, float parameter) override;
};

/// The Gauss window of shape alpha, w[k] = exp(-2 (alpha (k - (N - 1) / 2) / N)^2), scaled to unit sum.
///
/// It is symmetric about (N - 1) / 2, so its first and last coefficients are equal. The default alpha is 3.5;
/// with alpha 0 it is the rectangular window. Where the exponential underflows the coefficient is 0.
class QORN_API GaussWindow : public Window {
public:
  GaussWindow();
  explicit GaussWindow(int n);
  void SetParameters(int n) override;
  void SetParameters(int n, float alpha) override;
};

} // namespace QORN

#endif
