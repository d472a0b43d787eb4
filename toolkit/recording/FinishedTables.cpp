#include "toolkit/recording/FinishedTables.h"

#include <algorithm>

#include "base/HexText.h"
#include "container/img/FrameIndex.h"
#include "container/img/MetaDataKeys.h"
#include "container/rtv/RtvContainerReader.h"
#include "container/rtv/RtvLayout.h"
#include "toolkit/base/Failure.h"
#include "toolkit/recording/FramePlaces.h"
#include "toolkit/text/JsonText.h"
#include "velmar_video/TypeConversion.h"

namespace velmar::toolkit {

FinishedTables::FinishedTables(const std::string& path)
    : file_(path), reader_(makeVelmarVideoFileReader(path)) {}

VELMAR_ERROR_CODE_E FinishedTables::open() {
  const bool isRtv = isRtvPath(file_.path());
  isRtv ? readAheadOfRtv() : readAheadOfImg();
  const VELMAR_ERROR_CODE_E code = reader_->open();
  if (code == VELMAR_ERROR_CODE_SUCCESS_E && isRtv) {
    parser_ = &static_cast<RtvContainerReader&>(*reader_).parser();
    parser_->getVersion(rtvVersion_);  // does not fail on an open parser
  }
  return code;
}

void FinishedTables::readAhead(std::uint64_t offset, std::uint64_t length) const {
  constexpr std::uint64_t kPiece = std::uint64_t{1} << 20;
  const std::uint64_t end = offset + file_.sizeWithin(offset, length);
  std::string bytes;
  for (std::uint64_t at = offset; at < end; at += kPiece) {
    const std::string problem = file_.tryRead({at, std::min(kPiece, end - at)}, bytes);
    if (problem.empty()) continue;
    throw Failure(file_.path(), problem + "; the command recover may bring its frames back",
                  VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  }
}

// The metadata and, by the number of frames in them, the index.
void FinishedTables::readAheadOfImg() const {
  readAhead(0, detail::kFrameIndexStart);
  const std::uint64_t metaData = imgMetaDataOffset(file_);
  readAhead(metaData, file_.size());
  if (metaData < detail::kFrameIndexStart) return;
  const Json::Value root = parseJson(file_.read(metaData, file_.size()));
  const Json::Value count = root.isObject() ? root[detail::kFramesCountKey] : Json::Value();
  if (count.isUInt()) readAhead(detail::kFrameIndexStart, count.asUInt() * sizeof(FrameIndex));
}

// The header and the tags of as many frames as it names.
void FinishedTables::readAheadOfRtv() const {
  readAhead(0, detail::kRtvHeaderSizeMax);
  const std::string header = file_.read(0, detail::kRtvHeaderSizeMax);
  if (header.size() < detail::kRtvHeaderSizeMax) return;
  const auto minor = static_cast<unsigned char>(header[detail::kVersionMinorAt]);
  const detail::RtvLayout layout = detail::rtvLayout(detail::rtvVersion(minor));
  const auto count = detail::get<std::uint16_t>(header.data() + layout.framesCountAt());
  readAhead(0, layout.tagAt(count));
}

const std::vector<FilePlace>& FinishedTables::places() const {
  if (!places_) places_ = parser_ != nullptr ? readRanges() : readIndex();
  return *places_;
}

std::vector<FilePlace> FinishedTables::readIndex() const {
  const std::string bytes =
      file_.read(detail::kFrameIndexStart, framesCount() * sizeof(FrameIndex));
  std::vector<FilePlace> places;
  places.reserve(bytes.size() / sizeof(FrameIndex));
  for (std::size_t at = 0; at + sizeof(FrameIndex) <= bytes.size(); at += sizeof(FrameIndex)) {
    const FrameIndex record = detail::readFrameIndex(bytes.data() + at);
    places.push_back({record.frameOffset, record.frameSize});
  }
  return places;
}

std::vector<FilePlace> FinishedTables::readRanges() const {
  std::vector<FilePlace> places(framesCount());
  for (std::size_t i = 0; i < places.size(); ++i) {
    unsigned long offset = 0;
    unsigned int size = 0;
    parser_->getRawImageRange(static_cast<unsigned short>(i), offset, size, false, nullptr);
    places[i] = {offset, size};
  }
  return places;
}

void FinishedTables::check(VELMAR_ERROR_CODE_E code) const {
  if (code != VELMAR_ERROR_CODE_SUCCESS_E) throw Failure(file_.path(), code);
}

VELMAR_VERSION_E FinishedTables::version() const {
  VELMAR_VERSION_E version = VELMAR_VERSION_MAX_E;
  reader_->getVersion(version);  // does not fail on an open reader
  return version;
}

VELMAR_CODEC_E FinishedTables::codec() const {
  VELMAR_CODEC_E codec = VELMAR_CODEC_MAX_E;
  reader_->getCodec(codec);  // does not fail on an open reader
  return codec;
}

unsigned int FinishedTables::framesCount() const {
  unsigned int count = 0;
  check(reader_->getFramesCount(count));
  return count;
}

unsigned int FinishedTables::framesMax() const {
  unsigned int count = 0;
  reader_->getFramesMax(count);  // does not fail on an open reader
  return count;
}

std::uint64_t FinishedTables::sensorTime(unsigned int index) const {
  unsigned long time = 0;
  check(reader_->getSensorTime(index, time));
  return time;
}

std::uint64_t FinishedTables::arrivedTime(unsigned int index) const {
  unsigned long time = 0;
  check(reader_->getArrivedTime(index, time));
  return time;
}

unsigned int FinishedTables::frameSize(unsigned int index) const {
  unsigned int size = 0;
  check(reader_->getRawImageSize(index, size, false));
  return size;
}

std::string FinishedTables::deviceId() const {
  if (parser_ == nullptr) {
    const Json::Value metaInfo = parseJson(reader_->getMetaInfo());
    return metaInfo.isObject() ? metaInfo[detail::kCameraIdKey].asString() : "";
  }
  unsigned char id[kRtvDeviceIdSize];
  check(reader_->getDeviceId(id, kRtvDeviceIdSize));
  const bool isSet = std::any_of(id, id + kRtvDeviceIdSize, [](auto byte) { return byte != 0; });
  return isSet ? detail::bytesToHex(id, kRtvDeviceIdSize) : "";
}

RecordingDescription FinishedTables::description() const {
  RecordingDescription description;
  unsigned int undistorted = 0;
  unsigned long startTime = 0;
  check(reader_->getImageResolution(description.width, description.height));
  check(reader_->getColorFormat(description.format));
  description.codec = codec();
  check(reader_->getUndistortFlags(undistorted));
  check(reader_->getStartTime(startTime));
  description.deviceId = bytesOfHex(deviceId());
  description.undistorted = undistorted != 0;
  description.startTime = startTime;
  description.cameraParams = reader_->getCameraParams();
  description.extendedInfo = reader_->getExtendedInfo();
  if (parser_ == nullptr) return description;
  // None of these can fail on a parser that is open.
  parser_->getVersion(description.version);
  parser_->getStartPosition(description.lng, description.lat, description.alt);
  parser_->getTaggingFlags(description.taggingFlags);
  description.taggingFlags &= ~kRtvUndistortedFlag;
  return description;
}

frametag03Ver_t FinishedTables::tag(unsigned int index) const {
  frametag03Ver_t stored{};
  check(rtvErrorCode2VelmarErrorCode(parser_->getTag(static_cast<unsigned short>(index), stored)));
  return stored;
}

can_data_io FinishedTables::can(unsigned int index) const {
  can_data_io can{};
  const std::uint64_t canAt = detail::rtvLayout(rtvVersion_).tagAt(index) + detail::kCanAt;
  if (rtvVersion_ == RTV_VER_04) readAhead(canAt, sizeof can);
  check(
      rtvErrorCode2VelmarErrorCode(parser_->getCANRecord(static_cast<unsigned short>(index), can)));
  return can;
}

}  // namespace velmar::toolkit
