#include "qorn/dsp/WindowFactory.h"

#include <typeinfo>

#include "WindowTable.h"
#include "qorn/dsp/FixedWindows.h"
#include "qorn/dsp/ParametricWindows.h"

namespace QORN {

namespace {

// What the factory knows of a kind. A new class of windows is a new row.
struct Row {
  WindowType type;
  const std::type_info &window;
  std::unique_ptr<Window> (*make)();
  std::unique_ptr<Window> (*clone)(const Window &);
};

template <class W> constexpr Row RowOf(WindowType type) {
  return {type, typeid(W), [] { return std::unique_ptr<Window>(std::make_unique<W>()); },
          [](const Window &window) {
            return std::unique_ptr<Window>(std::make_unique<W>(static_cast<const W &>(window)));
          }};
}

constexpr Row kRows[] = {
    RowOf<Window>(WindowRectangle),        RowOf<BlackmanHarrisWindow>(WindowBlackmanHarris),
    RowOf<FlatTopWindow>(WindowFlatTop),   RowOf<HannWindow>(WindowHann),
    RowOf<GaussWindow>(WindowGauss),       RowOf<HammingWindow>(WindowHamming),
    RowOf<CISPR6dBWindow>(WindowCISPR6dB), RowOf<CISPR6dBWindow>(WindowMil6dB),
    RowOf<KaiserWindow>(WindowKaiser),     RowOf<CISPR3dBWindow>(WindowCISPR3dB),
};

std::unique_ptr<Window> Make(WindowType type) {
  for (const Row &row : kRows) {
    if (row.type == type) return row.make();
  }
  return nullptr;
}

} // namespace

std::unique_ptr<Window> CloneWindow(const Window &window) {
  for (const Row &row : kRows) {
    if (row.window == typeid(window)) return row.clone(window);
  }
  return nullptr;
}

Window *WindowFactory::MakeWindow(WindowType type) { return Make(type).release(); }

Window *WindowFactory::MakeWindow(WindowType type, int n, float parameter) {
  std::unique_ptr<Window> window = Make(type);
  if (window) window->SetParameters(n, parameter);
  return window.release();
}

void WindowFactory::ReleaseWindow(Window *window) { delete window; }

} // namespace QORN
