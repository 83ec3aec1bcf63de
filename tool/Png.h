// Rasters as PNG files.
#ifndef QORN_TOOL_PNG_H
#define QORN_TOOL_PNG_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace tool {

struct Colour {
  std::uint8_t red, green, blue;
};

using Palette = std::array<Colour, 256>;

/// A raster of palette indices, row by row from the top.
struct Raster {
  int width, height;
  std::vector<std::uint8_t> pixels;
};

/// The bytes of the file (W3C: Portable Network Graphics, second edition, 2003), not compressed.
std::string PngOf(const Raster &raster, const Palette &palette);

} // namespace tool

#endif
