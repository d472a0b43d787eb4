#include <algorithm>
#include <climits>
#include <cmath>
#include <tuple>
#include <utility>

#include "container/rtv/RtvLayout.h"
#include "toolkit/rescue/Leftover.h"
#include "toolkit/rescue/RtvTable.h"
#include "toolkit/rescue/UnrecordedFrames.h"
#include "velmar_video/TypeConversion.h"

namespace velmar::toolkit {

namespace {

// Whether it is the likelier one. Tags of versions 03 and 04 begin alike, so that a single frame
// leaves it to the size of the table and to the CAN block, which says its own length.
bool isLikelier(const RtvTable& one, const RtvTable& other) {
  const auto rank = [](const RtvTable& table) {
    const bool hasCan = table.version == RTV_VER_04 && !table.slots.empty() &&
                        table.slots[0].tag.can.can_data_length == detail::kCanLength;
    return std::make_tuple(table.wholeFrames, -table.strangeTags, table.isExact(), hasCan);
  };
  return rank(one) > rank(other);
}

// The header, which the recorder writes at the end: only if it got there.
bool readHeader(const std::string& front, version_e version, RecordingDescription& description) {
  const detail::RtvLayout layout = detail::rtvLayout(version);
  if (!front.starts_with(detail::kRtvMagic) || front.size() < layout.headerSize) return false;
  const char* const bytes = front.data();
  description.deviceId.assign(bytes + detail::kDeviceIdAt, kRtvDeviceIdSize);
  description.startTime =
      detail::get<std::uint64_t>(bytes + detail::kStartTimeAt) * kMillisecond + rtvEpoch(version);
  description.lng = detail::get<int>(bytes + detail::kLngAt);
  description.lat = detail::get<int>(bytes + detail::kLatAt);
  if (layout.hasFlagsAndAltitude) description.alt = detail::get<int>(bytes + detail::kAltAt);
  description.width = detail::get<unsigned short>(bytes + layout.widthAt());
  description.height = detail::get<unsigned short>(bytes + layout.heightAt());
  description.format =
      rtvFormat2VelmarFormat(detail::get<format_e>(bytes + layout.frameFormatAt()));
  description.codec = rtvCodec2VelmarCodec(detail::get<codec_e>(bytes + layout.frameCodecAt()));
  const auto flags = detail::get<unsigned int>(bytes + layout.taggingFlagsAt());
  description.undistorted = (flags & kRtvUndistortedFlag) != 0;
  description.taggingFlags = flags & ~kRtvUndistortedFlag;
  return true;
}

// Whether the tag says where its frame lies, even if no picture is there. Then the frame beside it
// lies next to it.
bool hasPlace(const RtvTable& table, std::size_t i, const FileBytes& file) {
  const std::vector<RtvSlot>& slots = table.slots;
  const LeftoverFrame& frame = slots[i].frame;
  if (frame.lostBecause == nullptr) return true;
  if (frame.size == 0 || frame.offset < table.dataStart || frame.offset >= file.size())
    return false;
  return (i > 0 && slots[i - 1].frame.end() == frame.offset) ||
         (i + 1 < slots.size() && slots[i + 1].frame.offset == frame.end());
}

// The frames to which tags lead, then those that lie between them, before and behind, by their
// markers.
std::vector<LeftoverFrame> findFrames(const RtvTable& table, const FileBytes& file,
                                      Leftover& leftover) {
  std::vector<LeftoverFrame> frames;
  for (std::size_t i = 0; i < table.slots.size(); ++i) {
    if (!hasPlace(table, i, file)) continue;
    frames.push_back(table.slots[i].frame);
    frames.back().number = i;
  }
  leftover.framesCount = table.slots.size();
  if (table.wholeFrames == 0) return frames;
  const FilePlace room{table.dataStart, file.size() - table.dataStart};
  UnrecordedFrames unrecorded(file, room, false, frames.back().number + 1, true);
  unrecorded.addTo(frames);
  std::erase_if(frames, [&table](auto& frame) { return frame.number >= table.framesMax(); });
  leftover.framesCount =
      std::clamp<std::uint64_t>(unrecorded.count(), leftover.framesCount, table.framesMax());
  leftover.strayBytes = unrecorded.strayBytes();
  return frames;
}

void add(Leftover& leftover, const LeftoverFrame& frame, const FrameTag& tag) {
  leftover.frames.push_back(frame);
  leftover.tags.push_back(tag);
}

// A frame with what is left of its tag.
void addFrame(Leftover& leftover, LeftoverFrame frame, const RtvSlot& slot) {
  // A recorder that is killed may leave a tag that lacks only the size. One that is torn may lack
  // all of the place.
  const bool lacksPlace = slot.isTorn && slot.frame.offset == 0 && slot.frame.size == 0;
  const bool hasTag = !slot.isEmpty && (lacksPlace || slot.frame.offset == frame.offset);
  const FrameTag tag = hasTag ? slot.tag : FrameTag();
  if (!hasTag) {
    frame.caveat = "recovered without the tag; the time is estimated from neighbouring frames";
  } else if (!tag.timeFlag) {
    frame.caveat = "recovered with a torn tag; the time is estimated from neighbouring frames";
  } else if (slot.isTorn) {
    frame.caveat = "recovered with a torn tag; position, speed or signals are missing";
  }
  add(leftover, frame, tag);
}

// All frames of the table in their order, those that are lost as well, then those behind it.
void addFrames(Leftover& leftover, const RtvTable& table,
               const std::vector<LeftoverFrame>& frames) {
  auto frame = frames.begin();
  for (std::size_t i = 0; i < table.slots.size(); ++i) {
    if (frame != frames.end() && frame->number == i) {
      addFrame(leftover, *frame++, table.slots[i]);
    } else {
      add(leftover, table.slots[i].frame, FrameTag());
      leftover.frames.back().number = i;
    }
  }
  while (frame != frames.end()) addFrame(leftover, *frame++, RtvSlot());
}

// Gives frames whose tag has no time any more one between those of their neighbours; before the
// first and behind the last time that is known they come at the mean rate.
void setTimes(Leftover& leftover) {
  struct Known {
    double number, time;
  };
  std::vector<Known> known;
  for (std::size_t i = 0; i < leftover.frames.size(); ++i) {
    const auto& time = leftover.tags[i].timeFlag;
    const auto number = static_cast<double>(leftover.frames[i].number);
    if (time) known.push_back({number, static_cast<double>(*time)});
  }
  if (known.empty()) known.push_back({0, 0});
  const Known first = known.front(), last = known.back();
  const double interval = last.number > first.number
                              ? (last.time - first.time) / (last.number - first.number)
                              : first.time / std::max(first.number, 1.0);
  const auto end = static_cast<double>(leftover.framesCount);
  known.insert(known.begin(), {0, std::max(first.time - first.number * interval, 0.0)});
  known.push_back({end, last.time + (end - last.number) * interval});
  auto next = known.begin() + 1;
  for (std::size_t i = 0; i < leftover.frames.size(); ++i) {
    const auto number = static_cast<double>(leftover.frames[i].number);
    while (next->number < number) ++next;
    auto& time = leftover.tags[i].timeFlag;
    if (time) continue;
    const Known before = next[-1];
    const double distance = std::max(next->number - before.number, 1.0);
    const double share = (number - before.number) / distance;
    time = static_cast<int>(std::clamp<double>(
        std::round(std::lerp(before.time, next->time, share)), INT_MIN, INT_MAX));
  }
}

}  // namespace

Leftover findRtvLeftover(const FileBytes& file, std::optional<version_e> version) {
  const std::string front = file.read(0, detail::rtvLayout(RTV_VER_04).tagAt(kRtvFramesMax));
  RtvTable table = readRtvTable(file, front, version.value_or(RTV_VER_03));
  if (!version) {
    for (const version_e other : {RTV_VER_02, RTV_VER_04}) {
      RtvTable candidate = readRtvTable(file, front, other);
      if (isLikelier(candidate, table)) table = std::move(candidate);
    }
  }

  Leftover leftover;
  leftover.description.version = table.version;
  if (!readHeader(front, table.version, leftover.description)) {
    const bool isEmpty =
        front.find_first_not_of('\0') >= detail::rtvLayout(table.version).headerSize;
    leftover.undescribed = isEmpty ? "it was not finished" : "its header is destroyed";
  }
  leftover.framesMax = table.framesMax();
  addFrames(leftover, table, findFrames(table, file, leftover));
  setTimes(leftover);
  return leftover;
}

}  // namespace velmar::toolkit
