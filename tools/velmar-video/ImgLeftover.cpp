#include <algorithm>
#include <utility>

#include "Failure.h"
#include "FrameInput.h"
#include "FramePlaces.h"
#include "InputFile.h"
#include "JpegInspector.h"
#include "JpegStreamSplitter.h"
#include "JsonText.h"
#include "Leftover.h"
#include "container/img/FrameIndex.h"

namespace {

constexpr std::uint64_t kPiece = std::uint64_t{1} << 20;

LeftoverFrame frameOf(const FrameIndex& record, const FileBytes& file) {
  LeftoverFrame frame{record.frameOffset, record.frameSize};
  frame.times = {record.sensorTime, record.arrivedTime};
  clip(frame, file);
  if (frame.offset >= file.size()) {
    frame.flaw = "the file ends before it";
  } else if (frame.offset < kFrameIndexStart || !beginsAsJpeg(file.read(frame.offset, 2))) {
    frame.flaw = "its bytes are no JPEG picture";
  }
  return frame;
}

std::size_t wholeFrames(const std::vector<LeftoverFrame>& frames) {
  return static_cast<std::size_t>(
      std::count_if(frames.begin(), frames.end(), [](auto& frame) { return !frame.flaw; }));
}

/// What the recorder kept beside the file. The last record may be cut short.
std::vector<LeftoverFrame> readJournal(const FileBytes& file) {
  std::vector<LeftoverFrame> frames;
  std::string bytes;
  try {
    bytes = readFile(file.path() + ".index");
  } catch (const Failure&) {
    return frames;  // it is a help, not a condition
  }
  for (std::size_t at = 0; at + sizeof(FrameIndex) <= bytes.size(); at += sizeof(FrameIndex)) {
    frames.push_back(frameOf(readFrameIndex(bytes.data() + at), file));
  }
  return frames;
}

/// The index that the recorder writes over the first frames at the end. It reaches to the first
/// frame at most; behind its last record lies what is left of a frame, which leads nowhere.
std::vector<LeftoverFrame> readFrontIndex(const FileBytes& file) {
  constexpr std::size_t kRecordsAtOnce = 4096;
  const std::uint64_t end = std::max(file.size(), imgMetaDataOffset(file));
  std::vector<LeftoverFrame> frames;
  std::uint64_t lowest = file.size();
  std::uint64_t at = kFrameIndexStart;
  for (bool goesOn = true; goesOn;) {
    const std::string bytes = file.read(at, kRecordsAtOnce * sizeof(FrameIndex));
    goesOn = false;
    for (std::size_t i = 0; i + sizeof(FrameIndex) <= bytes.size(); i += sizeof(FrameIndex)) {
      at += sizeof(FrameIndex);
      if (at > lowest) return frames;
      const FrameIndex record = readFrameIndex(bytes.data() + i);
      if (record.frameOffset < at || record.frameOffset >= end ||
          record.frameSize > end - record.frameOffset) {
        continue;
      }
      frames.push_back(frameOf(record, file));
      if (frames.back().flaw != nullptr) continue;
      goesOn = true;
      lowest = std::min(lowest, frames.back().offset);
    }
  }
  return frames;
}

bool readMetaData(const std::string& text, RecordingDescription& description) {
  const Json::Value root = parseJson(text);
  if (!root.isObject() || !root["frames_count"].isUInt()) return false;
  try {
    description.deviceId = bytesOfHex(root["camera_id"].asString());
    description.width = static_cast<unsigned short>(root["width"].asUInt());
    description.height = static_cast<unsigned short>(root["height"].asUInt());
    description.format = string2RvelmarFormat(root["frame_format"].asString());
    description.codec = string2VelmarCodec(root["frame_codec"].asString());
    description.undistorted = root["undistorted"].asBool();
    description.cameraParams = toJsonText(root["camera_params"]);
    description.extendedInfo = toJsonText(root["extendedInfo"]);
    return true;
  } catch (const Json::Exception&) {
    return false;
  }
}

/// The recorder finishes a file by repeating its first frames at the end, before the index covers
/// them: how many of the frames, and their bytes.
struct Repetition {
  std::size_t frames = 0;
  std::uint64_t bytes = 0;
};

Repetition repetitionOf(const std::vector<LeftoverFrame>& frames, std::size_t count) {
  Repetition repetition;
  while (repetition.frames < count && repetition.bytes < count * sizeof(FrameIndex)) {
    repetition.bytes += frames[repetition.frames++].size;
  }
  return repetition;
}

bool areEqual(const FileBytes& file, std::uint64_t one, std::uint64_t other, std::uint64_t size) {
  for (std::uint64_t done = 0; done < size; done += kPiece) {
    const std::uint64_t piece = std::min(kPiece, size - done);
    if (file.read(one + done, piece) != file.read(other + done, piece)) return false;
  }
  return true;
}

/// Whether the bytes from `start` on are such a repetition, whole or cut inside a frame.
bool repeatsTheFront(const FileBytes& file, std::uint64_t start,
                     const std::vector<LeftoverFrame>& recorded) {
  const std::uint64_t size = file.size() - start;
  const Repetition whole = repetitionOf(recorded, recorded.size());
  if (size > whole.bytes || !areEqual(file, kFrameIndexStart, start, size)) return false;
  return size == whole.bytes || !endsAsJpeg(file.read(start, size));
}

/// The same among frames that were found without a journal: they may as well be frames of a scene
/// in which nothing moved.
void markRepetition(const FileBytes& file, std::vector<LeftoverFrame>& frames) {
  Repetition repetition;
  for (std::size_t count = frames.size(); count > 0; --count) {
    repetition = repetitionOf(frames, count);
    if (count + repetition.frames <= frames.size()) break;
  }
  const std::size_t first = frames.size() - repetition.frames;
  for (std::size_t i = 0; i < repetition.frames; ++i) {
    if (frames[first + i].size != frames[i].size ||
        !areEqual(file, frames[i].offset, frames[first + i].offset, frames[i].size)) {
      return;
    }
  }
  for (std::size_t i = first; i < frames.size(); ++i) {
    frames[i].flaw = "it repeats the first frames, as an interrupted end does";
  }
}

/// Finds frames from `start` on, without times. The bytes that belong to none.
std::uint64_t findFrames(const FileBytes& file, std::uint64_t start,
                         std::vector<LeftoverFrame>& frames) {
  JpegStreamSplitter splitter(kMaxFrameSize);
  std::uint64_t strayBytes = file.size() - start;
  for (std::uint64_t at = start; at < file.size(); at += kPiece) {
    splitter.feed(file.read(at, kPiece));
    while (const auto jpeg = splitter.next()) {
      frames.push_back({start + splitter.frameOffset(), jpeg->size()});
      strayBytes -= jpeg->size();
    }
  }
  return strayBytes;
}

/// Gives the frames from `first` on their times.
void setTimes(std::vector<LeftoverFrame>& frames, std::size_t first, const LeftoverTimes& known) {
  FrameTimes start{known.startTime, known.startTime};
  std::uint64_t number = 0;
  if (first > 0) {
    start = frames[first - 1].times;
    number = 1;
  }
  for (std::size_t i = first; i < frames.size(); ++i, ++number) {
    if (known.framesPerSecond) {
      frames[i].times = {FrameClock(start.sensor, *known.framesPerSecond).at(number),
                         FrameClock(start.arrived, *known.framesPerSecond).at(number)};
    } else if (i < known.times.size()) {
      frames[i].times = known.times[i];
    } else {
      frames[i].flaw = known.times.empty()
                           ? "the index journal has no time (--fps or --times can give one)"
                           : "--times has no row for it";
    }
  }
}

}  // namespace

