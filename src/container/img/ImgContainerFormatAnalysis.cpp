#include "container/img/ImgContainerFormatAnalysis.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "base/FileDescriptor.h"
#include "base/Guarded.h"
#include "velmar_logger/velmar_logger.h"

using namespace velmar::detail;

namespace {

constexpr char kTag[] = "ImgContainerFormatAnalysis_Tag";

unsigned long long forLog(unsigned long value) { return value; }

}  // namespace

bool ImgContainerFormatAnalysis::getLength(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0 || status.st_size == 0) return false;
  fileLength_ = static_cast<unsigned long>(status.st_size);
  return true;
}

bool ImgContainerFormatAnalysis::readFrameIndex() {
  const std::size_t count = metaData_.framesCount;
  if (fileLength_ < kFrameIndexStart ||
      count > (fileLength_ - kFrameIndexStart) / sizeof(FrameIndex)) {
    velmar_logger::e(kTag, "frame index of %zu records reaches past the file's %llu bytes", count,
                     forLog(fileLength_));
    return false;
  }
  const auto* records = reinterpret_cast<const FrameIndex*>(mapAddr_.data() + kFrameIndexStart);
  const bool hasRoom = guarded(kTag, "readFrameIndex", false, [&] {
    frameIndex_.resize(count);
    return true;
  });
  if (!hasRoom) return false;
  for (std::size_t i = 0; i < count; ++i) {
    FrameIndex& record = frameIndex_[i];
    record = records[i].swapped();
    if (record.frameOffset < kFrameIndexStart || record.frameOffset >= metaDataOffset_) {
      velmar_logger::e(kTag, "checkIndex frame index error %llu : %llu", forLog(record.frameOffset),
                       forLog(metaDataOffset_));
      frameIndex_.resize(i);
      return false;
    }
  }
  return true;
}

bool ImgContainerFormatAnalysis::readMetaDataOffset() {
  unsigned long stored = 0;
  if (fileLength_ >= sizeof stored) std::memcpy(&stored, mapAddr_.data(), sizeof stored);
  metaDataOffset_ = ntohll(stored);
  if (metaDataOffset_ >= kFrameIndexStart && metaDataOffset_ <= fileLength_) return true;
  velmar_logger::e(kTag, "metaDataOffset_ fileLength_ %llu : %llu", forLog(metaDataOffset_),
                   forLog(fileLength_));
  return false;
}

bool ImgContainerFormatAnalysis::readMetaData() {
  constexpr char kLengths[] = "fileLength_ = %llu ,metaDataOffset_ = %llu, metaDataLength = %llu";
  const unsigned long length = fileLength_ - metaDataOffset_;
  if (length < 2) {
    velmar_logger::e(kTag, kLengths, forLog(fileLength_), forLog(metaDataOffset_), forLog(length));
    return false;
  }
  velmar_logger::d(kTag, kLengths, forLog(fileLength_), forLog(metaDataOffset_), forLog(length));
  return guarded(kTag, "readMetaData", false, [&] {
    const std::string text(reinterpret_cast<const char*>(mapAddr_.data()) + metaDataOffset_,
                           length);
    velmar_logger::d(kTag, "cMetaData = %s", text.c_str());
    return metaData_.jsonTo(text.c_str());
  });
}

bool ImgContainerFormatAnalysis::checkIndex(unsigned int index) {
  return index <= frameIndex_.size();
}

