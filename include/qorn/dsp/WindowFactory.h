#ifndef QORN_DSP_WINDOWFACTORY_H
#define QORN_DSP_WINDOWFACTORY_H

#include "qorn/Export.h"

namespace QORN {

class Window;

/// The kinds of window. The factory offers those whose row names a class.
enum WindowType : int {
  WindowRectangle = 0,      ///< Window
  WindowBlackmanHarris = 1, ///< BlackmanHarrisWindow
  WindowFlatTop = 2,        ///< FlatTopWindow
  WindowHann = 3,           ///< HannWindow
  WindowGauss = 4,          ///< GaussWindow; the parameter is alpha
  WindowCISPR6dB = 5,       ///< CISPR6dBWindow; the parameter is beta, not 14.6 unless it is given
  WindowMil6dB = 6,         ///< CISPR6dBWindow
  WindowKaiser = 7,         ///< KaiserWindow in mode 0; the parameter is beta
  WindowHamming = 8,        ///< HammingWindow
  WindowBlackman = 9,
  WindowBarlett = 10,
  WindowTriangular = 11,
  WindowTukey = 12,
  WindowChebyshev = 13,
  WindowUserDefined = 14,
  WindowCISPR3dB = 15, ///< CISPR3dBWindow; the parameter is beta, as for WindowCISPR6dB
  WindowNone = 16
};

/// Makes windows by their kind: static functions only.
class QORN_API WindowFactory {
public:
  /// A new window without coefficients, or null for a kind that is not offered. It belongs to the caller, who
  /// keeps it in a std::unique_ptr<Window> or gives it to ReleaseWindow.
  static Window *MakeWindow(WindowType type);

  /// The same, followed by SetParameters(n, parameter): so a parametric shape takes the parameter even if it
  /// is 0, and its default is in force only after MakeWindow(type) and SetParameters(n). Throws as
  /// SetParameters.
  static Window *MakeWindow(WindowType type, int n, float parameter);

  /// Deletes a window; null is ignored.
  static void ReleaseWindow(Window *window);
};

} // namespace QORN

#endif
