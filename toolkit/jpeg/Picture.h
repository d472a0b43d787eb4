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

/// As a PNG file.
/// \param level  of compression, 1 (quick) to 12 (small)
/// Throws std::bad_alloc.
std::string encodePng(const Picture& picture, int level);

/// As a JPEG file, with half the resolution for colours.
/// \param quality  1 to 100
/// Throws std::runtime_error.
std::string encodeJpeg(const Picture& picture, int quality);

/// As a binary PPM file, PGM if grey.
std::string encodePnm(const Picture& picture);

}  // namespace velmar::toolkit

#endif
