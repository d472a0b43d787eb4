#include <algorithm>
#include <bit>
#include <iterator>
#include <numeric>
#include <utility>

#include "container/img/FrameIndex.h"
#include "container/img/MetaDataKeys.h"
#include "toolkit/base/Failure.h"
#include "toolkit/jpeg/FrameInput.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/recording/FramePlaces.h"
#include "toolkit/rescue/ImgRecords.h"
#include "toolkit/rescue/Leftover.h"
#include "toolkit/rescue/UnrecordedFrames.h"
#include "toolkit/text/JsonText.h"

namespace velmar::toolkit {

namespace {

constexpr std::uint64_t kPiece = std::uint64_t{1} << 20;

// The frames of the journal and of the index at the front. Of one that both have, the journal's
// counts unless only the other leads to it.
std::vector<LeftoverFrame> merged(const std::vector<LeftoverFrame>& journal,
                                  const std::vector<LeftoverFrame>& front) {
  std::vector<LeftoverFrame> frames;
  std::merge(journal.begin(), journal.end(), front.begin(), front.end(), std::back_inserter(frames),
             [](auto& one, auto& other) {
               return std::make_pair(one.number, one.lostBecause != nullptr) <
                      std::make_pair(other.number, other.lostBecause != nullptr);
             });
  const auto repeated = std::unique(frames.begin(), frames.end(), [](auto& one, auto& other) {
    return one.number == other.number;
  });
  frames.erase(repeated, frames.end());
  return frames;
}

// The number of frames, if the text is that of the metadata.
std::optional<std::uint64_t> readMetaData(const std::string& text,
                                          RecordingDescription& description) {
  const Json::Value root = parseJson(text);
  if (!root.isObject() || !root[detail::kFramesCountKey].isUInt()) return std::nullopt;
  try {
    description.deviceId = bytesOfHex(root[detail::kCameraIdKey].asString());
    description.width = static_cast<unsigned short>(root[detail::kWidthKey].asUInt());
    description.height = static_cast<unsigned short>(root[detail::kHeightKey].asUInt());
    description.format = string2RvelmarFormat(root[detail::kFrameFormatKey].asString());
    description.codec = string2VelmarCodec(root[detail::kFrameCodecKey].asString());
    description.undistorted = root[detail::kUndistortedKey].asBool();
    description.cameraParams = toJsonText(root[detail::kCameraParamsKey]);
    description.extendedInfo = toJsonText(root[detail::kExtendedInfoKey]);
    return root[detail::kFramesCountKey].asUInt();
  } catch (const Json::Exception&) {
    return std::nullopt;
  }
}

// The recorder finishes a file by repeating its first frames at the end, before the index covers
// them: how many of the frames, and their bytes.
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

// Whether the bytes from `start` on are such a repetition, whole or cut inside a frame.
bool repeatsTheFront(const FileBytes& file, std::uint64_t start,
                     const std::vector<LeftoverFrame>& recorded) {
  const std::uint64_t size = file.size() - start;
  const Repetition whole = repetitionOf(recorded, recorded.size());
  if (size > whole.bytes || !areEqual(file, detail::kFrameIndexStart, start, size)) return false;
  return size == whole.bytes || !endsAsJpeg(file.read(start, size));
}

// The same among frames that were found without a journal: they may as well be frames of a scene
// in which nothing moved.
void markRepetition(const FileBytes& file, std::vector<LeftoverFrame>& frames) {
  // The largest number of frames that leaves room for those that it repeats.
  std::size_t count = 0;
  for (std::size_t step = std::bit_floor(frames.size()); step > 0; step /= 2) {
    const std::size_t next = count + step;
    if (next + repetitionOf(frames, std::min(next, frames.size())).frames <= frames.size()) {
      count = next;
    }
  }
  const Repetition repetition = repetitionOf(frames, count);
  const std::size_t first = frames.size() - repetition.frames;
  for (std::size_t i = 0; i < repetition.frames; ++i) {
    if (frames[first + i].size != frames[i].size ||
        !areEqual(file, frames[i].offset, frames[first + i].offset, frames[i].size)) {
      return;
    }
  }
  for (std::size_t i = first; i < frames.size(); ++i) {
    frames[i].lostBecause = "it repeats the first frames, as an interrupted end does";
  }
}

// The times of a frame that has no record, if frames come at an even rate.
// \param before  the last frame before it that has one
// \param first   the first frame of all that has one
FrameTimes evenTimes(std::uint64_t number, const LeftoverFrame* before, const LeftoverFrame* first,
                     const LeftoverTimes& known) {
  const auto after = [&known](std::uint64_t start, std::uint64_t frames) {
    return FrameClock(start, *known.framesPerSecond).at(frames);
  };
  if (before != nullptr) {
    const std::uint64_t frames = number - before->number;
    return {after(before->times->sensor, frames), after(before->times->arrived, frames)};
  }
  if (first == nullptr || known.startTime != 0) {
    return {after(known.startTime, number), after(known.startTime, number)};
  }
  const std::uint64_t elapsed = after(0, first->number - number);
  const auto early = [elapsed](std::uint64_t time) { return time - std::min(time, elapsed); };
  return {early(first->times->sensor), early(first->times->arrived)};
}

// Gives frames without a record their times.
void setTimes(std::vector<LeftoverFrame>& frames, const LeftoverTimes& known) {
  const LeftoverFrame* before = nullptr;
  const auto found =
      std::find_if(frames.begin(), frames.end(), [](auto& frame) { return frame.times; });
  const LeftoverFrame* const first = found == frames.end() ? nullptr : &*found;
  for (LeftoverFrame& frame : frames) {
    if (frame.times) {
      before = &frame;
    } else if (known.framesPerSecond) {
      frame.times = evenTimes(frame.number, before, first, known);
    } else if (frame.number < known.times.size()) {
      frame.times = known.times[frame.number];
    } else if (frame.lostBecause == nullptr) {
      frame.lostBecause = known.times.empty()
                              ? "the index has no time (--fps or --times can give one)"
                              : "--times has no row for it";
    }
  }
}

// Where the last of the frames that have a place in the file ends.
std::uint64_t endOf(const std::vector<LeftoverFrame>& frames, const FileBytes& file) {
  std::uint64_t end = detail::kFrameIndexStart;
  for (const LeftoverFrame& frame : frames) {
    end = std::max(end, std::min(frame.end(), file.size()));
  }
  return end;
}

// Whether an index of so many records ends before the frames and has a place for each of them. The
// metadata that say the number may be damaged, too.
bool canBeCount(std::uint64_t count, const std::vector<LeftoverFrame>& frames) {
  const std::uint64_t end = detail::kFrameIndexStart + count * sizeof(FrameIndex);
  return !frames.empty() && count > frames.back().number &&
         std::all_of(frames.begin(), frames.end(), [end](auto& frame) {
           return frame.lostBecause != nullptr || frame.offset >= end;
         });
}

// Where in the file frames end, and what the metadata behind them say.
struct Foot {
  std::uint64_t offset = 0;
  bool hasMetaData = false;
  std::optional<std::uint64_t> framesCount;  ///< if it can be
};

Foot readFoot(const FileBytes& file, const std::vector<LeftoverFrame>& frames,
              RecordingDescription& description) {
  const std::uint64_t stored = imgMetaDataOffset(file);
  const std::uint64_t end = endOf(frames, file);
  for (const std::uint64_t offset : {stored, end}) {
    if (offset < detail::kFrameIndexStart || file.read(offset, 1) != "{") continue;
    const auto count = readMetaData(file.read(offset, kMaxFrameSize), description);
    if (count) return {offset, true, canBeCount(*count, frames) ? count : std::nullopt};
  }
  return {stored >= end && stored < file.size() ? stored : file.size(), false, std::nullopt};
}

// Numbers frames of which none has a record, `count` of them once. In a finished file those that
// made room for the index lie at the end.
void numberPictures(std::vector<LeftoverFrame>& frames, std::optional<std::uint64_t> count) {
  std::size_t moved = 0;
  std::uint64_t bytes = 0;
  while (count && moved < frames.size() && bytes < *count * sizeof(FrameIndex)) {
    bytes += frames[frames.size() - ++moved].size;
  }
  // What damaged the index may have reached into the frames behind it.
  const bool isWhole = !frames.empty() && frames.front().offset == detail::kFrameIndexStart + bytes;
  const std::uint64_t total = std::max<std::uint64_t>(count.value_or(0), frames.size());
  const std::uint64_t missing = isWhole ? 0 : total - frames.size();
  std::rotate(frames.begin(), frames.end() - static_cast<std::ptrdiff_t>(moved), frames.end());
  for (std::size_t i = 0; i < frames.size(); ++i) frames[i].number = i < moved ? i : i + missing;
}

// Why there are no metadata.
std::string whyUndescribed(const FileBytes& file, bool hasJournal) {
  const std::uint64_t stored = imgMetaDataOffset(file);
  if (stored == 0) {
    const bool isUnfinished = hasJournal || beginsAsJpeg(file.read(detail::kFrameIndexStart, 2));
    return isUnfinished ? "it was not finished" : "it was not finished, or its start is destroyed";
  }
  if (stored >= kLongestFile) return "its start is destroyed";
  if (stored >= file.size()) return cutWords(file);
  const bool isCut = file.read(stored, 1) == "{" && file.read(file.size() - 2, 2) != "}\n";
  return isCut ? "it is cut short inside its metadata" : "its metadata are destroyed";
}

void checkTimesAreKnown(const FileBytes& file, const std::vector<LeftoverFrame>& frames,
                        const LeftoverTimes& times) {
  if (frames.empty() || times.framesPerSecond || !times.times.empty()) return;
  const bool isFinished = imgMetaDataOffset(file) != 0;
  throw Failure(
      file.path(),
      std::string(isFinished ? "its index is destroyed" : "there is no index journal beside it") +
          "; --fps or --times is needed",
      VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

// That belong to none of the frames.
std::uint64_t strayBytes(const FileBytes& file, const std::vector<LeftoverFrame>& frames) {
  return std::accumulate(frames.begin(), frames.end(),
                         file.size() - std::min(file.size(), detail::kFrameIndexStart),
                         [](std::uint64_t left, auto& frame) { return left - frame.size; });
}

}  // namespace

Leftover findImgLeftover(const FileBytes& file, const LeftoverTimes& times) {
  Leftover leftover;
  std::vector<LeftoverFrame>& frames = leftover.frames;
  const std::vector<LeftoverFrame> journal = readJournal(file);
  const std::vector<LeftoverFrame> front = readFrontIndex(file);
  frames = merged(journal, front);
  const bool isRecorded = !frames.empty();
  if (!isRecorded) frames = findPictures(file, detail::kFrameIndexStart, file.size());

  Foot foot = readFoot(file, frames, leftover.description);
  if (!foot.hasMetaData) leftover.undescribed = whyUndescribed(file, !journal.empty());
  if (!isRecorded) {
    numberPictures(frames, foot.framesCount);
    checkTimesAreKnown(file, frames, times);
    if (!foot.hasMetaData) markRepetition(file, frames);
    leftover.strayBytes = foot.hasMetaData ? 0 : strayBytes(file, frames);
    leftover.framesCount = std::max<std::uint64_t>(foot.framesCount.value_or(0), frames.size());
  } else {
    const std::uint64_t end = endOf(frames, file);
    if (repeatsTheFront(file, end, frames)) foot.offset = end;
    const bool areMoved = !front.empty();  // before the index is written to the front
    const FilePlace room{detail::kFrameIndexStart, foot.offset - detail::kFrameIndexStart};
    UnrecordedFrames unrecorded(file, room, areMoved,
                                foot.framesCount.value_or(frames.back().number + 1),
                                !foot.framesCount);
    unrecorded.addTo(frames);
    leftover.framesCount = unrecorded.count();
    leftover.strayBytes = unrecorded.strayBytes();
  }
  setTimes(frames, times);
  return leftover;
}

}  // namespace velmar::toolkit
