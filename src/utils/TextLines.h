// The text lines of a file that is mostly not text.
#ifndef QORN_SRC_UTILS_TEXTLINES_H
#define QORN_SRC_UTILS_TEXTLINES_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string_view>

#include "infra/BinaryFile.h"

namespace QORN {

/// Reads a file from its start, by lines as std::fgets gives them to a buffer of 1024 characters: a line ends
/// with its newline, or after 1023 characters without one, and its text ends at its first zero byte.
///
/// Binary data is passed over by searching for the few texts that matter, and not line by line: a scan of a
/// whole file takes the time of reading it.
class TextLines {
public:
  static constexpr std::ptrdiff_t kMaxLine = 1023;
  static constexpr std::size_t kMaxTexts = 9;

  /// A reader that looks for lines with any of the given texts, at most kMaxTexts of at least two characters.
  /// Throws std::bad_alloc.
  TextLines(const BinaryFile &file, std::initializer_list<std::string_view> texts);

  /// Passes on to the next line; false at the end of the file. The line lives until the next call.
  bool Next(std::string_view &line);

  /// Passes on to the next line that holds one of the texts; false if there is none.
  bool NextHolding(std::string_view &line);

private:
  using Index = std::ptrdiff_t;
  static constexpr Index kSize = 256 * 1024; // of a read: few calls, and within the processor's second cache
  static constexpr Index kKept = kMaxLine + 1;

  // What a read leaves over stands before the place of the next one, which is thus always aligned: the system
  // copies a tenth faster to there.
  struct alignas(64) Buffer {
    char bytes[kKept + kSize];
  };
  static_assert(kKept % alignof(Buffer) == 0);

  struct Text {
    std::string_view text;
    Index place; // of its first occurrence from m_from on, or m_end; anything before m_from is out of date
  };

  bool Fill();
  Index FirstText(std::size_t &length);
  void MoveTo(Index place);
  std::string_view TakeLine();

  const char *At(Index place) const { return m_buffer->bytes + place; }

  const BinaryFile &m_file;
  std::unique_ptr<Buffer> m_buffer;
  std::array<Text, kMaxTexts> m_texts;
  std::size_t m_nTexts;
  std::int64_t m_position = 0; // in the file, of the end of the buffer
  Index m_begin = kKept;       // of the line that is next
  Index m_from = kKept;        // where the search goes on
  Index m_end = kKept;
  bool m_atEnd = false; // the file has no more than the buffer
};

} // namespace QORN

#endif