Leftover findImgLeftover(const FileBytes& file, const LeftoverTimes& times) {
  Leftover leftover;
  leftover.frames = readJournal(file);
  std::vector<LeftoverFrame> front = readFrontIndex(file);
  if (wholeFrames(front) > wholeFrames(leftover.frames)) leftover.frames = std::move(front);

  std::uint64_t end = kFrameIndexStart;
  for (const LeftoverFrame& frame : leftover.frames) {
    if (frame.flaw == nullptr) end = std::max(end, frame.offset + frame.size);
  }
  // A power cut may leave the end of the journal empty.
  while (!leftover.frames.empty() && leftover.frames.back().offset < kFrameIndexStart) {
    leftover.frames.pop_back();
  }
  const std::size_t recorded = leftover.frames.size();
  if (file.read(end, 1) == "{") {
    leftover.isDescribed = readMetaData(file.read(end, kMaxFrameSize), leftover.description);
    return leftover;
  }
  if (end == file.size() || repeatsTheFront(file, end, leftover.frames)) return leftover;

  leftover.strayBytes = findFrames(file, end, leftover.frames);
  if (recorded == 0 && !leftover.frames.empty() && !times.framesPerSecond && times.times.empty()) {
    throw Failure(file.path(), "there is no index journal beside it; --fps or --times is needed",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  setTimes(leftover.frames, recorded, times);
  if (recorded == 0) markRepetition(file, leftover.frames);
  return leftover;
}
