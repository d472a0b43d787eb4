#include <algorithm>
#include <tuple>
#include <utility>

#include "container/rtv/RtvLayout.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/recording/FramePlaces.h"
#include "toolkit/rescue/Leftover.h"
#include "velmar_video/TypeConversion.h"

namespace velmar::toolkit {

namespace {

// A slot of the tag table.
struct Slot {
  LeftoverFrame frame;
  FrameTag tag;
  bool isEmpty = true;
};

// Whether the tags of a number of slots end there.
bool isSizeOfTable(std::uint64_t end, const detail::RtvLayout& layout) {
  return end >= layout.headerSize && (end - layout.headerSize) % layout.tagSize == 0;
}

// The tag table, read as one of a version.
struct Table {
  version_e version;
  std::vector<Slot> slots;  // up to the last that is not empty
  std::uint64_t dataStart;  // of the first frame
  std::uint64_t dataEnd;    // of the last frame
  long wholeFrames;         // those without a flaw
  long strangeTags;         // those that are there and have one

  // The number of slots, by what lies between header and frames.
  unsigned int framesMax() const {
    const detail::RtvLayout layout = detail::rtvLayout(version);
    const std::uint64_t start = std::max<std::uint64_t>(dataStart, layout.headerSize);
    return static_cast<unsigned int>(
        std::min<std::uint64_t>((start - layout.headerSize) / layout.tagSize, kRtvFramesMax));
  }
  bool isExact() const { return isSizeOfTable(dataStart, detail::rtvLayout(version)); }
  void takePlaceOf(const LeftoverFrame& frame) {
    dataStart = std::min(dataStart, frame.offset);
    dataEnd = std::max(dataEnd, frame.offset + frame.size);
  }
};

Slot decodeSlot(const char* bytes, version_e version) {
  const auto stored = version == RTV_VER_02 ? detail::widened(detail::get<frametag_02ver_t>(bytes))
                                            : detail::get<frametag03Ver_t>(bytes);
  Slot slot;
  slot.isEmpty = std::all_of(bytes, bytes + detail::rtvLayout(version).tagSize,
                             [](char byte) { return byte == '\0'; });
  slot.frame.offset = stored.data_offset;
  slot.frame.size = stored.data_length;
  slot.tag.timeFlag = stored.time_flag;
  slot.tag.x = stored.x;
  slot.tag.y = stored.y;
  slot.tag.z = stored.z;
  slot.tag.relativeDistance = stored.relative_distance;
  slot.tag.speed = stored.speed;
  slot.tag.direction = stored.direction;
  if (version == RTV_VER_04) slot.tag.can = detail::get<can_data_io>(bytes + detail::kCanAt);
  return slot;
}

// Why the tag leads to no frame; null if it does.
const char* flawOf(const Slot& slot, std::uint64_t slotEnd, const FileBytes& file) {
  const LeftoverFrame& frame = slot.frame;
  if (slot.isEmpty) return "the tag is missing";
  if (frame.offset < slotEnd) return "the tag points into the tags";
  if (frame.offset >= file.size()) return "the file ends before it";
  if (frame.size == 0) return "the tag is not whole";
  return beginsAsJpeg(startOf(frame, file)) ? nullptr : "the tag points to no JPEG picture";
}

Table readTable(const FileBytes& file, const std::string& front, version_e version) {
  const detail::RtvLayout layout = detail::rtvLayout(version);
  Table table{version, {}, file.size(), 0, 0, 0};
  SharedBytes shared(file);
  for (unsigned int i = 0; i < kRtvFramesMax; ++i) {
    const std::uint64_t slotEnd = layout.tagAt(i + 1);
    if (slotEnd > table.dataStart || slotEnd > front.size()) break;
    Slot slot = decodeSlot(front.data() + layout.tagAt(i), version);
    slot.frame.flaw = flawOf(slot, slotEnd, file);
    clip(slot.frame, file);
    if (slot.frame.flaw == nullptr && shared.repeats({slot.frame.offset, slot.frame.size})) {
      slot.frame.flaw = kSharedWords;
    }
    if (slot.frame.flaw == nullptr) {
      ++table.wholeFrames;
      table.takePlaceOf(slot.frame);
    } else if (!slot.isEmpty) {
      ++table.strangeTags;
      // The first frame tells the size of the table even if it is damaged itself.
      const bool isPlace = slot.frame.offset >= slotEnd && slot.frame.size > 0;
      if (i == 0 && isPlace && isSizeOfTable(slot.frame.offset, layout)) {
        table.takePlaceOf(slot.frame);
      }
    }
    table.slots.push_back(slot);
  }
  while (!table.slots.empty() && table.slots.back().isEmpty) table.slots.pop_back();
  return table;
}

// Whether it is the likelier one. Tags of versions 03 and 04 begin alike, so that a single frame
// leaves it to the size of the table and to the CAN block, which says its own length.
bool isLikelier(const Table& one, const Table& other) {
  const auto rank = [](const Table& table) {
    const bool hasCan = table.version == RTV_VER_04 && !table.slots.empty() &&
                        table.slots[0].tag.can.can_data_length == sizeof(can_data_io) - 2;
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

}  // namespace

Leftover findRtvLeftover(const FileBytes& file, std::optional<version_e> version) {
  const std::string front = file.read(0, detail::rtvLayout(RTV_VER_04).tagAt(kRtvFramesMax));
  Table table = readTable(file, front, version.value_or(RTV_VER_03));
  if (!version) {
    for (const version_e other : {RTV_VER_02, RTV_VER_04}) {
      Table candidate = readTable(file, front, other);
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
  for (const Slot& slot : table.slots) {
    leftover.frames.push_back(slot.frame);
    leftover.frames.back().number = leftover.framesCount++;
    leftover.tags.push_back(slot.tag);
  }
  if (table.wholeFrames > 0) leftover.strayBytes = file.size() - table.dataEnd;
  return leftover;
}

}  // namespace velmar::toolkit
