// The windows of the library as a table, and what tests read of them.
#ifndef QORN_TESTS_SUPPORT_WINDOWS_H
#define QORN_TESTS_SUPPORT_WINDOWS_H

#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qorn/dsp/FixedWindows.h"
#include "qorn/dsp/ParametricWindows.h"
#include "support/Vectors.h"

namespace QORN::test {

/// Reaches what subclasses reach.
struct WindowProbe : Window {
  static const VecReal32 &Stored(const Window &w) { return w.*(&WindowProbe::m_coefficients); }
  static float Parameter(const Window &w) { return w.*(&WindowProbe::m_parameter); }
  static float Sum(const Window &w) { return (w.*(&WindowProbe::GetNBScaleFactor))(); }

  /// A window of any coefficients.
  WindowProbe(const std::vector<float> &doubled, int n) {
    m_coefficients = Of<VecReal32>(doubled);
    m_size = n;
  }
};

inline std::vector<float> Coefficients(const Window &window) {
  VecReal32 w;
  window.GetCoefficients(w);
  return List(w);
}

struct WindowShape {
  std::string name;
  std::function<std::unique_ptr<Window>()> empty;
  std::function<std::unique_ptr<Window>(int)> sized;
  float parameter;       // after the sized constructor
  float emptyRbwScaling; // after the default constructor
  float sizedRbwScaling;
};

template <class W> WindowShape ShapeOf(const char *name, float rbwScaling, float parameter = 0.0F) {
  return {name,
          [] { return std::make_unique<W>(); },
          [](int n) { return std::make_unique<W>(n); },
          parameter,
          rbwScaling,
          rbwScaling};
}

/// Every class of windows, each in its default shape.
inline const std::vector<WindowShape> &WindowShapes() {
  static const std::vector<WindowShape> shapes = [] {
    std::vector<WindowShape> all = {
        ShapeOf<Window>("Rectangle", 0.89F),
        ShapeOf<BlackmanHarrisWindow>("BlackmanHarris", 1.9F),
        ShapeOf<FlatTopWindow>("FlatTop", 3.72F),
        ShapeOf<GaussWindow>("Gauss", 1.86F, 3.5F),
        ShapeOf<HammingWindow>("Hamming", 1.3F),
        ShapeOf<HannWindow>("Hann", 1.44F),
        ShapeOf<KaiserWindow>("Kaiser", 2.2292F, 16.71F),
        ShapeOf<CISPR3dBWindow>("CISPR3dB", 2.2292F, 14.6F),
        ShapeOf<CISPR6dBWindow>("CISPR6dB", 2.9405F, 14.6F),
    };
    all.back().sizedRbwScaling = 2.0859F;
    // It has no constructor without a size.
    all.push_back({"Taylor", [] { return std::make_unique<TaylorWindow>(0); },
                   [](int n) { return std::make_unique<TaylorWindow>(n); }, -30.0F, 0.0F, 0.0F});
    return all;
  }();
  return shapes;
}

inline const WindowShape &WindowShapeNamed(const std::string &name) {
  for (const WindowShape &shape : WindowShapes()) {
    if (shape.name == name) return shape;
  }
  std::abort();
}

} // namespace QORN::test

#endif
