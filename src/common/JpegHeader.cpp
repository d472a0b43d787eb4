#include "common/JpegHeader.h"

namespace {

int readHeader(tjhandle decompressor, const unsigned char* jpeg, unsigned long jpegSize,
               JpegSize& size) {
  int subsampling = -1;
  // The interface wants a writable pointer and never writes through it.
  auto* source = const_cast<unsigned char*>(jpeg);
  return tjDecompressHeader2(decompressor, source, jpegSize, &size.width, &size.height,
                             &subsampling);
}

}  // namespace

std::optional<JpegSize> readJpegSize(tjhandle decompressor, const unsigned char* jpeg,
                                     unsigned long jpegSize) {
  JpegSize size{};
  if (readHeader(decompressor, jpeg, jpegSize, size) != 0) return std::nullopt;
  return size;
}

JpegSize readAnyJpegSize(tjhandle decompressor, const unsigned char* jpeg, unsigned long jpegSize) {
  JpegSize size{};
  readHeader(decompressor, jpeg, jpegSize, size);
  return size;
}

bool isPlausible(JpegSize size, unsigned long jpegSize) {
  // Each 8 x 8 pixels take a bit at least; by far less with arithmetic coding.
  constexpr unsigned long kPixelsPerByte = 1UL << 14;
  return static_cast<unsigned long>(size.width) * static_cast<unsigned long>(size.height) /
             kPixelsPerByte <=
         jpegSize;
}
