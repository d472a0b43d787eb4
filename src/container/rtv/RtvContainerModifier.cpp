#include "velmar_video/rtv/RtvContainerModifier.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "container/rtv/RtvLayout.h"
#include "container/rtv/TaggedVideoParserState.h"
#include "jpeg/JpegHeader.h"
#include "jpeg/TjHandle.h"
#include "velmar_logger/velmar_logger.h"
#include "velmar_video/TypeConversion.h"

using namespace velmar::detail;

namespace {

constexpr char kTag[] = "RtvContainerModifier_TAG";
constexpr unsigned int kRtvMaxJpegSize = 3840 * 2160;

}  // namespace

RtvContainerModifier::RtvContainerModifier(const std::string& path)
    : VelmarVideoFileModifier(path) {}

VELMAR_ERROR_CODE_E RtvContainerModifier::open() {
  return rtvErrorCode2VelmarErrorCode(init(filePath_.c_str()));
}

ErrorCode_e RtvContainerModifier::init(const char* path) {
  return TaggedVideoParser::init(path, {true, kTag});
}

VELMAR_ERROR_CODE_E RtvContainerModifier::close() {
  if (state_ == nullptr || !state_->mMapAddr.isMapped()) return VELMAR_ERROR_CODE_SUCCESS_E;
  const bool isWritten = checkByteOrder() != VELMAR_ERROR_CODE_SUCCESS_E || writeHeader();
  state_->mFileFd.close();
  if (!state_->mMapAddr.unmap()) return static_cast<VELMAR_ERROR_CODE_E>(-1);
  return isWritten ? VELMAR_ERROR_CODE_SUCCESS_E : VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
}

bool RtvContainerModifier::writeHeader() const {
  unsigned char bytes[kRtvHeaderSizeMax];
  const std::size_t size = std::min<std::size_t>(rtvLayout(version_).headerSize, state_->mFileSize);
  std::memcpy(bytes, state_->mMapAddr.data(), size);
  visitRtvHeader(version_, headerOf(version_),
                 [&bytes](unsigned int at, const auto& field, Edited edited) {
                   if (edited == Edited::Yes) put(bytes + at, field);
                 });
  if (state_->mFileFd.writeAt(bytes, size, 0)) return true;
  velmar_logger::e(kTag, "header of %s not written: %s", filePath_.c_str(), std::strerror(errno));
  return false;
}

VELMAR_ERROR_CODE_E RtvContainerModifier::checkEditable() const {
  return isInitialised() ? checkByteOrder() : VELMAR_ERROR_CODE_NOT_INIT_E;
}

// Edits are written in host order, which would break a file of the other order.
VELMAR_ERROR_CODE_E RtvContainerModifier::checkByteOrder() const {
  const bool fileIsBigEndian = (headerOf(version_).flags & 1) != 0;
  return isInitialised() && fileIsBigEndian != isCPUBigEndian()
             ? VELMAR_ERROR_CODE_INVALID_PARAMETER_E
             : VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerModifier::modifyCameraID(const unsigned char* id,
                                                         unsigned int length) {
  if (const auto code = checkByteOrder(); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  if (id == nullptr && length > 0) return VELMAR_ERROR_CODE_NULL_POINTER_E;
  if (length != kRtvDeviceIdSize) {
    velmar_logger::w(kTag, "Device id array size is %u, should be %u", length, kRtvDeviceIdSize);
  }
  std::copy_n(id, std::min(length, kRtvDeviceIdSize), headerOf(version_).device_id);
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerModifier::modifyUndistorted(bool undistorted) {
  if (const auto code = checkByteOrder(); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  unsigned int flags = 0;
  getTaggingFlags(flags);
  if (undistorted) {
    velmar_logger::i(kTag, "set undistorted true");
    flags |= kRtvUndistortedFlag;
  } else {
    velmar_logger::i(kTag, "set undistorted false");
    flags &= ~kRtvUndistortedFlag;
  }
  setTaggingFlags(flags);
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

void RtvContainerModifier::setTaggingFlags(unsigned int flags) {
  headerOf(version_ == RTV_VER_04 ? RTV_VER_04 : RTV_VER_03).tagging_flags = flags;
}

VELMAR_ERROR_CODE_E RtvContainerModifier::modifyStartTime(unsigned long& startTime) {
  if (const auto code = checkByteOrder(); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  headerOf(version_).start_time = startTime / kMicrosecondsPerMillisecond;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerModifier::modifyTimestamp(unsigned int index,
                                                          unsigned long& timestamp) {
  const header_t& header = headerOf(version_);
  if (index >= header.frames_count) {
    velmar_logger::e(kTag, "index out of range");
    return VELMAR_ERROR_CODE_OUT_RANGE_E;
  }
  if (const auto code = checkEditable(); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  // By the start time as it has been changed so far.
  const auto timeFlag =
      static_cast<int>(timestamp / kMicrosecondsPerMillisecond - header.start_time);
  if (state_->mFileFd.writeAt(&timeFlag, sizeof timeFlag, rtvLayout(version_).tagAt(index))) {
    return VELMAR_ERROR_CODE_SUCCESS_E;
  }
  velmar_logger::e(kTag, "time of frame %u not written: %s", index, std::strerror(errno));
  return VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
}

VELMAR_ERROR_CODE_E RtvContainerModifier::modifyArrivalTime(unsigned int /*index*/,
                                                            unsigned long& /*time*/) {
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerModifier::modifyCameraParams(const std::string& /*params*/) {
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerModifier::modifyFrameIndexDataChecksum(
    const std::string& /*checksum*/) {
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerModifier::modifyExtendedInfo(const std::string& /*info*/) {
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E RtvContainerModifier::correctVideoResolution() {
  unsigned short count = 0;
  getFramesCount(count);
  if (count == 0) return VELMAR_ERROR_CODE_OUT_RANGE_E;
  if (const auto code = checkEditable(); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  unsigned long offset = 0;
  unsigned int length = 0;
  const unsigned char* jpeg = nullptr;
  getRawImageRange(0, offset, length, true, nullptr);
  if (length > kRtvMaxJpegSize || findBytes(offset, length, jpeg) != RTV_ERR_SUCCESS) {
    return VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E;
  }
  const TjHandle decompressor(tjInitDecompress());
  const auto size = readJpegSize(decompressor.get(), jpeg, length);
  if (!size) return VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E;
  headerOf(version_).width = static_cast<unsigned short>(size->width);
  headerOf(version_).height = static_cast<unsigned short>(size->height);
  return VELMAR_ERROR_CODE_SUCCESS_E;
}
