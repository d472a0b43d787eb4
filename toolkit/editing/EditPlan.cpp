#include "toolkit/editing/EditPlan.h"

#include <algorithm>
#include <cstddef>
#include <set>

#include "base/HexText.h"
#include "container/img/FrameIndex.h"
#include "container/rtv/RtvLayout.h"
#include "toolkit/base/Failure.h"
#include "toolkit/base/FileBytes.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/recording/FramePlaces.h"
#include "toolkit/recording/OpenFailure.h"
#include "toolkit/recording/StoredFrame.h"
#include "toolkit/tables/Track.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/text/TimeText.h"
#include "velmar_video/rtv/RtvContainerModifier.h"

namespace velmar::toolkit {

namespace {

std::string hexText(const std::string& bytes) {
  if (bytes.empty()) return "none";
  return detail::bytesToHex(reinterpret_cast<const unsigned char*>(bytes.data()),
                            static_cast<unsigned int>(bytes.size()));
}

std::string onOff(bool value) { return value ? "on" : "off"; }

// Where a frame's record in the index of an img has its times, one behind the other.
constexpr std::uint64_t recordAt(unsigned int index) {
  return detail::kFrameIndexStart + sizeof(FrameIndex) * std::uint64_t{index};
}
static_assert(offsetof(FrameIndex, arrivedTime) ==
              offsetof(FrameIndex, sensorTime) + sizeof FrameIndex::sensorTime);

// Leaves the modifier alone: the change is made elsewhere.
VELMAR_ERROR_CODE_E unchanged(VelmarVideoFileModifier& /*modifier*/) {
  return VELMAR_ERROR_CODE_SUCCESS_E;
}

}  // namespace

EditPlan::EditPlan(const Recording& recording, const EditRequest& request)
    : recording_(recording), description_(recording.description()) {
  if (request.deviceId) planDeviceId(*request.deviceId);
  if (request.undistorted) planUndistorted(*request.undistorted);
  if (request.taggingFlags) planTaggingFlags(*request.taggingFlags);
  if (request.cameraParams) {
    planJson("--camera-params", description_.cameraParams, *request.cameraParams,
             &VelmarVideoFileModifier::modifyCameraParams);
  }
  if (request.extendedInfo) {
    planJson("--extended-info", description_.extendedInfo, *request.extendedInfo,
             &VelmarVideoFileModifier::modifyExtendedInfo);
  }
  if (request.fixResolution) planResolution();
  // The start first: an rtv's frame times are stored relative to it.
  if (request.startTime) planStartTime(*request.startTime);
  if (request.shift) planShift(*request.shift);
  planFrameTimes(request);
  if (request.allTimes) planAllTimes("--times", *request.allTimes);
  if (request.changeTags) planTags(request);
  if (!isEmpty()) checkByteOrder();
  changesMetaData_ =
      !recording.isRtv() && (request.deviceId || request.undistorted || request.cameraParams ||
                             request.extendedInfo || request.fixResolution);
}

// Version 02 does not say.
void EditPlan::checkByteOrder() const {
  if (!recording_.isRtv() || description_.version == RTV_VER_02) return;
  if ((FileBytes(recording_.path()).read(detail::kFlagsAt, 1).at(0) & 1) == 0) return;
  throw Failure(recording_.path(), "a big-endian machine wrote it; such files are not edited",
                VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

void EditPlan::refuse(const std::string& option, const std::string& words) const {
  throw Failure(recording_.path(), option + ": " + words, VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

void EditPlan::add(std::string what, std::string before, std::string after, Write write) {
  changes_.push_back({std::move(what), std::move(before), std::move(after), std::move(write)});
}

void EditPlan::checkIndex(const std::string& option, unsigned int index) const {
  const unsigned int count = recording_.framesCount();
  if (index < count) return;
  throw Failure(recording_.path(),
                option + ": there is no frame " + std::to_string(index) + ", only " +
                    std::to_string(count) + " frames",
                VELMAR_ERROR_CODE_OUT_RANGE_E);
}

void EditPlan::planDeviceId(const std::string& id) {
  std::string stored = id;
  if (recording_.isRtv()) {
    if (id.size() > kRtvDeviceIdSize) refuse("--device-id", "an rtv holds 24 bytes");
    stored.resize(kRtvDeviceIdSize);  // or the end of the old one would stay
  }
  const std::string before = recording_.deviceId();
  add("device id", before.empty() ? "none" : printable(before), hexText(stored),
      [stored](auto& modifier) {
        return modifier.modifyCameraID(reinterpret_cast<const unsigned char*>(stored.data()),
                                       static_cast<unsigned int>(stored.size()));
      });
}

void EditPlan::planUndistorted(bool undistorted) {
  if (recording_.isRtv() && description_.version == RTV_VER_02) {
    refuse("--undistorted", "version 02 of rtv cannot say so");
  }
  add("undistorted", onOff(description_.undistorted), onOff(undistorted),
      [undistorted](auto& modifier) { return modifier.modifyUndistorted(undistorted); });
}

void EditPlan::planTaggingFlags(unsigned int flags) {
  if (!recording_.isRtv()) refuse("--tagging-flags", "an img holds none");
  if (description_.version == RTV_VER_02) {
    refuse("--tagging-flags", "those of a version 02 cannot be changed");
  }
  unsigned int before = 0;
  recording_.parser()->getTaggingFlags(before);
  add("tagging flags", std::to_string(before), std::to_string(flags), [flags](auto& modifier) {
    dynamic_cast<RtvContainerModifier&>(modifier).setTaggingFlags(flags);
    return VELMAR_ERROR_CODE_SUCCESS_E;
  });
}

void EditPlan::planJson(
    const std::string& option, const std::string& before, const std::string& after,
    VELMAR_ERROR_CODE_E (VelmarVideoFileModifier::*modify)(const std::string&)) {
  if (recording_.isRtv()) refuse(option, "an rtv holds none");
  add(option.substr(2), toJsonText(parseJson(before)), toJsonText(parseJson(after)),
      [after, modify](auto& modifier) { return (modifier.*modify)(after); });
}

void EditPlan::planResolution() {
  if (recording_.framesCount() == 0) refuse("--fix-resolution", "there is no frame to look at");
  std::string jpeg;
  const bool isThere = !readFrameBytes(recording_, 0, jpeg);
  const auto size = isThere ? JpegInspector().size(jpeg) : std::nullopt;
  if (!size) {
    throw Failure(recording_.path(), "--fix-resolution: frame 0 is not a JPEG picture",
                  VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
  }
  if (*size == description_.size()) return;
  add("resolution", toText(description_.size()), toText(*size),
      [](auto& modifier) { return modifier.correctVideoResolution(); });
}

void EditPlan::planStartTime(std::uint64_t time) {
  if (!recording_.isRtv()) {
    refuse("--start-time",
           "an img starts when its frame 0 arrived; --arrived-time 0=... sets that");
  }
  if (time % kMillisecond != 0) refuse("--start-time", "an rtv holds whole milliseconds");
  const std::string before = formatTime(description_.startTime);
  description_.startTime = time;
  if (!rtvStartTime(description_)) refuse("--start-time", "version 02 of rtv begins in 2015");
  add("start time", before, formatTime(time),
      [stored = time - rtvEpoch(description_.version)](auto& modifier) {
        unsigned long value = stored;
        return modifier.modifyStartTime(value);
      });
}

void EditPlan::planSensorTime(const std::string& option, EditRequest::FrameTime change, bool said) {
  checkIndex(option, change.index);
  const bool rtv = recording_.isRtv();
  if (rtv && change.time % kMillisecond != 0) refuse(option, "an rtv holds whole milliseconds");
  if (rtv && !rtvTimeFlag(description_, change.time)) {
    refuse(option, "frame " + std::to_string(change.index) +
                       " would be captured before the start, or more than 24 days after it");
  }
  // The modifier counts from where the file does.
  const std::uint64_t epoch = rtv ? rtvEpoch(description_.version) : 0;
  const Write write = [index = change.index, stored = change.time - epoch](auto& modifier) {
    unsigned long value = stored;
    return modifier.modifyTimestamp(index, value);
  };
  places_.overwrite(rtv ? FilePlace{detail::rtvLayout(description_.version).tagAt(change.index) +
                                        offsetof(frametag03Ver_t, time_flag),
                                    sizeof frametag03Ver_t::time_flag}
                        : FilePlace{recordAt(change.index) + offsetof(FrameIndex, sensorTime),
                                    sizeof FrameIndex::sensorTime});
  if (!said) return add("", "", "", write);
  add("frame " + std::to_string(change.index) + " captured",
      formatTime(recording_.sensorTime(change.index)), formatTime(change.time), write);
}

void EditPlan::planArrivedTime(const std::string& option, EditRequest::FrameTime change,
                               bool said) {
  if (recording_.isRtv()) refuse(option, "an rtv holds no arrival times");
  checkIndex(option, change.index);
  const Write write = [change](auto& modifier) {
    unsigned long value = change.time;
    return modifier.modifyArrivalTime(change.index, value);
  };
  places_.overwrite(
      {recordAt(change.index) + offsetof(FrameIndex, arrivedTime), sizeof FrameIndex::arrivedTime});
  if (!said) return add("", "", "", write);
  add("frame " + std::to_string(change.index) + " arrived",
      formatTime(recording_.times(change.index).arrived), formatTime(change.time), write);
}

void EditPlan::planFrameTimes(const EditRequest& request) {
  const auto checkOnce = [this](const std::string& option, const auto& changes) {
    std::set<unsigned int> seen;
    for (const auto& change : changes) {
      if (!seen.insert(change.index).second) {
        refuse(option, "frame " + std::to_string(change.index) + " is there twice");
      }
    }
  };
  checkOnce("--sensor-time", request.sensorTimes);
  checkOnce("--arrived-time", request.arrivedTimes);
  for (const auto& change : request.sensorTimes) planSensorTime("--sensor-time", change, true);
  for (const auto& change : request.arrivedTimes) planArrivedTime("--arrived-time", change, true);
}

void EditPlan::planAllTimes(const std::string& option, const std::vector<FrameTimes>& times) {
  const unsigned int count = recording_.framesCount();
  if (times.size() != count) {
    refuse(option, "it has " + std::to_string(times.size()) + " rows for " + std::to_string(count) +
                       " frames");
  }
  if (count == 0) return;
  const bool rtv = recording_.isRtv();
  for (unsigned int i = 0; i < count; ++i) {
    if (rtv && times[i].arrived != times[i].sensor) refuse(option, "an rtv holds no arrival times");
    planSensorTime(option, {i, times[i].sensor}, false);
    if (!rtv) planArrivedTime(option, {i, times[i].arrived}, false);
  }
  const auto span = [](std::uint64_t first, std::uint64_t last) {
    return formatTime(first) + " to " + formatTime(last);
  };
  const FrameTimes first = recording_.times(0);
  const FrameTimes last = recording_.times(count - 1);
  add(std::to_string(count) + " frames captured", span(first.sensor, last.sensor),
      span(times.front().sensor, times.back().sensor), unchanged);
  if (rtv) return;
  add(std::to_string(count) + " frames arrived", span(first.arrived, last.arrived),
      span(times.front().arrived, times.back().arrived), unchanged);
}

std::uint64_t EditPlan::shifted(std::uint64_t time, std::int64_t shift) const {
  const std::uint64_t moved = time + static_cast<std::uint64_t>(shift);
  if (shift < 0 ? moved > time : moved < time) refuse("--shift-time", "times would leave 64 bits");
  return moved;
}

void EditPlan::planShift(std::int64_t shift) {
  if (recording_.isRtv()) {
    // The frames follow, since their times are relative to the start.
    if (shift % static_cast<std::int64_t>(kMillisecond) != 0) {
      refuse("--shift-time", "an rtv holds whole milliseconds");
    }
    return planStartTime(shifted(description_.startTime, shift));
  }
  std::vector<FrameTimes> times;
  for (unsigned int i = 0; i < recording_.framesCount(); ++i) {
    const FrameTimes before = recording_.times(i);
    times.push_back({shifted(before.sensor, shift), shifted(before.arrived, shift)});
  }
  planAllTimes("--shift-time", times);
}

void EditPlan::planTags(const EditRequest& request) {
  if (!recording_.isRtv()) refuse("--log", "an img holds neither positions nor CAN signals");
  std::vector<std::uint64_t> times;
  std::vector<FrameTag> tags;
  for (unsigned int i = 0; i < recording_.framesCount(); ++i) {
    times.push_back(recording_.sensorTime(i));
    tags.push_back(recording_.tag(i));
  }
  RecordingDescription changed = description_;
  request.changeTags(times, tags, changed);
  const std::string before = startPositionText(description_);
  const std::string after = startPositionText(changed);
  patches_ = tagPatches(recording_, tags);
  const std::size_t count = patches_.size();
  for (const FilePatch& patch : patches_) places_.overwrite({patch.offset, patch.bytes.size()});
  if (before != after) {
    patches_.push_back(startPositionPatch(changed));  // the header is kept for undoing in any case
    add("start position", before, after, unchanged);
  }
  if (count == 0) return;
  const std::string of = " of " + std::to_string(tags.size()) + " frames";
  add("tags", "as recorded", std::to_string(count) + of + " changed by the log", unchanged);
}

EditedPlaces EditPlan::places() const {
  // Of the frames at either end: that another recording has the same is out of the question.
  constexpr std::uint64_t kSample = 64 << 10;
  const FileBytes file(recording_.path());
  EditedPlaces places = places_;
  std::uint64_t tail = file.size();
  if (recording_.isRtv()) {
    const detail::RtvLayout layout = detail::rtvLayout(description_.version);
    places.overwrite({0, layout.headerSize});  // the modifier writes all fields that can be edited
    places.headEnd = layout.tagAt(recording_.framesCount());
  } else {
    tail = imgMetaDataOffset(file);
    if (changesMetaData_) places.overwrite({tail, file.size() - tail});
    places.headEnd = recordAt(recording_.framesCount());
  }
  places.headEnd += kSample;
  places.tailStart = tail - std::min(tail, kSample);
  return places;
}

void EditPlan::apply(const FileLock& lock) const {
  keepForUndo(recording_.path(), places());
  try {
    write();
    lock.sync();
    dropUndo(recording_.path());
  } catch (...) {
    undoEdit(recording_.path(), lock);
    throw;
  }
}

void EditPlan::write() const {
  const auto check = [this](VELMAR_ERROR_CODE_E code, const std::string& words) {
    if (code != VELMAR_ERROR_CODE_SUCCESS_E) throw Failure(recording_.path(), words, code);
  };
  const auto modifier = makeVelmarVideoFileModifier(recording_.path());
  check(modifier->open(), "it cannot be opened for writing");
  for (const Change& change : changes_) {
    check(change.write(*modifier), "it cannot be changed");
  }
  check(modifier->close(), "the changes could not be written; the disk may be full");
  writePatches(recording_.path(), patches_);
}

std::string EditPlan::text() const {
  std::string text;
  for (const Change& change : changes_) {
    if (change.what.empty()) continue;
    text += change.what + ": " + change.before + " -> " + change.after + "\n";
  }
  return text;
}

std::string editRecording(const std::string& path, const EditRequest& request, Job& job) {
  if (const auto failure = pathFailure(path)) throw Failure(*failure);
  checkExtension(path);
  const FileLock lock(path, FileLock::Kind::Edit);
  if (undoEdit(path, lock) == UndoState::Pending) {
    job.note(path, "an edit of it was interrupted, and is undone first");
  }
  const Recording recording(path, lock);
  const EditPlan plan(recording, request);
  if (!plan.isEmpty()) plan.apply(lock);
  return plan.text();
}

}  // namespace velmar::toolkit
