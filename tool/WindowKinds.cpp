#include "WindowKinds.h"

#include "Text.h"

namespace tool {

std::string WindowKind::Title() const {
  if (*symbol == '\0') return name;
  return std::string(name) + ", " + symbol + " " + Significant(static_cast<double>(parameter), 6);
}

const std::vector<WindowKind> &Windows() {
  static const std::vector<WindowKind> known = {
      {"rectangle", QORN::WindowRectangle, 0.0F, ""},
      {"hann", QORN::WindowHann, 0.0F, ""},
      {"hamming", QORN::WindowHamming, 0.0F, ""},
      {"blackman-harris", QORN::WindowBlackmanHarris, 0.0F, ""},
      {"flat-top", QORN::WindowFlatTop, 0.0F, ""},
      {"gauss", QORN::WindowGauss, 3.5F, "alpha"},
      {"kaiser", QORN::WindowKaiser, 16.71F, "beta"},
      {"cispr3db", QORN::WindowCISPR3dB, 14.6F, "beta"},
      {"cispr6db", QORN::WindowCISPR6dB, 14.6F, "beta"},
      {"mil6db", QORN::WindowMil6dB, 14.6F, "beta"},
  };
  return known;
}

std::string WindowNames() {
  std::vector<std::string> names;
  for (const WindowKind &kind : Windows()) names.emplace_back(kind.name);
  return Joined(names);
}

const WindowKind *FindWindow(const std::string &name) {
  for (const WindowKind &kind : Windows())
    if (PlainName(kind.name) == PlainName(name)) return &kind;
  return nullptr;
}

std::unique_ptr<QORN::Window> MakeWindow(const WindowKind &kind, int points) {
  return std::unique_ptr<QORN::Window>(QORN::WindowFactory::MakeWindow(kind.type, points, kind.parameter));
}

} // namespace tool
