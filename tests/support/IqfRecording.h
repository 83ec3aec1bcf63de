// Writes recordings in the IQF format byte by byte, sound and hostile ones, independently of the reader.
#ifndef QORN_TESTS_SUPPORT_IQFRECORDING_H
#define QORN_TESTS_SUPPORT_IQFRECORDING_H

#include <cstdint>
#include <functional>
#include <string>

namespace QORN::test {

/// The parts of a recording as text, to be joined.
namespace iqf {

constexpr int kPairs = 1024;
constexpr int kFrameBytes = 4120;

enum class Mark { kNone, kPolar, kCartesian, kBoth };

struct Pair {
  int first;  ///< Q, phase or amplitude correction
  int second; ///< I, amplitude or phase correction
};

/// The digit, the length and the header text.
inline std::string Header(const std::string &text) {
  const std::string length = std::to_string(text.size());
  return std::to_string(length.size()) + length + text;
}

inline void AppendInteger(std::string &bytes, int value) {
  const auto word = static_cast<std::uint16_t>(value);
  bytes += static_cast<char>(word & 0xFF);
  bytes += static_cast<char>(word >> 8);
}

/// One frame or flatness record; pair k is pairs(k).
inline std::string Frame(Mark mark, const std::function<Pair(int)> &pairs) {
  std::string bytes;
  const bool polar = mark == Mark::kPolar || mark == Mark::kBoth;
  const bool cartesian = mark == Mark::kCartesian || mark == Mark::kBoth;
  AppendInteger(bytes, 0x1234);
  for (int i = 0; i < 2; ++i) AppendInteger(bytes, polar ? 0xFFFF : 0);
  for (int i = 0; i < 2; ++i) AppendInteger(bytes, cartesian ? 0xFFFF : 0);
  for (int i = 0; i < 14; ++i) bytes += static_cast<char>('a' + i);
  for (int k = 0; k < kPairs; ++k) {
    AppendInteger(bytes, pairs(k).first);
    AppendInteger(bytes, pairs(k).second);
  }
  return bytes;
}

} // namespace iqf

} // namespace QORN::test

#endif
