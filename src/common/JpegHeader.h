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

/// The same of any picture that can be decoded: also of one whose sampling has no name in
/// TurboJPEG, which readJpegSize() refuses. 0 x 0 if there is no usable header.
JpegSize readAnyJpegSize(tjhandle decompressor, const unsigned char* jpeg, unsigned long jpegSize);

/// Whether so many bytes can hold all of such a picture. The decoder may take memory by the size
/// that a header claims before it looks at the rest.
bool isPlausible(JpegSize size, unsigned long jpegSize);

#endif
