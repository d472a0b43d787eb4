#ifndef VELMAR_JPEG_IMAGE_GEOMETRY_H
#define VELMAR_JPEG_IMAGE_GEOMETRY_H

#include <turbojpeg.h>

#include <cstdint>

namespace velmar::detail {

/// The shape of a decoded picture: scaled, with rows cut at top and bottom.
struct ImageGeometry {
  /// \param imageWidth, imageHeight  of the unscaled image, pixels
  /// \param cropTop, cropBottom      rows of the unscaled image
  /// \param pixelSize                bytes a pixel
  ImageGeometry(unsigned short imageWidth, unsigned short imageHeight, tjscalingfactor factor,
                unsigned short cropTop, unsigned short cropBottom, int pixelSize);

  /// Whether there are as many rows as are to be cut and the size fits 32 bits. Otherwise the other
  /// operations have no meaning.
  bool isValid() const { return top + bottom <= fullHeight && size() <= UINT32_MAX; }
  /// Whether a decoder can fill a buffer of that size with the picture. It cannot if width or
  /// height is 0: the decoder would read 0 as "the size of the JPEG".
  bool isDecodableTo(unsigned int bufferSize) const {
    return isValid() && size() == bufferSize && sourceWidth > 0 && sourceHeight > 0;
  }
  unsigned int rows() const { return fullHeight - (top + bottom); }
  std::uint64_t pitch() const { return std::uint64_t{width} * bytesPerPixel; }
  /// Bytes of the rows that are kept.
  std::uint64_t size() const { return rows() * pitch(); }

  unsigned short sourceWidth;
  unsigned short sourceHeight;
  // All below are scaled pixels, each rounded up separately.
  unsigned int width;
  unsigned int fullHeight;  ///< including the rows that are cut
  unsigned int top;
  unsigned int bottom;
  unsigned int bytesPerPixel;
};

}  // namespace velmar::detail

#endif
