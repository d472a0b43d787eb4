#include "toolkit/rescue/RtvTable.h"

#include <cstddef>
#include <string_view>

#include "container/rtv/RtvLayout.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/recording/FramePlaces.h"
#include "toolkit/rescue/UnrecordedFrames.h"

namespace velmar::toolkit {

namespace {

bool isZero(std::string_view bytes) {
  return bytes.find_first_not_of('\0') == std::string_view::npos;
}

// Whether the tags of a number of slots end there.
bool isSizeOfTable(std::uint64_t end, const detail::RtvLayout& layout) {
  return end >= layout.headerSize && (end - layout.headerSize) % layout.tagSize == 0;
}

// Bytes of a tag, by their offset in it.
struct Part {
  std::size_t from = 0;
  std::size_t to = 0;

  bool overlaps(Part other) const { return from < other.to && other.from < to; }
};

constexpr Part kTimePart{0, offsetof(frametag03Ver_t, data_offset)};
constexpr Part kPlacePart{kTimePart.to, offsetof(frametag03Ver_t, x)};
constexpr Part kCanPart{detail::kCanAt, detail::kCanAt + sizeof(can_data_io)};

// Behind the place come x, y, z (not in version 02), distance, speed and direction.
std::vector<Part> fieldsOf(version_e version) {
  if (version == RTV_VER_02) {
    return {kTimePart, kPlacePart, {16, 19}, {19, 22}, {22, 25}, {25, 27}, {27, 29}};
  }
  return {kTimePart, kPlacePart, {16, 20}, {20, 24}, {24, 28},
          {28, 32},  {32, 34},   {34, 36}, kCanPart};
}

// The part of a tag across a page's border that lies on a lost page. A lost page shows as zeros,
// which cover the neighbouring tag, too. A tag may really end in zeros, and behind the last tag
// there are only zeros: so the tag before it must not end in zeros as well.
Part lostPart(std::string_view front, const detail::RtvLayout& layout, unsigned int i) {
  const std::uint64_t at = layout.tagAt(i);
  const std::size_t border = kPage - at % kPage;
  if (i == 0 || border >= layout.tagSize || layout.tagAt(i + 1) > front.size()) return {};
  const std::string_view tag = front.substr(at, layout.tagSize);
  const std::string_view before = front.substr(layout.tagAt(i - 1), layout.tagSize);
  const std::string_view next = front.substr(layout.tagAt(i + 1), layout.tagSize);
  if (isZero(tag)) return {};
  if (isZero(tag.substr(0, border)) && isZero(before)) return {0, border};
  if (isZero(tag.substr(border)) && isZero(next) && !isZero(before.substr(border))) {
    return {border, layout.tagSize};
  }
  return {};
}

RtvSlot decodeSlot(const char* bytes, version_e version) {
  const auto stored = version == RTV_VER_02 ? detail::widened(detail::get<frametag_02ver_t>(bytes))
                                            : detail::get<frametag03Ver_t>(bytes);
  RtvSlot slot;
  slot.frame.offset = stored.data_offset;
  slot.frame.size = stored.data_length;
  slot.tag = FrameTag::of(stored);
  slot.tag.timeFlag = stored.time_flag;
  if (version == RTV_VER_04) slot.tag.can = detail::get<can_data_io>(bytes + detail::kCanAt);
  return slot;
}

RtvSlot readSlot(std::string_view front, version_e version, unsigned int i) {
  const detail::RtvLayout layout = detail::rtvLayout(version);
  std::string bytes(front.substr(layout.tagAt(i), layout.tagSize));
  if (isZero(bytes)) return {};
  const Part lost = lostPart(front, layout, i);
  if (lost.to > 0) {
    for (const Part& field : fieldsOf(version)) {
      const std::size_t size = field.to - field.from;
      if (lost.overlaps(field)) bytes.replace(field.from, size, size, '\0');
    }
  }
  RtvSlot slot = decodeSlot(bytes.data(), version);
  slot.isEmpty = false;
  slot.isTorn = lost.to > 0;
  if (lost.overlaps(kTimePart)) slot.tag.timeFlag.reset();
  if (lost.overlaps(kCanPart)) can_data_io_purge(&slot.tag.can);
  return slot;
}

// Why the tag leads to no frame; null if it does.
const char* whyLost(const RtvSlot& slot, std::uint64_t slotEnd, const FileBytes& file) {
  const LeftoverFrame& frame = slot.frame;
  if (slot.isEmpty) return "the tag is missing";
  if (frame.size == 0) return "the tag is not whole";
  if (frame.offset < slotEnd) return "the tag points into the tags";
  if (frame.offset >= file.size()) return "the file ends before it";
  return beginsAsJpeg(startOf(frame, file)) ? nullptr : "the tag points to no JPEG picture";
}

// Where the first of at most so many pictures lies of which there is no tag; `to` if there is none.
std::uint64_t firstPicture(const FileBytes& file, const detail::RtvLayout& layout, std::size_t most,
                           std::uint64_t from, std::uint64_t to) {
  std::vector<LeftoverFrame> pictures = findPictures(file, from, to);
  if (pictures.size() > most) {
    pictures.erase(pictures.begin(), pictures.end() - static_cast<std::ptrdiff_t>(most));
  }
  for (const LeftoverFrame& picture : pictures) {
    if (isSizeOfTable(picture.offset, layout)) return picture.offset;
  }
  return pictures.empty() ? to : pictures.front().offset;
}

}  // namespace

unsigned int RtvTable::framesMax() const {
  const detail::RtvLayout layout = detail::rtvLayout(version);
  const std::uint64_t start = std::max<std::uint64_t>(dataStart, layout.headerSize);
  return static_cast<unsigned int>(
      std::min<std::uint64_t>((start - layout.headerSize) / layout.tagSize, kRtvFramesMax));
}

bool RtvTable::isExact() const { return isSizeOfTable(dataStart, detail::rtvLayout(version)); }

RtvTable readRtvTable(const FileBytes& file, const std::string& front, version_e version) {
  const detail::RtvLayout layout = detail::rtvLayout(version);
  RtvTable table{version, {}, file.size()};
  SharedBytes shared(file);
  for (unsigned int i = 0; i < kRtvFramesMax; ++i) {
    const std::uint64_t slotEnd = layout.tagAt(i + 1);
    if (slotEnd > table.dataStart || slotEnd > front.size()) break;
    RtvSlot slot = readSlot(front, version, i);
    slot.frame.lostBecause = whyLost(slot, slotEnd, file);
    clip(slot.frame, file);
    if (slot.frame.lostBecause == nullptr && shared.repeats({slot.frame.offset, slot.frame.size})) {
      slot.frame.lostBecause = kSharedWords;
    }
    const std::uint64_t offset = slot.frame.offset;
    if (slot.frame.lostBecause == nullptr) {
      ++table.wholeFrames;
      const bool isFirstKnown = i > 0 && table.dataStart == file.size();
      table.dataStart = std::min(
          table.dataStart, isFirstKnown ? firstPicture(file, layout, i, slotEnd, offset) : offset);
    } else if (!slot.isEmpty) {
      ++table.strangeTags;
      // The first frame tells the size of the table even if it is damaged itself.
      const bool isPlace = offset >= slotEnd && slot.frame.size > 0;
      if (i == 0 && isPlace && isSizeOfTable(offset, layout)) table.dataStart = offset;
    }
    table.slots.push_back(slot);
  }
  while (!table.slots.empty() && table.slots.back().isEmpty) table.slots.pop_back();
  return table;
}

}  // namespace velmar::toolkit
