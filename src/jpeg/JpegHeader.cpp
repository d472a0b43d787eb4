#include "jpeg/JpegHeader.h"

namespace velmar::detail {

namespace {

// TurboJPEG's result. It may leave a size in `size` even if it fails.
int readHeader(tjhandle decompressor, const unsigned char* jpeg, unsigned long jpegSize,
               JpegSize& size) {
  int subsampling = -1;
  // TurboJPEG takes a writable pointer but never writes through it.
  auto* source = const_cast<unsigned char*>(jpeg);
  return tjDecompressHeader2(decompressor, source, jpegSize, &size.width, &size.height,
                             &subsampling);
}

}  // namespace

std::optional<JpegSize> readJpegSize(tjhandle decompressor, const unsigned char* jpeg,
                                     unsigned long jpegSize) {
  JpegSize size{};
  // For a JPEG that has only tables TurboJPEG reports no error and no size.
  if (readHeader(decompressor, jpeg, jpegSize, size) != 0 || size.height <= 0) return std::nullopt;
  return size;
}

std::optional<JpegSize> readAnyJpegSize(tjhandle decompressor, const unsigned char* jpeg,
                                        unsigned long jpegSize, const char*& cause) {
  JpegSize size{};
  const int result = readHeader(decompressor, jpeg, jpegSize, size);
  if (size.width > 0 && size.height > 0) return size;
  cause = result == 0 ? "JPEG tables without a picture" : tjGetErrorStr();
  return std::nullopt;
}

bool isKeptWhole(const unsigned char* jpeg, unsigned long jpegSize) {
  unsigned int components = 0;
  // Segments: a marker of two bytes, a length that counts itself, the rest.
  for (unsigned long at = 2; at + 9 < jpegSize;) {
    const unsigned int marker = jpeg[at + 1];
    if (jpeg[at] != 0xFF) break;
    if (marker == 0xFF) {  // a fill byte
      ++at;
      continue;
    }
    const bool isFrame = marker >= 0xC0 && marker <= 0xCF && (marker % 4 != 0 || marker == 0xC0);
    if (isFrame && marker % 4 == 2) return true;  // progressive
    if (isFrame) components = jpeg[at + 9];
    if (marker == 0xDA) return jpeg[at + 4] < components;
    at += 2UL + jpeg[at + 2] * 256UL + jpeg[at + 3];
  }
  return true;
}

bool isPlausible(JpegSize size, const unsigned char* jpeg, unsigned long jpegSize) {
  // Kept whole it takes up to 8 bytes a pixel: what that comes to here, any frame may have.
  constexpr unsigned long kPixelsForAny = 1UL << 24;
  // Larger pictures: 8 x 8 pixels take at least a bit, far less with arithmetic coding.
  constexpr unsigned long kPixelsPerByte = 1UL << 14;
  const auto pixels =
      static_cast<unsigned long>(size.width) * static_cast<unsigned long>(size.height);
  return pixels <= kPixelsForAny || pixels / kPixelsPerByte <= jpegSize ||
         !isKeptWhole(jpeg, jpegSize);
}

}  // namespace velmar::detail
