// Writing recordings in the IQF format.
#ifndef QORN_TOOL_IQFWRITER_H
#define QORN_TOOL_IQFWRITER_H

#include <cstdint>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace tool {

/// Writes the header at once, then frame by frame what is put, then the flatness record.
class IqfWriter {
public:
  /// header: lines of names and values. A frame has so many samples, 1024 at most.
  IqfWriter(std::ostream &out, const std::string &header, int points) : m_out(out), m_points(points) {
    out << std::to_string(header.size()).size() << header.size() << header;
  }

  /// The next sample, in steps.
  void Put(int i, int q) {
    PutPair(q, i);
    if (m_put == m_points) WriteFrame();
  }

  /// Ends the last frame, with zeros where it is not full, and writes the flatness record: amplitude and
  /// phase correction in the steps of the format, at most 1024 pairs.
  void End(const std::vector<std::pair<int, int>> &flatness = {}) {
    if (m_put > 0) WriteFrame();
    for (const auto &[amplitude, phase] : flatness) PutPair(amplitude, phase);
    WriteFrame();
  }

private:
  void PutPair(int first, int second) {
    char *pair = m_frame + 24 + 4 * m_put++;
    for (const int value : {first, second}) {
      const auto word = static_cast<std::uint16_t>(value);
      *pair++ = static_cast<char>(word & 0xFF);
      *pair++ = static_cast<char>(word >> 8);
    }
  }

  void WriteFrame() {
    for (int i = 6; i < 10; ++i) m_frame[i] = '\xFF'; // Q and I follow
    m_out.write(m_frame, sizeof m_frame);
    for (char &byte : m_frame) byte = 0;
    m_put = 0;
  }

  std::ostream &m_out;
  int m_points;
  int m_put = 0;        // pairs of the frame so far
  char m_frame[4120]{}; // 24 bytes and 1024 pairs
};

} // namespace tool

#endif
