#include "container/img/ImgContainerModifier.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include "base/FileDescriptor.h"
#include "base/Guarded.h"
#include "base/HexText.h"
#include "container/img/MetaDataBlock.h"
#include "jpeg/JpegHeader.h"
#include "jpeg/TjHandle.h"
#include "velmar_logger/velmar_logger.h"

using namespace velmar::detail;

namespace {

constexpr char kTag[] = "ImgContainerModifier_Tag";

}  // namespace

ImgContainerModifier::ImgContainerModifier(const std::string& path)
    : VelmarVideoFileModifier(path) {}

VELMAR_ERROR_CODE_E ImgContainerModifier::open() {
  if (const auto code = checkOpening(filePath_, kTag); code != VELMAR_ERROR_CODE_SUCCESS_E)
    return code;
  const auto code = analyse(openMap(), kTag);
  if (code != VELMAR_ERROR_CODE_SUCCESS_E) file_.close();
  return code;
}

VELMAR_ERROR_CODE_E ImgContainerModifier::openMap() { return mapFile(filePath_, O_RDWR, file_); }

VELMAR_ERROR_CODE_E ImgContainerModifier::close() {
  if (!mapAddr_.isMapped()) return VELMAR_ERROR_CODE_NOT_INIT_E;
  const auto result =
      guarded(kTag, "close", VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E, [this] { return finish(); });
  mapAddr_.unmap();
  file_.close();
  analysed_ = false;
  metaDataChanged_ = false;
  return result;
}

VELMAR_ERROR_CODE_E ImgContainerModifier::finish() {
  std::string oldText;
  if (metaDataChanged_) {
    const auto* text = reinterpret_cast<const char*>(mapAddr_.data()) + metaDataOffset_;
    oldText.assign(text, fileLength_ - metaDataOffset_);
  }
  const bool unmapped = mapAddr_.unmap();
  if (metaDataChanged_) {
    if (const auto code = rewriteMetaData(oldText); code != VELMAR_ERROR_CODE_SUCCESS_E)
      return code;
  }
  return unmapped ? VELMAR_ERROR_CODE_SUCCESS_E : VELMAR_ERROR_CODE_FILE_MMAP_FAIL_E;
}

VELMAR_ERROR_CODE_E ImgContainerModifier::rewriteMetaData(const std::string& oldText) const {
  const FileDescriptor file(filePath_, O_RDWR);
  struct stat status {};
  // If it is another file, or has another length, the new text could overwrite frames.
  if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || status.st_dev != openedFile_.st_dev ||
      status.st_ino != openedFile_.st_ino ||
      static_cast<unsigned long>(status.st_size) != fileLength_) {
    velmar_logger::e(kTag, "oen file error = %s", filePath_.c_str());
    return VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E;
  }
  std::string newText;
  if (!metaData_.toText(newText)) {
    velmar_logger::e(kTag, "reader.parse error");
    return VELMAR_ERROR_CODE_INVALID_PARAMETER_E;
  }
  const int cause = replaceMetaDataBlock(file, metaDataOffset_, oldText, newText);
  if (cause != 0) {
    velmar_logger::e(kTag, "metadata of %s not written: %s", filePath_.c_str(),
                     std::strerror(cause));
    return VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
  }
  if (newText.size() < oldText.size() &&
      ::ftruncate(file.get(), static_cast<off_t>(metaDataOffset_ + newText.size())) != 0) {
    velmar_logger::e(kTag, "truncate error\n");
    return VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
  }
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

template <typename T, typename MakeValue>
VELMAR_ERROR_CODE_E ImgContainerModifier::modifyMetaData(T ImgMetaData::*field,
                                                         MakeValue makeValue) {
  if (!analysed_) return VELMAR_ERROR_CODE_NOT_INIT_E;
  return guarded(kTag, "modifyMetaData", VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E, [&] {
    metaData_.*field = makeValue();
    metaDataChanged_ = true;
    return VELMAR_ERROR_CODE_SUCCESS_E;
  });
}

