#include "jpeg/ImageGeometry.h"

namespace velmar::detail {

namespace {

unsigned int scaled(unsigned short dimension, tjscalingfactor factor) {
  return static_cast<unsigned int>(TJSCALED(dimension, factor));
}

}  // namespace

ImageGeometry::ImageGeometry(unsigned short imageWidth, unsigned short imageHeight,
                             tjscalingfactor factor, unsigned short cropTop,
                             unsigned short cropBottom, int pixelSize)
    : sourceWidth(imageWidth),
      sourceHeight(imageHeight),
      width(scaled(imageWidth, factor)),
      fullHeight(scaled(imageHeight, factor)),
      top(scaled(cropTop, factor)),
      bottom(scaled(cropBottom, factor)),
      bytesPerPixel(static_cast<unsigned int>(pixelSize)) {}

}  // namespace velmar::detail
