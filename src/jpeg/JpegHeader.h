#ifndef VELMAR_JPEG_JPEG_HEADER_H
#define VELMAR_JPEG_JPEG_HEADER_H

#include <turbojpeg.h>

#include <optional>

namespace velmar::detail {

/// Pixels.
struct JpegSize {
  int width;
  int height;

  bool operator==(const JpegSize&) const = default;
};

/// Reads a JPEG's size from its header. Empty if the header is not usable, or if the JPEG has
/// tables but no picture. `decompressor` is the caller's TurboJPEG handle, or null if it could not
/// be made; it keeps the tables that it has read.
std::optional<JpegSize> readJpegSize(tjhandle decompressor, const unsigned char* jpeg,
                                     unsigned long jpegSize);

/// The same for every picture that can be decoded, even if its sampling has no name in TurboJPEG,
/// which readJpegSize() refuses. If the result is empty, `cause` says why, until TurboJPEG is
/// called again in this thread.
std::optional<JpegSize> readAnyJpegSize(tjhandle decompressor, const unsigned char* jpeg,
                                        unsigned long jpegSize, const char*& cause);

/// Whether decoders keep the whole picture in memory: they do where a scan has not all of it.
bool isKeptWhole(const unsigned char* jpeg, unsigned long jpegSize);

/// Whether a picture of that size may be decoded from so few bytes. Where a scan has not all of the
/// picture, decoders keep the whole of it in memory, by the size that the header claims and before
/// they look at the rest: what would take absurdly much for its bytes is not to be tried.
bool isPlausible(JpegSize size, const unsigned char* jpeg, unsigned long jpegSize);

}  // namespace velmar::detail

#endif
