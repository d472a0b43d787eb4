#include "common/JpegDecoder.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

namespace {

constexpr unsigned int kLargestScale = 2;  // of TurboJPEG's, which enlarges smaller frames

}  // namespace

JpegDecoder::JpegDecoder() : tjHandle_(tjInitDecompress()) {}

VELMAR_ERROR_CODE_E JpegDecoder::decode(const unsigned char* jpeg, unsigned long jpegSize,
                                        const ImageGeometry& geometry, int pixelFormat,
                                        unsigned char* out) {
  const JpegSize size = readSize(jpeg, jpegSize);
  if (size.height <= 0 || !isPlausible(size, jpegSize)) {
    return VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E;
  }
  if (geometry.top + geometry.bottom == 0) {
    return decompress(jpeg, jpegSize, geometry, pixelFormat, out)
               ? VELMAR_ERROR_CODE_SUCCESS_E
               : VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E;
  }

  // The header may speak of far more rows than the frame can reach.
  const unsigned int reached =
      std::min(geometry.fullHeight, kLargestScale * static_cast<unsigned int>(size.height));
  unsigned char* whole = scratch(reached * geometry.pitch());
  if (whole == nullptr) return VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E;
  const unsigned int kept =
      reached > geometry.top ? std::min(reached - geometry.top, geometry.rows()) : 0;
  const std::uint64_t skippedBytes = (reached > geometry.top ? geometry.top : 0) * geometry.pitch();
  const std::uint64_t keptBytes = kept * geometry.pitch();
  // What the decoder leaves out must not show an earlier frame.
  if (size.width != geometry.sourceWidth || size.height != geometry.sourceHeight) {
    std::memset(whole + skippedBytes, 0, keptBytes);
  }
  if (!decompress(jpeg, jpegSize, geometry, pixelFormat, whole)) {
    return VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E;
  }
  std::memcpy(out, whole + skippedBytes, keptBytes);
  std::memset(out + keptBytes, 0, geometry.size() - keptBytes);
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

JpegSize JpegDecoder::readSize(const unsigned char* jpeg, unsigned long jpegSize) {
  const JpegSize size = readAnyJpegSize(tjHandle_.get(), jpeg, jpegSize);
  // In mid-header the decompressor would find another fault than the frame has.
  if (size.height <= 0) tjHandle_.reset(tjInitDecompress());
  return size;
}

// Rows that begin on a 32-byte boundary are written past the cache, and copying them out would
// fetch them from memory again: begin halfway between two boundaries.
unsigned char* JpegDecoder::scratch(std::size_t size) {
  constexpr std::size_t kBoundary = 32;
  if (!scratch_ || size > scratchCapacity_) {
    scratch_.reset();
    scratchCapacity_ = 0;
    scratch_.reset(new (std::nothrow) unsigned char[size + 2 * kBoundary]);
    if (!scratch_) return nullptr;
    scratchCapacity_ = size;
  }
  const auto address = reinterpret_cast<std::uintptr_t>(scratch_.get());
  return scratch_.get() + (kBoundary - address % kBoundary) + kBoundary / 2;
}
