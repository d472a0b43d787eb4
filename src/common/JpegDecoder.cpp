#include "common/JpegDecoder.h"

#include <cstdint>
#include <cstring>
#include <new>

#include "common/JpegHeader.h"

JpegDecoder::JpegDecoder() : tjHandle_(tjInitDecompress()) {}

VELMAR_ERROR_CODE_E JpegDecoder::decode(const unsigned char* jpeg, unsigned long jpegSize,
                                        const ImageGeometry& geometry, int pixelFormat,
                                        unsigned char* out) {
  if (geometry.top + geometry.bottom == 0) {
    return decompress(jpeg, jpegSize, geometry, pixelFormat, out)
               ? VELMAR_ERROR_CODE_SUCCESS_E
               : VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E;
  }

  unsigned char* whole = scratch(geometry.fullHeight * geometry.pitch());
  if (whole == nullptr) return VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E;
  unsigned char* kept = whole + geometry.top * geometry.pitch();
  // What the decoder leaves out must not show an earlier frame.
  if (!fills(jpeg, jpegSize, geometry)) std::memset(kept, 0, geometry.size());
  if (!decompress(jpeg, jpegSize, geometry, pixelFormat, whole)) {
    return VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E;
  }
  std::memcpy(out, kept, geometry.size());
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

bool JpegDecoder::decompress(const unsigned char* jpeg, unsigned long jpegSize,
                             const ImageGeometry& geometry, int pixelFormat, unsigned char* out) {
  const int result = tjDecompress2(
      tjHandle_.get(), jpeg, jpegSize, out, static_cast<int>(geometry.width),
      static_cast<int>(geometry.pitch()), static_cast<int>(geometry.fullHeight), pixelFormat, 0);
  if (result == -1) tjHandle_.reset(tjInitDecompress());
  return result != -1;
}

// A frame of the size that the header names covers every row; any other may leave some out.
bool JpegDecoder::fills(const unsigned char* jpeg, unsigned long jpegSize,
                        const ImageGeometry& geometry) {
  const auto size = readJpegSize(tjHandle_.get(), jpeg, jpegSize);
  // In mid-header the decompressor would find another fault than the frame has.
  if (!size) tjHandle_.reset(tjInitDecompress());
  return size && size->width == geometry.sourceWidth && size->height == geometry.sourceHeight;
}

// Rows that begin on a 32-byte boundary are written past the cache, and copying them out would
// fetch them from memory again: begin halfway between two boundaries.
unsigned char* JpegDecoder::scratch(std::size_t size) {
  constexpr std::size_t kBoundary = 32;
  if (size > scratchCapacity_) {
    scratch_.reset();
    scratchCapacity_ = 0;
    scratch_.reset(new (std::nothrow) unsigned char[size + 2 * kBoundary]);
    if (!scratch_) return nullptr;
    scratchCapacity_ = size;
  }
  const auto address = reinterpret_cast<std::uintptr_t>(scratch_.get());
  return scratch_.get() + (kBoundary - address % kBoundary) + kBoundary / 2;
}
