#include "toolkit/recording/Recording.h"

#include <algorithm>

#include "base/HexText.h"
#include "container/img/FrameIndex.h"
#include "container/img/MetaDataKeys.h"
#include "container/rtv/RtvContainerReader.h"
#include "container/rtv/RtvLayout.h"
#include "toolkit/base/Failure.h"
#include "toolkit/recording/FramePlaces.h"
#include "toolkit/recording/OpenFailure.h"
#include "toolkit/text/JsonText.h"
#include "velmar_video/TypeConversion.h"

namespace velmar::toolkit {

bool isRecordingName(const std::string& path) {
  // A reader that is not opened touches no file.
  return makeVelmarVideoFileReader(path) != nullptr;
}

void checkExtension(const std::string& path) {
  if (!isRecordingName(path)) {
    throw Failure(path, "its name has to end in .img or .rtv",
                  VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E);
  }
}

void checkSameContainer(const std::string& input, const std::string& output) {
  if (isRtvPath(input) == isRtvPath(output)) return;
  throw Failure(output, "it is of another container than " + input + "; convert can change that",
                VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

Recording::Recording(const std::string& path)
    : Recording(path, FileLock(path, FileLock::Kind::Read)) {}

Recording::Recording(const std::string& path, const FileLock& /*lock*/) : path_(path) {
  if (const auto failure = pathFailure(path)) throw Failure(*failure);
  checkExtension(path);
  undoState_ = toolkit::undoState(path);
  // Both must be the same file, also if a new one gets the name meanwhile.
  do {
    file_.emplace(path);
    isRtvPath(path) ? readAheadOfRtv() : readAheadOfImg();
    reader_ = makeVelmarVideoFileReader(path);
    const auto code = reader_->open();
    if (code != VELMAR_ERROR_CODE_SUCCESS_E) {
      if (undoState_ == UndoState::Pending) throw Failure(path, undoWords(path, undoState_), code);
      throw openFailure(path, code);
    }
  } while (!file_->hasPath());
  if (isRtvPath(path)) parser_ = &static_cast<RtvContainerReader&>(*reader_).parser();
}

const std::vector<FilePlace>& Recording::places() const {
  if (!places_) places_ = isRtv() ? readRanges() : readIndex();
  return *places_;
}

void Recording::readAhead(std::uint64_t offset, std::uint64_t length) const {
  constexpr std::uint64_t kPiece = std::uint64_t{1} << 20;
  const std::uint64_t end = offset + file_->sizeWithin(offset, length);
  std::string bytes;
  for (std::uint64_t at = offset; at < end; at += kPiece) {
    const std::string problem = file_->tryRead({at, std::min(kPiece, end - at)}, bytes);
    if (problem.empty()) continue;
    throw Failure(path_, problem + "; the command recover may bring its frames back",
                  VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  }
}

// The metadata and, by the number of frames in them, the index.
void Recording::readAheadOfImg() const {
  readAhead(0, detail::kFrameIndexStart);
  const std::uint64_t metaData = imgMetaDataOffset(*file_);
  readAhead(metaData, file_->size());
  if (metaData < detail::kFrameIndexStart) return;
  const Json::Value root = parseJson(file_->read(metaData, file_->size()));
  const Json::Value count = root.isObject() ? root[detail::kFramesCountKey] : Json::Value();
  if (count.isUInt()) readAhead(detail::kFrameIndexStart, count.asUInt() * sizeof(FrameIndex));
}

// The header and the tags of as many frames as it names.
void Recording::readAheadOfRtv() const {
  readAhead(0, detail::kRtvHeaderSizeMax);
  const std::string header = file_->read(0, detail::kRtvHeaderSizeMax);
  if (header.size() < detail::kRtvHeaderSizeMax) return;
  const auto minor = static_cast<unsigned char>(header[detail::kVersionMinorAt]);
  const detail::RtvLayout layout = detail::rtvLayout(detail::rtvVersion(minor));
  const auto count = detail::get<std::uint16_t>(header.data() + layout.framesCountAt());
  readAhead(0, layout.tagAt(count));
}

std::vector<FilePlace> Recording::readIndex() const {
  const std::string bytes =
      file_->read(detail::kFrameIndexStart, framesCount() * sizeof(FrameIndex));
  std::vector<FilePlace> places;
  places.reserve(bytes.size() / sizeof(FrameIndex));
  for (std::size_t at = 0; at + sizeof(FrameIndex) <= bytes.size(); at += sizeof(FrameIndex)) {
    const FrameIndex record = detail::readFrameIndex(bytes.data() + at);
    places.push_back({record.frameOffset, record.frameSize});
  }
  return places;
}

std::vector<FilePlace> Recording::readRanges() const {
  std::vector<FilePlace> places(framesCount());
  for (std::size_t i = 0; i < places.size(); ++i) {
    unsigned long offset = 0;
    unsigned int size = 0;
    parser_->getRawImageRange(static_cast<unsigned short>(i), offset, size, false, nullptr);
    places[i] = {offset, size};
  }
  return places;
}

void Recording::check(VELMAR_ERROR_CODE_E code) const {
  if (code != VELMAR_ERROR_CODE_SUCCESS_E) throw Failure(path_, code);
}

unsigned int Recording::framesCount() const {
  unsigned int count = 0;
  check(reader_->getFramesCount(count));
  return count;
}

std::uint64_t Recording::sensorTime(unsigned int index) const {
  unsigned long time = 0;
  check(reader_->getSensorTime(index, time));
  return time;
}

FrameTimes Recording::times(unsigned int index) const {
  unsigned long arrived = 0;
  check(reader_->getArrivedTime(index, arrived));
  return {sensorTime(index), arrived};
}

unsigned int Recording::frameSize(unsigned int index) const {
  unsigned int size = 0;
  check(reader_->getRawImageSize(index, size, false));
  return size;
}

std::string Recording::deviceId() const {
  if (!isRtv()) {
    const Json::Value metaInfo = parseJson(reader_->getMetaInfo());
    return metaInfo.isObject() ? metaInfo[detail::kCameraIdKey].asString() : "";
  }
  unsigned char id[kRtvDeviceIdSize];
  check(reader_->getDeviceId(id, kRtvDeviceIdSize));
  const bool isSet = std::any_of(id, id + kRtvDeviceIdSize, [](auto byte) { return byte != 0; });
  return isSet ? detail::bytesToHex(id, kRtvDeviceIdSize) : "";
}

bool Recording::hasPlainDeviceId() const {
  const std::string text = deviceId();
  const std::string bytes = bytesOfHex(text);
  return text == detail::bytesToHex(reinterpret_cast<const unsigned char*>(bytes.data()),
                                    static_cast<unsigned int>(bytes.size()));
}

RecordingDescription Recording::description() const {
  RecordingDescription description;
  unsigned int undistorted = 0;
  unsigned long startTime = 0;
  check(reader_->getImageResolution(description.width, description.height));
  check(reader_->getColorFormat(description.format));
  check(reader_->getCodec(description.codec));
  check(reader_->getUndistortFlags(undistorted));
  check(reader_->getStartTime(startTime));
  description.deviceId = bytesOfHex(deviceId());
  description.undistorted = undistorted != 0;
  description.startTime = startTime;
  description.cameraParams = reader_->getCameraParams();
  description.extendedInfo = reader_->getExtendedInfo();
  if (!isRtv()) return description;
  // None of these can fail on a parser that is open.
  parser_->getVersion(description.version);
  parser_->getStartPosition(description.lng, description.lat, description.alt);
  parser_->getTaggingFlags(description.taggingFlags);
  description.taggingFlags &= ~kRtvUndistortedFlag;
  return description;
}

frametag03Ver_t Recording::storedTag(unsigned int index) const {
  frametag03Ver_t stored{};
  if (!isRtv()) return stored;
  check(rtvErrorCode2VelmarErrorCode(parser_->getTag(static_cast<unsigned short>(index), stored)));
  return stored;
}

int Recording::timeFlag(unsigned int index) const { return storedTag(index).time_flag; }

FrameTag Recording::tag(unsigned int index) const {
  FrameTag tag = FrameTag::of(storedTag(index));
  if (isRtv()) {
    version_e version{};
    parser_->getVersion(version);  // does not fail on an open parser
    const std::uint64_t canAt = detail::rtvLayout(version).tagAt(index) + detail::kCanAt;
    if (version == RTV_VER_04) readAhead(canAt, sizeof tag.can);
    check(rtvErrorCode2VelmarErrorCode(
        parser_->getCANRecord(static_cast<unsigned short>(index), tag.can)));
  }
  return tag;
}

void noteInterruptedEdit(const Recording& recording, Job& job) {
  const std::string words = undoWords(recording.path(), recording.undoState());
  if (!words.empty()) job.note(recording.path(), words);
}

Recording openRecording(const std::string& path, Job& job) {
  Recording recording(path);
  noteInterruptedEdit(recording, job);
  return recording;
}

}  // namespace velmar::toolkit