VELMAR_ERROR_CODE_E ImgContainerModifier::modifyCameraID(const unsigned char* id,
                                                         unsigned int length) {
  if (id == nullptr && length > 0) return VELMAR_ERROR_CODE_NULL_POINTER_E;
  return modifyMetaData(&ImgMetaData::cameraId, [&] { return bytesToHex(id, length); });
}

VELMAR_ERROR_CODE_E ImgContainerModifier::modifyUndistorted(bool undistorted) {
  return modifyMetaData(&ImgMetaData::undistorted, [&] { return undistorted; });
}

VELMAR_ERROR_CODE_E ImgContainerModifier::modifyCameraParams(const std::string& params) {
  return modifyMetaData(&ImgMetaData::cameraParams, [&] { return params; });
}

VELMAR_ERROR_CODE_E ImgContainerModifier::modifyFrameIndexDataChecksum(
    const std::string& checksum) {
  return modifyMetaData(&ImgMetaData::frameIndexDataChecksum, [&] { return checksum; });
}

VELMAR_ERROR_CODE_E ImgContainerModifier::modifyExtendedInfo(const std::string& info) {
  return modifyMetaData(&ImgMetaData::extendedInfo, [&] { return info; });
}

VELMAR_ERROR_CODE_E ImgContainerModifier::modifyTimestamp(unsigned int index,
                                                          unsigned long& timestamp) {
  velmar_logger::i(kTag, " modifyTimestamp usec = %llu",
                   static_cast<unsigned long long>(timestamp));
  if (const auto code = checkFrame(index); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  const auto code = storeTime(index, offsetof(FrameIndex, sensorTime), timestamp);
  if (code == VELMAR_ERROR_CODE_SUCCESS_E) frameIndex_[index].sensorTime = timestamp;
  return code;
}

VELMAR_ERROR_CODE_E ImgContainerModifier::modifyArrivalTime(unsigned int index,
                                                            unsigned long& time) {
  velmar_logger::i(kTag, " modifyArrivalTime usec = %llu", static_cast<unsigned long long>(time));
  if (const auto code = checkFrame(index); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  const auto code = storeTime(index, offsetof(FrameIndex, arrivedTime), time);
  if (code == VELMAR_ERROR_CODE_SUCCESS_E) frameIndex_[index].arrivedTime = time;
  return code;
}

VELMAR_ERROR_CODE_E ImgContainerModifier::storeTime(std::size_t index, std::size_t fieldOffset,
                                                    unsigned long time) {
  const unsigned long bytes = htonll(time);
  const std::uint64_t at = kFrameIndexStart + sizeof(FrameIndex) * index + fieldOffset;
  if (file_.writeAt(&bytes, sizeof bytes, at)) return VELMAR_ERROR_CODE_SUCCESS_E;
  velmar_logger::e(kTag, "time of frame %zu not written: %s", index, std::strerror(errno));
  return VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
}

// The format has no start time.
VELMAR_ERROR_CODE_E ImgContainerModifier::modifyStartTime(unsigned long& /*startTime*/) {
  return analysed_ ? VELMAR_ERROR_CODE_SUCCESS_E : VELMAR_ERROR_CODE_NOT_INIT_E;
}

VELMAR_ERROR_CODE_E ImgContainerModifier::correctVideoResolution() {
  if (frameIndex_.empty()) return VELMAR_ERROR_CODE_OUT_RANGE_E;
  if (const auto code = checkFrame(0); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  const FrameIndex& record = frameIndex_[0];
  if (checkFrameBytes(record) != VELMAR_ERROR_CODE_SUCCESS_E) {
    return VELMAR_ERROR_CODE_STATUS_FILE_CANNOT_READ_E;
  }
  const TjHandle decompressor(tjInitDecompress());
  const auto size = readJpegSize(decompressor.get(), frameBytes(record), record.frameSize);
  if (!size) return VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E;
  if (size->width == metaData_.width && size->height == metaData_.height) {
    return VELMAR_ERROR_CODE_SUCCESS_E;
  }
  metaData_.width = static_cast<std::uint16_t>(size->width);
  metaData_.height = static_cast<std::uint16_t>(size->height);
  metaDataChanged_ = true;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerModifier::getRawImage(unsigned int index, unsigned int size,
                                                      unsigned char* buffer) {
  return copyFrame(index, size, buffer);
}
