#include "TextLines.h"

#include <algorithm>
#include <cstring>

#include "infra/kernels/Levels.h"

namespace QORN {

TextLines::TextLines(const BinaryFile &file, std::initializer_list<std::string_view> texts)
    : m_file(file), m_buffer(std::make_unique_for_overwrite<Buffer>()), m_nTexts(texts.size()) {
  std::transform(texts.begin(), texts.end(), m_texts.begin(), [](std::string_view text) {
    return Text{text, -1};
  });
}

// Sees to it that a whole line stands at m_begin; false if there is none left.
bool TextLines::Fill() {
  if (m_end - m_begin < kMaxLine && !m_atEnd) {
    const Index kept = m_end - m_begin;
    const Index begin = kKept - kept;
    std::memmove(m_buffer->bytes + begin, At(m_begin), static_cast<std::size_t>(kept));
    const std::size_t got = m_file.ReadAt(m_position, m_buffer->bytes + kKept, kSize);
    m_atEnd = got < kSize;
    m_position += static_cast<std::int64_t>(got);
    m_from += begin - m_begin;
    m_begin = begin;
    m_end = kKept + static_cast<Index>(got);
    for (std::size_t i = 0; i < m_nTexts; ++i) m_texts[i].place = -1;
  }
  return m_begin < m_end;
}

// The place of the first of the texts from m_from on, and its length; m_end if there is none.
TextLines::Index TextLines::FirstText(std::size_t &length) {
  Index first = m_end;
  for (std::size_t i = 0; i < m_nTexts; ++i) {
    const std::string_view text = m_texts[i].text;
    Index &place = m_texts[i].place;
    if (place < m_from) {
      place = m_from + kernels::active->FindText(At(m_from), m_end - m_from, text.data(),
                                                 static_cast<Index>(text.size()));
    }
    if (place < first) {
      first = place;
      length = text.size();
    }
  }
  return first;
}

// Passes over the lines before the one that the byte at place belongs to.
void TextLines::MoveTo(Index place) {
  const char *begin = At(m_begin);
  const auto *newline =
      static_cast<const char *>(memrchr(begin, '\n', static_cast<std::size_t>(place - m_begin)));
  if (newline != nullptr) m_begin += newline - begin + 1;
  m_begin += (place - m_begin) / kMaxLine * kMaxLine;
  m_from = std::max(m_from, m_begin);
}

std::string_view TextLines::TakeLine() {
  const char *begin = At(m_begin);
  const std::string_view most(begin, static_cast<std::size_t>(std::min(kMaxLine, m_end - m_begin)));
  const std::size_t newline = most.find('\n');
  const std::string_view line = newline == most.npos ? most : most.substr(0, newline + 1);
  m_begin += static_cast<Index>(line.size());
  m_from = std::max(m_from, m_begin);
  return line.substr(0, line.find('\0'));
}

bool TextLines::Next(std::string_view &line) {
  if (!Fill()) return false;
  line = TakeLine();
  return true;
}

bool TextLines::NextHolding(std::string_view &line) {
  while (Fill()) {
    std::size_t length = 0;
    const Index place = FirstText(length);
    MoveTo(place);
    // The rest of the line may not have been read yet.
    if (m_end - m_begin < kMaxLine && !m_atEnd) continue;
    if (place == m_end) return false;
    const Index start = m_begin;
    line = TakeLine();
    if (place - start + static_cast<Index>(length) <= static_cast<Index>(line.size())) return true;
    // The text crosses the end of the line, or stands behind a zero byte.
    m_begin = start;
    m_from = place + 1;
  }
  return false;
}

} // namespace QORN
