#include "common/JpegHeader.h"

std::optional<JpegSize> readJpegSize(tjhandle decompressor, const unsigned char* jpeg,
                                     unsigned long jpegSize) {
  JpegSize size{};
  int subsampling = -1;
  // The interface wants a writable pointer and never writes through it.
  auto* source = const_cast<unsigned char*>(jpeg);
  if (tjDecompressHeader2(decompressor, source, jpegSize, &size.width, &size.height,
                          &subsampling) != 0) {
    return std::nullopt;
  }
  return size;
}
