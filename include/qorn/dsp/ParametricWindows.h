#ifndef QORN_DSP_PARAMETRICWINDOWS_H
#define QORN_DSP_PARAMETRICWINDOWS_H

#include "qorn/dsp/Window.h"

namespace QORN {

/// Which beta a KaiserWindow takes where none is given, and the resolution-bandwidth scaling that belongs to
/// it. Any value other than KaiserWindowModeCISPR acts as KaiserWindowModeDefault.
enum KaiserWindowModeTag : int {
  KaiserWindowModeDefault = 0, ///< beta 16.71, scaling 2.2292
  KaiserWindowModeCISPR = 1    ///< beta 14.6, scaling 2.0859
};

/// The Kaiser window of shape beta, w[k] = I0(beta sqrt(1 - ((k - c) / c)^2)) / I0(beta) for 0 <= k < N with
/// c = (N - 1) / 2, scaled to unit sum. I0 is the modified Bessel function of order zero.
///
/// It is symmetric about c. With beta 0 it is the rectangular window. See TargetLib::GenKaiserWin_32f, whose
/// values these are, and J. F. Kaiser, Nonrecursive digital filter design using the I0-sinh window function,
/// Proc. IEEE Int. Symp. Circuits and Systems (1974).
///
/// The scaling follows the mode, and a beta that is given does not change it: beta chosen at construction
/// leaves the 0.89 of the rectangular window.
class QORN_API KaiserWindow : public Window {
public:
  /// No coefficients yet; mode 0, scaling 2.2292.
  KaiserWindow();

  /// No coefficients yet; the mode and its scaling.
  explicit KaiserWindow(KaiserWindowModeTag mode);

  /// n points at mode 0.
  explicit KaiserWindow(int n);

  /// n points at the mode's beta.
  KaiserWindow(int n, KaiserWindowModeTag mode);

  /// n points at a beta of one's own; the scaling is that of Window, 0.89.
  KaiserWindow(int n, float beta);

  /// n points at mode 0.
  void SetParameters(int n) override;

  /// n points at a beta of one's own. Mode and scaling stay. From beta = 30 on it works in a temporary of n
  /// doubles. Throws QORNException 11001 if there is no memory or n is negative.
  void SetParameters(int n, float beta) override;

  /// n points at the mode's beta, with its scaling.
  void SetParameters(int n, KaiserWindowModeTag mode);

protected:
  KaiserWindowModeTag m_mode = KaiserWindowModeDefault; ///< the latest mode that was chosen

private:
  float SetMode(KaiserWindowModeTag mode);
};

/// The Kaiser window of beta 14.6 for measurements by CISPR whose resolution bandwidth is given between -3 dB
/// points; the scaling is 2.2292. The response is 2.08 bins wide at -3 dB.
///
/// The two-argument SetParameters is that of KaiserWindow: it takes its parameter as beta, so 0 makes the
/// window flat. The standard shape comes from SetParameters(int).
class QORN_API CISPR3dBWindow : public KaiserWindow {
public:
  CISPR3dBWindow();
  explicit CISPR3dBWindow(int n);
  using KaiserWindow::SetParameters;
  void SetParameters(int n) override;
};

/// The Kaiser window of beta 14.6 for measurements by CISPR whose resolution bandwidth is given between -6 dB
/// points. The response is 2.93 bins wide at -6 dB; the scaling is chosen by the band.
///
/// The scaling is 2.9405 after the default constructor and 2.0859 after the sized one; Set6dBBWParam sets the
/// one that counts, and SetParameters(int) keeps it. What CISPR3dBWindow says of the two-argument
/// SetParameters holds here too.
class QORN_API CISPR6dBWindow : public KaiserWindow {
public:
  CISPR6dBWindow();
  explicit CISPR6dBWindow(int n);
  using KaiserWindow::SetParameters;
  void SetParameters(int n) override;

  /// Chooses the scaling by the 6 dB bandwidth in hertz: 2.9405 above 9 kHz up to and with 150 kHz, 2.8405
  /// above that up to and with 30 MHz, and 2.9605 otherwise. The coefficients stay.
  void Set6dBBWParam(double bandwidth) override;
};

/// The Taylor window of peak sidelobe level L in dB, a negative number, and nbar nearly constant sidelobes
/// (T. T. Taylor, Design of line-source antennas for narrow beamwidth and low side lobes, IRE Trans. AP-3,
/// 1955): with A = acosh(10^(-L / 20)) / pi and sigma2 = nbar^2 / ((nbar - 1/2)^2 + A^2),
///
///   w[k] = 1 + 2 sum over 0 < m < nbar of F(m) cos(2 pi m (k - (N - 1) / 2) / N),
///   F(m) = -(-1)^m / 2 prod over 0 < i < nbar of (1 - m^2 / sigma2 / ((i - 1/2)^2 + A^2))
///          / prod over 0 < i < nbar, i != m, of (1 - m^2 / i^2),
///
/// scaled to unit sum. It is symmetric about (N - 1) / 2 but for rounding, and computed in float, in time
/// proportional to nbar (nbar + N). The defaults are -30 dB and 4; -30 dB is about the deepest level that 4
/// sidelobes allow. Beyond 52 sidelobes (60 at -120 dB) the products leave the range of float, and with them
/// the coefficients become not-a-number.
///
/// It has no calibrated resolution bandwidth: the scaling is 0 where size alone was given, and otherwise the
/// 0.89 of Window.
class QORN_API TaylorWindow : public Window {
public:
  /// n points at -30 dB with 4 sidelobes; scaling 0.
  explicit TaylorWindow(int n);

  /// n points at a level of one's own in dB, with 4 sidelobes; throws as SetParameters.
  TaylorWindow(int n, float level);

  /// n points at a level and a number of sidelobes of one's own; throws as SetParameters.
  TaylorWindow(int n, float level, int nbar);

  /// n points at -30 dB with 4 sidelobes; scaling 0.
  void SetParameters(int n) override;

  /// n points at a level of one's own in dB, with 4 sidelobes.
  void SetParameters(int n, float level) override;

  /// n points at a level in dB and a number of sidelobes.
  ///
  /// Throws QORNException 10002 "invalid input parameter" if the level is positive or not-a-number, or nbar
  /// is below 2 A^2 + 1/2: a deep level needs many sidelobes. Size, level and nbar have the new values then
  /// and all coefficients are 1, not scaled. Throws 11001 if there is no memory or n is negative.
  void SetParameters(int n, float level, int nbar);

protected:
  /// F(m) as above, in float; a is A. Below nbar = 2 it is -1/2 for even m and 1/2 for odd m.
  static float ComputeFm(int nbar, float sigma2, float a, int m);

  int m_nbar = 4; ///< the number of nearly constant sidelobes
};

} // namespace QORN

#endif
