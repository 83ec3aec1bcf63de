// Files and folders that do not outlive the program.
#ifndef QORN_TOOL_TEMPORARY_H
#define QORN_TOOL_TEMPORARY_H

#include <string>

namespace tool {

/// A file, or a folder that holds nothing but files that are temporary too. It is removed with the object,
/// and if a signal such as that of Ctrl-C ends the program.
class Temporary {
public:
  explicit Temporary(std::string path);
  ~Temporary();
  Temporary(const Temporary &) = delete;
  Temporary &operator=(const Temporary &) = delete;

  const std::string &Path() const { return m_path; }

  /// Leaves what is at the path, now and later.
  void Keep();

private:
  std::string m_path;
  bool m_kept = false;
};

} // namespace tool

#endif
