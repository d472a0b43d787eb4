#include "container/img/ImgContainerCreater.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "base/Guarded.h"
#include "base/HexText.h"
#include "base/PublishFile.h"
#include "velmar_logger/velmar_logger.h"

using namespace velmar::detail;

namespace {

constexpr char kTag[] = "ImgContainerCreater_TAG";

}  // namespace

ImgContainerCreater::ImgContainerCreater(const std::string& path)
    : VelmarVideoFileCreater(path),
      temporaryPath_(path + kTemporaryEnding),
      journal_(temporaryPath_ + kJournalEnding) {}

ImgContainerCreater::~ImgContainerCreater() {
  if (file_.isOpen()) ImgContainerCreater::close();
}

VELMAR_ERROR_CODE_E ImgContainerCreater::open() {
  // An object writes one file, and must not truncate what it has written.
  if (file_.isOpen() || writtenBytes_ != 0) return VELMAR_ERROR_CODE_DUPLICATE_INIT_E;
  if (filePath_.empty()) {
    velmar_logger::e(kTag, "filePath_ is empty");
    return VELMAR_ERROR_CODE_INVALID_FILE_NAME_E;
  }
  // Locked until close(). Readable as well: close() moves frames.
  file_ = claimFile(temporaryPath_, 0666);
  if (!file_.isOpen()) {
    velmar_logger::e(kTag, "open filePath_ = %s error", filePath_.c_str());
    return VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E;
  }
  writeFailed_ = false;
  const std::uint64_t placeholder = htonll(writtenBytes_);
  if (!imgContainerCreaterWrite(&placeholder, sizeof placeholder)) {
    ::unlink(temporaryPath_.c_str());
    unclaimFile(file_);
    return VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
  }
  journal_.open();
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

void ImgContainerCreater::setUndistortFlags() { metaData_.undistorted = true; }

// Keeps the old value if there is no memory for the new one; close() reports that.
template <typename MakeText>
void ImgContainerCreater::setText(const char* operation, std::string& field, MakeText makeText) {
  textLost_ |= !guarded(kTag, operation, false, [&] {
    field = makeText();
    return true;
  });
}

void ImgContainerCreater::setDeviceId(const unsigned char* id, unsigned int length) {
  if (id == nullptr && length > 0) return;
  setText("setDeviceId", metaData_.cameraId, [&] { return bytesToHex(id, length); });
}

void ImgContainerCreater::setVideoResolution(unsigned short width, unsigned short height) {
  metaData_.width = width;
  metaData_.height = height;
}

void ImgContainerCreater::setFrameFormat(VELMAR_FORMAT_E format) { metaData_.format = format; }

void ImgContainerCreater::setFrameCodec(VELMAR_CODEC_E codec) { metaData_.codec = codec; }

void ImgContainerCreater::setCameraParams(const std::string& params) {
  setText("setCameraParams", metaData_.cameraParams, [&] { return params; });
}

void ImgContainerCreater::setExtendedInfo(const std::string& info) {
  setText("setExtendedInfo", metaData_.extendedInfo, [&] { return info; });
}

bool ImgContainerCreater::addFrame(const std::string& jpegData, unsigned long sensorTime,
                                   unsigned long arrivedTime) {
  return addFrameBytes(jpegData.data(), jpegData.size(), sensorTime, arrivedTime);
}

bool ImgContainerCreater::addFrame(const unsigned char* jpegData, unsigned int size,
                                   unsigned long sensorTime, unsigned long arrivedTime) {
  if (jpegData == nullptr && size > 0) {
    velmar_logger::e(kTag, "frame data is null");
    return false;
  }
  return addFrameBytes(reinterpret_cast<const char*>(jpegData), size, sensorTime, arrivedTime);
}

bool ImgContainerCreater::addFrameBytes(const char* data, std::size_t size,
                                        unsigned long sensorTime, unsigned long arrivedTime) {
  // Writing an empty frame would succeed even without a file.
  if (!file_.isOpen()) {
    velmar_logger::e(kTag, "imgContainerCreaterWrite error");
    return false;
  }
  if (metaData_.framesCount == std::numeric_limits<std::uint32_t>::max()) {
    velmar_logger::e(kTag, "frame count is out of range");
    return false;
  }
  const FrameIndex record{sensorTime, arrivedTime, writtenBytes_, static_cast<std::uint32_t>(size)};
  // The record comes first, since bytes without a record would shift the frames that close() moves.
  try {
    frameIndex_.push_back(record.swapped());
  } catch (const std::bad_alloc&) {
    velmar_logger::e(kTag, "no memory for the frame index");
    return false;
  }
  if (!imgContainerCreaterWrite(data, size)) {
    velmar_logger::e(kTag, "imgContainerCreaterWrite error");
    frameIndex_.pop_back();
    return false;
  }
  journal_.append(frameIndex_.back());
  ++metaData_.framesCount;
  return true;
}

bool ImgContainerCreater::imgContainerCreaterWrite(const void* data, std::size_t length) {
  writeFailed_ = writeFailed_ || !file_.writeAt(data, length, writtenBytes_);
  if (writeFailed_) return false;
  writtenBytes_ += length;
  return true;
}

bool ImgContainerCreater::adjustmentFrameAndIndex() {
  const std::uint64_t indexSize = frameIndex_.size() * sizeof(FrameIndex);
  // Also refuses a file without frames.
  if (indexSize >= writtenBytes_ - kFrameIndexStart) return false;

  const std::uint64_t movedSize = relocateFirstFrames(indexSize);
  // The frames are on the disk at their new place, and so is a journal that leads there, before the
  // index overwrites the old place: whenever the recorder is killed or the power fails, the journal
  // leads to every frame.
  if (!appendFirstFrames(movedSize) || !file_.sync() || !journal_.replace(frameIndex_))
    return false;
  return file_.writeAt(frameIndex_.data(), indexSize, kFrameIndexStart);
}

// Gives as many of the first frames as the index needs room for new offsets behind the last one.
// Answers their size in bytes.
std::uint64_t ImgContainerCreater::relocateFirstFrames(std::uint64_t indexSize) {
  std::uint64_t movedSize = 0;
  for (FrameIndex& record : frameIndex_) {
    record.frameOffset = htonll(writtenBytes_ + movedSize);
    movedSize += __builtin_bswap32(record.frameSize);
    if (movedSize >= indexSize) break;
  }
  return movedSize;
}

// Copies the first `size` bytes of frames behind the last one, in pieces: together they are as
// large as the index, which already takes memory.
bool ImgContainerCreater::appendFirstFrames(std::uint64_t size) {
  constexpr std::uint64_t kPieceSize = 1 << 16;
  std::vector<char> piece(std::min(size, kPieceSize));
  for (std::uint64_t done = 0; done < size;) {
    const std::uint64_t length = std::min<std::uint64_t>(size - done, piece.size());
    if (!file_.readAt(piece.data(), length, kFrameIndexStart + done) ||
        !imgContainerCreaterWrite(piece.data(), length)) {
      return false;
    }
    done += length;
  }
  return true;
}

VELMAR_ERROR_CODE_E ImgContainerCreater::close() {
  if (!file_.isOpen()) return VELMAR_ERROR_CODE_NOT_INIT_E;
  VELMAR_ERROR_CODE_E result = VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
  try {
    if (!hasName(file_, temporaryPath_)) {
      velmar_logger::e(kTag, "%s is another file now", temporaryPath_.c_str());
    } else if (frameIndex_.empty()) {
      journal_.remove();
      result = finish();
    } else if (!writeFailed_) {
      result = finish();
    }
  } catch (...) {
    velmar_logger::e(kTag, "build json throw error");
  }
  if (result == VELMAR_ERROR_CODE_SUCCESS_E) result = publish();
  journal_.close();
  unclaimFile(file_);
  if (result == VELMAR_ERROR_CODE_SUCCESS_E && textLost_) {
    result = VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E;
  }
  return result;
}

// Writes the index, the metadata and the metadata's offset.
VELMAR_ERROR_CODE_E ImgContainerCreater::finish() {
  if (!adjustmentFrameAndIndex()) {
    velmar_logger::e(kTag, "adjustmentFrameAndIndex error");
    return VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
  }
  std::string text;
  if (!metaData_.toText(text)) {
    velmar_logger::e(kTag, "reader.parse error");
    return VELMAR_ERROR_CODE_INVALID_PARAMETER_E;
  }
  // Not counted: writtenBytes_ stays the offset at which the text begins.
  const std::uint64_t metaDataOffset = htonll(writtenBytes_);
  if (file_.writeAt(text.data(), text.size(), writtenBytes_) &&
      file_.writeAt(&metaDataOffset, sizeof metaDataOffset, 0)) {
    return VELMAR_ERROR_CODE_SUCCESS_E;
  }
  velmar_logger::e(kTag, "metadata of %s not written", temporaryPath_.c_str());
  return VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
}

VELMAR_ERROR_CODE_E ImgContainerCreater::publish() {
  if (!file_.sync()) {
    velmar_logger::e(kTag, "fdatasync %s error: %s", temporaryPath_.c_str(), std::strerror(errno));
    return VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
  }
  // The file has its index now. Once it is renamed, the journal's name may be another recording's.
  journal_.remove();
  if (publishFile(file_, temporaryPath_, filePath_)) return VELMAR_ERROR_CODE_SUCCESS_E;
  velmar_logger::e(kTag, "rename %s to %s error: %s", temporaryPath_.c_str(), filePath_.c_str(),
                   std::strerror(errno));
  return VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
}
