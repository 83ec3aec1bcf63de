// The windows by the names that the command line knows.
#ifndef QORN_TOOL_WINDOWKINDS_H
#define QORN_TOOL_WINDOWKINDS_H

#include <qorn/qorn.h>

#include <memory>
#include <string>
#include <vector>

namespace tool {

struct WindowKind {
  const char *name;
  QORN::WindowType type;
  float parameter;    ///< the one that the shape is known for, where it has one
  const char *symbol; ///< of the parameter; empty if the shape has none

  /// "hann", "kaiser, beta 16.71".
  std::string Title() const;
};

/// Those that the library makes.
const std::vector<WindowKind> &Windows();

/// The names, with commas between.
std::string WindowNames();

/// The window of that name, in any case and with or without hyphens; null if there is none.
const WindowKind *FindWindow(const std::string &name);

std::unique_ptr<QORN::Window> MakeWindow(const WindowKind &kind, int points);

} // namespace tool

#endif
