// A file of a name of its own, gone with the object.
#ifndef QORN_TESTS_SUPPORT_TEMPFILE_H
#define QORN_TESTS_SUPPORT_TEMPFILE_H

#include <string>

namespace QORN::test {

class TempFile {
public:
  /// An empty file, or one that holds content.
  explicit TempFile(const std::string &content = {});
  ~TempFile();
  TempFile(const TempFile &) = delete;
  TempFile &operator=(const TempFile &) = delete;

  const char *Path() const { return path_.c_str(); }

  /// Puts a named pipe in the place of the file.
  void BecomePipe() const;

  /// Everything that the file holds now.
  std::string Content() const;

private:
  std::string path_;
};

/// The number of files that the process has open.
int OpenFiles();

/// A path at which no file can be opened.
inline constexpr const char *kNoSuchFile = "/no-such-folder/no-such-file";

} // namespace QORN::test

#endif
