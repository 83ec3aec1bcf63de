#include "Png.h"

#include <algorithm>

namespace tool {

namespace {

std::string BigEndian(std::uint32_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift & 0xFFU);
  return bytes;
}

// The check sum of a chunk: the remainder of ISO 3309.
std::uint32_t Crc(const std::string &bytes) {
  std::uint32_t crc = 0xFFFFFFFFU;
  for (const char byte : bytes) {
    crc ^= static_cast<unsigned char>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
  }
  return ~crc;
}

std::string Chunk(const std::string &type, const std::string &data) {
  return BigEndian(static_cast<std::uint32_t>(data.size())) + type + data + BigEndian(Crc(type + data));
}

// A zlib stream (RFC 1950) of stored blocks (RFC 1951, 3.2.4).
std::string Stored(const std::string &data) {
  constexpr std::size_t kMost = 65535;
  std::string stream = "\x78\x01";
  for (std::size_t at = 0; at < data.size(); at += kMost) {
    const auto length = static_cast<unsigned>(std::min(kMost, data.size() - at));
    stream += at + length == data.size() ? '\x01' : '\x00';
    for (const unsigned word : {length, ~length}) {
      stream += static_cast<char>(word & 0xFFU);
      stream += static_cast<char>(word >> 8 & 0xFFU);
    }
    stream.append(data, at, length);
  }
  std::uint32_t a = 1;
  std::uint32_t b = 0;
  for (const char byte : data) {
    a = (a + static_cast<unsigned char>(byte)) % 65521;
    b = (b + a) % 65521;
  }
  return stream + BigEndian(b << 16 | a);
}

} // namespace

std::string PngOf(const Raster &raster, const Palette &palette) {
  const auto width = static_cast<std::size_t>(raster.width);
  std::string rows;
  for (std::size_t at = 0; at < raster.pixels.size(); at += width) {
    rows += '\0'; // no filter
    rows.append(raster.pixels.begin() + static_cast<std::ptrdiff_t>(at),
                raster.pixels.begin() + static_cast<std::ptrdiff_t>(at + width));
  }
  std::string colours;
  for (const Colour &colour : palette)
    for (const std::uint8_t part : {colour.red, colour.green, colour.blue})
      colours += static_cast<char>(part);
  const std::string header = BigEndian(static_cast<std::uint32_t>(raster.width)) +
                             BigEndian(static_cast<std::uint32_t>(raster.height)) +
                             std::string{'\x08', '\x03', '\0', '\0', '\0'}; // 8 bits, by palette
  return "\x89PNG\r\n\x1A\n" + Chunk("IHDR", header) + Chunk("PLTE", colours) + Chunk("IDAT", Stored(rows)) +
         Chunk("IEND", "");
}

} // namespace tool
