#include "container/img/ImgContainerCreater.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "common/Guarded.h"
#include "common/HexText.h"
#include "common/PublishFile.h"
#include "velmar_logger/velmar_logger.h"

namespace {

constexpr char kTag[] = "ImgContainerCreater_TAG";

const char* bytesOf(const std::uint64_t& value) { return reinterpret_cast<const char*>(&value); }

}  // namespace

ImgContainerCreater::ImgContainerCreater(const std::string& path)
    : VelmarVideoFileCreater(path),
      temporaryPath_(path + ".tmp"),
      journal_(temporaryPath_ + ".index") {
  stream_.rdbuf()->pubsetbuf(nullptr, 0);
}

ImgContainerCreater::~ImgContainerCreater() {
  if (stream_.is_open()) ImgContainerCreater::close();
}

VELMAR_ERROR_CODE_E ImgContainerCreater::open() {
  // One object writes one file: what is written already must not be truncated.
  if (stream_.is_open() || writtenBytes_ != 0) return VELMAR_ERROR_CODE_DUPLICATE_INIT_E;
  if (filePath_.empty()) {
    velmar_logger::e(kTag, "filePath_ is empty");
    return VELMAR_ERROR_CODE_INVALID_FILE_NAME_E;
  }
  const bool isOpen = guarded(kTag, "open", false, [this] {
    stream_.open(temporaryPath_, std::ios::out | std::ios::trunc | std::ios::binary);
    return stream_.good();
  });
  if (!isOpen) {
    stream_.close();  // without memory for its buffer it is open all the same
    velmar_logger::e(kTag, "open filePath_ = %s error", filePath_.c_str());
    return VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E;
  }
  const std::uint64_t placeholder = htonll(writtenBytes_);
  if (!imgContainerCreaterWrite(bytesOf(placeholder), sizeof placeholder)) {
    return VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
  }
  journal_.open();
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

void ImgContainerCreater::setUndistortFlags() { metaData_.undistorted = true; }

// The old value stays whole where there is no memory for the new one; close() tells.
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
  // An empty write would succeed even so.
  if (!stream_.is_open()) {
    velmar_logger::e(kTag, "imgContainerCreaterWrite error");
    return false;
  }
  if (metaData_.framesCount == std::numeric_limits<std::uint32_t>::max()) {
    velmar_logger::e(kTag, "frame count is out of range");
    return false;
  }
  const FrameIndex record{sensorTime, arrivedTime, writtenBytes_, static_cast<std::uint32_t>(size)};
  // The record comes first: bytes without one would shift the frames that close() moves.
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

bool ImgContainerCreater::imgContainerCreaterWrite(const char* data, std::size_t length) {
  if (!stream_.write(data, static_cast<std::streamsize>(length)).good()) return false;
  writtenBytes_ += length;
  return true;
}

bool ImgContainerCreater::adjustmentFrameAndIndex() {
  const std::uint64_t indexSize = frameIndex_.size() * sizeof(FrameIndex);
  // Also refuses a file without frames.
  if (indexSize >= writtenBytes_ - kFrameIndexStart) return false;

  const std::uint64_t movedSize = relocateFirstFrames(indexSize);
  // The frames go to their new place, on the disk, and the journal says so, before the index covers
  // the old one: whenever the recorder is killed, the journal leads to every frame.
  stream_.seekp(0, std::ios::end);
  if (!appendFirstFrames(movedSize) || syncFile(temporaryPath_) != 0) return false;
  journal_.replace(frameIndex_);
  stream_.seekp(kFrameIndexStart);
  stream_.write(reinterpret_cast<const char*>(frameIndex_.data()),
                static_cast<std::streamsize>(indexSize));
  stream_.seekp(0, std::ios::end);
  return stream_.good();
}

/// Gives the first frames their new offsets behind the last one: as many as make room for the
/// index. Their size in bytes.
std::uint64_t ImgContainerCreater::relocateFirstFrames(std::uint64_t indexSize) {
  std::uint64_t movedSize = 0;
  for (FrameIndex& record : frameIndex_) {
    record.frameOffset = htonll(writtenBytes_ + movedSize);
    movedSize += __builtin_bswap32(record.frameSize);
    if (movedSize >= indexSize) break;
  }
  return movedSize;
}

/// Copies the first `size` bytes of frames behind the last, by pieces: together they are as large
/// as the index, which is in memory already.
bool ImgContainerCreater::appendFirstFrames(std::uint64_t size) {
  constexpr std::uint64_t kPieceSize = 1 << 16;
  std::vector<char> piece(std::min(size, kPieceSize));
  std::ifstream input(temporaryPath_, std::ios::binary);
  input.seekg(kFrameIndexStart);
  while (size > 0) {
    const std::uint64_t length = std::min<std::uint64_t>(size, piece.size());
    input.read(piece.data(), static_cast<std::streamsize>(length));
    if (!input.good() || !imgContainerCreaterWrite(piece.data(), length)) return false;
    size -= length;
  }
  return true;
}

VELMAR_ERROR_CODE_E ImgContainerCreater::close() {
  if (!stream_.is_open()) return VELMAR_ERROR_CODE_NOT_INIT_E;
  VELMAR_ERROR_CODE_E result = VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
  try {
    if (stream_.flush().good()) result = finish();
  } catch (...) {
    velmar_logger::e(kTag, "build json throw error");
  }
  stream_.close();
  journal_.close();
  if (result == VELMAR_ERROR_CODE_SUCCESS_E) result = publish();
  if (result == VELMAR_ERROR_CODE_SUCCESS_E || frameIndex_.empty()) journal_.remove();
  if (result == VELMAR_ERROR_CODE_SUCCESS_E && textLost_) {
    result = VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E;
  }
  return result;
}

/// Index, metadata and the metadata's offset.
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
  stream_ << text;
  const std::uint64_t metaDataOffset = htonll(writtenBytes_);
  stream_.seekp(0);
  imgContainerCreaterWrite(bytesOf(metaDataOffset), sizeof metaDataOffset);
  if (stream_.flush().good()) return VELMAR_ERROR_CODE_SUCCESS_E;
  velmar_logger::e(kTag, "metadata of %s not written", temporaryPath_.c_str());
  return VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
}

VELMAR_ERROR_CODE_E ImgContainerCreater::publish() {
  const int cause = publishFile(temporaryPath_, filePath_);
  if (cause == 0) return VELMAR_ERROR_CODE_SUCCESS_E;
  velmar_logger::e(kTag, "rename %s to %s error: %s", temporaryPath_.c_str(), filePath_.c_str(),
                   std::strerror(cause));
  return VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
}
