#include "jpeg/JpegDecoder.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

namespace velmar::detail {

namespace {

constexpr unsigned int kLargestScale = 2;  // TurboJPEG enlarges small frames up to this

}  // namespace

JpegDecoder::JpegDecoder(int flags) : flags_(flags), tjHandle_(tjInitDecompress()) {}

VELMAR_ERROR_CODE_E JpegDecoder::decode(const unsigned char* jpeg, unsigned long jpegSize,
                                        const ImageGeometry& geometry, int pixelFormat,
                                        unsigned char* out) {
  const auto code = decodeFrame(jpeg, jpegSize, geometry, pixelFormat, out);
  // The next frame, if it has no tables of its own, would use those of the refused one.
  if (code != VELMAR_ERROR_CODE_SUCCESS_E) tjHandle_.reset(tjInitDecompress());
  return code;
}

VELMAR_ERROR_CODE_E JpegDecoder::decodeFrame(const unsigned char* jpeg, unsigned long jpegSize,
                                             const ImageGeometry& geometry, int pixelFormat,
                                             unsigned char* out) {
  JpegSize size{};
  if (!readSize(jpeg, jpegSize, size)) return VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E;
  if (geometry.top + geometry.bottom == 0) {
    return decompress(jpeg, jpegSize, geometry, pixelFormat, out);
  }

  // The recording's header may name far more rows than the frame can fill.
  const unsigned int reached =
      std::min(geometry.fullHeight, kLargestScale * static_cast<unsigned int>(size.height));
  unsigned char* whole = scratch(reached * geometry.pitch());
  if (whole == nullptr) return VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E;
  const unsigned int kept =
      reached > geometry.top ? std::min(reached - geometry.top, geometry.rows()) : 0;
  const std::uint64_t skippedBytes = (reached > geometry.top ? geometry.top : 0) * geometry.pitch();
  const std::uint64_t keptBytes = kept * geometry.pitch();
  // Parts that the decoder does not fill must not show an earlier frame.
  if (size.width != geometry.sourceWidth || size.height != geometry.sourceHeight) {
    std::memset(whole + skippedBytes, 0, keptBytes);
  }
  if (const auto code = decompress(jpeg, jpegSize, geometry, pixelFormat, whole);
      code != VELMAR_ERROR_CODE_SUCCESS_E)
    return code;
  std::memcpy(out, whole + skippedBytes, keptBytes);
  std::memset(out + keptBytes, 0, geometry.size() - keptBytes);
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E JpegDecoder::decompress(const unsigned char* jpeg, unsigned long jpegSize,
                                            const ImageGeometry& geometry, int pixelFormat,
                                            unsigned char* out) {
  if (tjDecompress2(tjHandle_.get(), jpeg, jpegSize, out, static_cast<int>(geometry.width),
                    static_cast<int>(geometry.pitch()), static_cast<int>(geometry.fullHeight),
                    pixelFormat, flags_) == 0) {
    return VELMAR_ERROR_CODE_SUCCESS_E;
  }
  cause_ = tjGetErrorStr();
  return VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E;
}

bool JpegDecoder::readSize(const unsigned char* jpeg, unsigned long jpegSize, JpegSize& size) {
  const auto found = readAnyJpegSize(tjHandle_.get(), jpeg, jpegSize, cause_);
  if (!found) return false;
  size = *found;
  if (isPlausible(size, jpeg, jpegSize)) return true;
  cause_ = "JPEG data far too short for the picture's size";
  return false;
}

// TurboJPEG writes rows that begin on a 32-byte boundary past the cache, so copying them would read
// them from memory again. Rows that begin halfway between two boundaries stay in the cache.
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

}  // namespace velmar::detail
