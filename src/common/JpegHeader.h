#ifndef VELMAR_COMMON_JPEG_HEADER_H
#define VELMAR_COMMON_JPEG_HEADER_H

#include <turbojpeg.h>

#include <optional>

/// Pixels.
struct JpegSize {
  int width;
  int height;
};

/// Reads a JPEG's size from its header; nothing if there is no usable one, with the cause in
/// tjGetErrorStr(). `decompressor` is a TurboJPEG handle of the caller's, null one that failed to
/// be made.
std::optional<JpegSize> readJpegSize(tjhandle decompressor, const unsigned char* jpeg,
                                     unsigned long jpegSize);

#endif
