#ifndef VELMAR_TOOLKIT_PICTURE_H
#define VELMAR_TOOLKIT_PICTURE_H

#include <cstdint>
#include <string>
#include <vector>

namespace velmar::toolkit {

/// A decoded frame: rows from top to bottom without padding.
struct Picture {
  unsigned short width = 0;
  unsigned short height = 0;
  bool gray = false;  ///< one byte a pixel instead of three
  std::vector<std::uint8_t> pixels;
};

/// As a PNG file. Throws std::runtime_error.
std::string encodePng(const Picture& picture);

/// As a binary PPM file, PGM if grey.
std::string encodePnm(const Picture& picture);

}  // namespace velmar::toolkit

#endif