VELMAR_ERROR_CODE_E ImgContainerFormatAnalysis::checkFileAccess(const std::string& path) {
  if (path.empty()) return VELMAR_ERROR_CODE_INVALID_FILE_NAME_E;
  if (::access(path.c_str(), F_OK) != 0) return VELMAR_ERROR_CODE_FILE_NOT_EXIST_E;
  if (::access(path.c_str(), R_OK) != 0) return VELMAR_ERROR_CODE_STATUS_FILE_CANNOT_READ_E;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

VELMAR_ERROR_CODE_E ImgContainerFormatAnalysis::openMap(const std::string& path) {
  FileDescriptor file;
  return mapFile(path, O_RDONLY, file);
}

VELMAR_ERROR_CODE_E ImgContainerFormatAnalysis::mapFile(const std::string& path, int flags,
                                                        FileDescriptor& file) {
  if (!getLength(path)) return VELMAR_ERROR_CODE_FILE_SIZE_IS_ZERO_E;
  file = FileDescriptor(path, flags);
  if (!file.isOpen()) return VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E;
  // Another file may have got the path meanwhile.
  if (::fstat(file.get(), &openedFile_) != 0) return VELMAR_ERROR_CODE_FILE_MMAP_FAIL_E;
  fileLength_ = static_cast<unsigned long>(openedFile_.st_size);
  return mapAddr_.map(file.get(), fileLength_) ? VELMAR_ERROR_CODE_SUCCESS_E
                                               : VELMAR_ERROR_CODE_FILE_MMAP_FAIL_E;
}

VELMAR_ERROR_CODE_E ImgContainerFormatAnalysis::checkOpening(const std::string& path,
                                                             const char* tag) {
  if (analysed_) return VELMAR_ERROR_CODE_DUPLICATE_INIT_E;
  forget();  // an earlier file may have left values
  const auto code = checkFileAccess(path);
  if (code != VELMAR_ERROR_CODE_SUCCESS_E) velmar_logger::e(tag, "checkFileAccess error");
  return code;
}

VELMAR_ERROR_CODE_E ImgContainerFormatAnalysis::analyse(VELMAR_ERROR_CODE_E mapped,
                                                        const char* tag) {
  if (mapped != VELMAR_ERROR_CODE_SUCCESS_E) {
    velmar_logger::e(tag, "openMap error");
    return mapped;
  }
  const char* failed = !readMetaDataOffset() ? "readMetaDataOffset error"
                       : !readMetaData()     ? "readMetaData error"
                       : !readFrameIndex()   ? "readFrameIndex error"
                                             : nullptr;
  if (failed != nullptr) {
    velmar_logger::e(tag, "%s", failed);
    forget();
    return VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
  }
  analysed_ = true;
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

void ImgContainerFormatAnalysis::forget() {
  mapAddr_.unmap();
  frameIndex_ = {};
  metaDataOffset_ = 0;
  fileLength_ = 0;
  metaData_ = {};
}

VELMAR_ERROR_CODE_E ImgContainerFormatAnalysis::checkFrame(unsigned int index) {
  if (!checkIndex(index)) return VELMAR_ERROR_CODE_OUT_RANGE_E;
  if (!analysed_) return VELMAR_ERROR_CODE_NOT_INIT_E;
  return index < frameIndex_.size() ? VELMAR_ERROR_CODE_SUCCESS_E : VELMAR_ERROR_CODE_OUT_RANGE_E;
}

VELMAR_ERROR_CODE_E ImgContainerFormatAnalysis::checkFrameBytes(const FrameIndex& record) const {
  return record.frameSize <= fileLength_ - record.frameOffset
             ? VELMAR_ERROR_CODE_SUCCESS_E
             : VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
}

VELMAR_ERROR_CODE_E ImgContainerFormatAnalysis::copyFrame(unsigned int index, unsigned int size,
                                                          unsigned char* buffer) {
  if (const auto code = checkFrame(index); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  const FrameIndex& record = frameIndex_[index];
  if (size < record.frameSize) return VELMAR_ERROR_CODE_INVALID_PARAMETER_E;
  if (record.frameSize == 0) return VELMAR_ERROR_CODE_SUCCESS_E;
  if (buffer == nullptr) return VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E;
  if (const auto code = checkFrameBytes(record); code != VELMAR_ERROR_CODE_SUCCESS_E) return code;
  std::memcpy(buffer, frameBytes(record), record.frameSize);
  return VELMAR_ERROR_CODE_SUCCESS_E;
}
