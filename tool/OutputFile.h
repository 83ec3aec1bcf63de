// Files that are written whole or not at all.
#ifndef QORN_TOOL_OUTPUTFILE_H
#define QORN_TOOL_OUTPUTFILE_H

#include <filesystem>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Temporary.h"

namespace tool {

/// A file that is written beside its place and takes it by Commit. Until then nothing is at its place but
/// what was there before, and without a Commit nothing is left,
/// not even if a signal such as that of Ctrl-C ends the program. A device or a pipe is written directly, and
/// so is the standard output, where it goes on.
class OutputFile {
public:
  using Writer = std::function<void(std::ostream &)>;

  /// option names the argument in messages. Throws UsageError if there can be no such file, or if it is the
  /// recording itself; recording may be empty. Nothing is created yet.
  OutputFile(std::string option, const std::string &path, const std::string &recording);
  OutputFile(const OutputFile &) = delete;
  OutputFile &operator=(const OutputFile &) = delete;

  /// Creates the file and has it written. Throws DataError as soon as something cannot be.
  void Write(const Writer &writer);

  /// Puts the file in its place.
  void Commit();

  const std::string &Option() const { return m_option; }

  /// Whether it is written at its place at once, and may then be gone.
  bool IsDirect() const { return m_direct; }

  /// Whether the file is the pipe or the file that the standard output goes to. Of devices it does not
  /// matter.
  bool IsStandardOutput() const { return m_standard; }

  const std::filesystem::path &Place() const { return m_place; }

  /// Where the file is, between Write and Commit.
  std::filesystem::path Written() const {
    return m_temporary ? std::filesystem::path(m_temporary->Path()) : m_place;
  }

private:
  std::ostream &Open();
  [[noreturn]] void Fail(const std::string &reason) const;

  std::string m_option;
  std::string m_path;
  std::filesystem::path m_place; ///< m_path with links followed
  std::optional<Temporary> m_temporary;
  bool m_direct = false;
  bool m_standard = false;
  std::ofstream m_stream;
};

/// The files of several options, as far as they are asked for: an empty path is none.
class OutputFiles {
public:
  struct Request {
    const char *option;
    const std::string &path;
  };
  using Writer = OutputFile::Writer;

  /// inputs are the options that name files to read. Throws as OutputFile, and UsageError if two are one
  /// file, however they are spelt, or one is an input.
  OutputFiles(std::initializer_list<Request> requests, const std::string &recording = "",
              std::initializer_list<Request> inputs = {});

  /// Writes all in full, each by its writer, before the first takes its place. A writer may read the files
  /// before its own at Written.
  void Write(std::initializer_list<Writer> writers);

  /// Where a report of what was written goes: to the error stream if the standard output is one of the files.
  std::ostream &Report() const;

  /// Whether the file of a request can be read there: it is no device or pipe.
  bool CanBeRead(std::size_t request) const { return !m_files[request]->IsDirect(); }

  /// Where the file of a request is while those behind it are written.
  std::string Written(std::size_t request) const { return m_files[request]->Written().string(); }

private:
  std::vector<std::unique_ptr<OutputFile>> m_files; ///< one for each request; null if there is none
};

} // namespace tool

#endif
