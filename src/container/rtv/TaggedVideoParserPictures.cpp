// The getters for frames, stored and decoded.
#include <turbojpeg.h>

#include <cstring>

#include "base/Guarded.h"
#include "container/rtv/TaggedVideoParserState.h"
#include "jpeg/ImageGeometry.h"
#include "jpeg/PictureFormat.h"
#include "velmar_logger/velmar_logger.h"
#include "velmar_video/TypeConversion.h"
#include "velmar_video/rtv/TaggedVideoParser.h"

using namespace velmar::detail;

namespace {

constexpr auto& kTag = kTaggedVideoParserTag;

}  // namespace

void TaggedVideoParser::getRawImageRange(unsigned short index, unsigned long& offset,
                                         unsigned int& size, bool useCorruptionCheck,
                                         unsigned short* rIndex) {
  if (checkIndex(index) != RTV_ERR_SUCCESS) return;
  unsigned short chosen = index;
  if (useCorruptionCheck) checkCorruption(index, chosen);
  if (rIndex != nullptr) *rIndex = chosen;
  const frametag03Ver_t tag = tagAt(chosen);
  offset = tag.data_offset;
  size = tag.data_length;
}

ErrorCode_e TaggedVideoParser::getRawImageSize(unsigned short index, unsigned int& size,
                                               bool useCorruptionCheck) {
  if (const auto code = checkIndex(index); code != RTV_ERR_SUCCESS) return code;
  unsigned long offset = 0;
  getRawImageRange(index, offset, size, useCorruptionCheck, nullptr);
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::findBytes(unsigned long offset, unsigned int length,
                                         const unsigned char*& bytes) const {
  if (offset > state_->mFileSize || length > state_->mFileSize - offset) {
    return RTV_ERR_VIDEO_NOT_COMPLETE;
  }
  bytes = state_->mMapAddr.data() + offset;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getRawImage(unsigned short index, unsigned int bufSize,
                                           unsigned char* buf) {
  if (const auto code = checkIndex(index); code != RTV_ERR_SUCCESS) return code;
  unsigned long offset = 0;
  unsigned int length = 0;
  getRawImageRange(index, offset, length, true, nullptr);
  if (length > bufSize) return RTV_ERR_INVALID_PARAMETER;
  if (buf == nullptr) return RTV_ERR_BUFFER_NOT_ALLOCATED;
  const unsigned char* bytes = nullptr;
  if (const auto code = findBytes(offset, length, bytes); code != RTV_ERR_SUCCESS) return code;
  std::memcpy(buf, bytes, length);
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getRawImage(unsigned short index, std::string& out) {
  if (const auto code = checkIndex(index); code != RTV_ERR_SUCCESS) return code;
  unsigned long offset = 0;
  unsigned int length = 0;
  getRawImageRange(index, offset, length, true, nullptr);
  const unsigned char* bytes = nullptr;
  if (const auto code = findBytes(offset, length, bytes); code != RTV_ERR_SUCCESS) return code;
  return guarded(kTag, "getRawImage", RTV_ERR_BUFFER_NOT_ALLOCATED, [&] {
    out.assign(reinterpret_cast<const char*>(bytes), length);
    return RTV_ERR_SUCCESS;
  });
}

tjscalingfactor TaggedVideoParser::getScalingFactor(ScaleFactor_e scale) {
  const auto index = static_cast<std::size_t>(scale);
  return tjSalingFactor[index < tjSalingFactor.size() ? index : 0];
}

bool TaggedVideoParser::getPixelFormat(format_e format, int* pixelFormat) {
  if (format < RTV_FMT_RGB || format > RTV_FMT_GRAY) return false;
  *pixelFormat = tjpfTable[static_cast<std::size_t>(format - RTV_FMT_RGB)];
  return true;
}

bool TaggedVideoParser::getPixelSize(format_e format, int* bytes) {
  int pixelFormat = 0;
  if (!getPixelFormat(format, &pixelFormat)) return false;
  *bytes = tjPixelSize[pixelFormat];
  return true;
}

ErrorCode_e TaggedVideoParser::getImageSizeInBytes(unsigned int& size, format_e format,
                                                   ScaleFactor_e scale, unsigned short cropTop,
                                                   unsigned short cropBottom,
                                                   unsigned short* outWidth,
                                                   unsigned short* outHeight) {
  unsigned short width = 0;
  unsigned short height = 0;
  if (const auto code = getImageResolution(width, height); code != RTV_ERR_SUCCESS) return code;
  int pixelSize = 0;
  if (!getPixelSize(format, &pixelSize)) return RTV_ERR_COLOR_FORMAT_NOT_SUPPROT;
  const ImageGeometry geometry(width, height, getScalingFactor(scale), cropTop, cropBottom,
                               pixelSize);
  if (!geometry.isValid()) return RTV_ERR_INVALID_PARAMETER;
  size = static_cast<unsigned int>(geometry.size());
  if (outWidth != nullptr) *outWidth = static_cast<unsigned short>(geometry.width);
  if (outHeight != nullptr) *outHeight = static_cast<unsigned short>(geometry.rows());
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getImage(unsigned short index, unsigned int size, unsigned char* buf,
                                        format_e format, ScaleFactor_e scale,
                                        unsigned short cropTop, unsigned short cropBottom) {
  if (const auto code = checkIndex(index); code != RTV_ERR_SUCCESS) {
    velmar_logger::e(kTag, "checkIndex fail: index: %u:, ret: %d", index, code);
    return code;
  }
  unsigned short width = 0;
  unsigned short height = 0;
  getImageResolution(width, height);
  int pixelFormat = 0;
  int pixelSize = 0;
  if (!getPixelFormat(format, &pixelFormat) || !getPixelSize(format, &pixelSize)) {
    return RTV_ERR_COLOR_FORMAT_NOT_SUPPROT;
  }
  const ImageGeometry geometry(width, height, getScalingFactor(scale), cropTop, cropBottom,
                               pixelSize);
  if (!geometry.isDecodableTo(size)) return RTV_ERR_INVALID_PARAMETER;
  if (buf == nullptr) return RTV_ERR_BUFFER_NOT_ALLOCATED;

  unsigned short rIndex = index;
  unsigned long offset = 0;
  unsigned int length = 0;
  getRawImageRange(index, offset, length, true, &rIndex);
  const unsigned char* jpeg = nullptr;
  if (const auto code = findBytes(offset, length, jpeg); code != RTV_ERR_SUCCESS) return code;
  const auto code = state_->decoder.decode(jpeg, length, geometry, pixelFormat, buf);
  if (code == VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E) {
    velmar_logger::e(kTag, "tjDecompress2 error: %s, index: %u, r_index: %u\n",
                     state_->decoder.cause(), index, rIndex);
  }
  return velmarErrorCode2RTVErrorCode(code);
}
