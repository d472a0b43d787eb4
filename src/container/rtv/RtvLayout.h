/// The places of all fields in an RTV file: those that the three versions share, and those that
/// differ. The fields inside a tag are in RecordFile.h, those inside a CAN block in CanData.h.
#ifndef VELMAR_RTV_RTV_LAYOUT_H
#define VELMAR_RTV_RTV_LAYOUT_H

#include <cstring>
#include <string_view>

#include "base/Bytes.h"

#include "velmar_video/rtv/CanData.h"
#include "velmar_video/rtv/RecordFile.h"

namespace velmar::detail {

/// What the files of every version begin with, followed by zeros.
constexpr std::string_view kRtvMagic = "velmar.rtv";

// Offsets in the header that all versions share, bytes.
constexpr unsigned int kMagicCodeAt = 0;
constexpr unsigned int kFlagsAt = 11;  ///< versions 03 and 04; the last byte of the magic in 02
constexpr unsigned int kVersionMajorAt = 12;
constexpr unsigned int kVersionMinorAt = 13;
constexpr unsigned int kDeviceIdAt = 14;
constexpr unsigned int kStartTimeAt = 38;
constexpr unsigned int kLngAt = 46;
constexpr unsigned int kLatAt = 50;
constexpr unsigned int kAltAt = 54;  ///< versions 03 and 04

/// What differs between the versions, in bytes.
struct RtvLayout {
  unsigned int headerSize;
  unsigned int tagSize;
  unsigned int magicSize;  ///< with its terminator
  bool hasFlagsAndAltitude;

  // The header ends with the same fields in every version.
  constexpr unsigned int framesCountAt() const { return headerSize - 14; }
  constexpr unsigned int framesMaxAt() const { return headerSize - 12; }
  constexpr unsigned int widthAt() const { return headerSize - 10; }
  constexpr unsigned int heightAt() const { return headerSize - 8; }
  constexpr unsigned int frameFormatAt() const { return headerSize - 6; }
  constexpr unsigned int frameCodecAt() const { return headerSize - 5; }
  constexpr unsigned int taggingFlagsAt() const { return headerSize - 4; }

  /// Offset of a frame's tag from the start of the file.
  constexpr unsigned long tagAt(unsigned int index) const {
    return headerSize + static_cast<unsigned long>(index) * tagSize;
  }
};

constexpr unsigned long kMicrosecondsPerMillisecond = 1000;  ///< files have the latter

constexpr unsigned int kRtvHeaderSizeMax = 72;  ///< bytes, of any version

/// The layout of a version. Every value but RTV_VER_02 and RTV_VER_03 stands for version 04.
constexpr RtvLayout rtvLayout(version_e version) {
  switch (version) {
    case RTV_VER_02:
      return {68, 29, 12, false};
    case RTV_VER_03:
      return {72, 36, 11, true};
    default:
      return {72, 145, 11, true};
  }
}

/// The version that the minor number of a header stands for, which is 1 to 4.
constexpr version_e rtvVersion(unsigned int minor) {
  return minor <= 2 ? RTV_VER_02 : minor == 3 ? RTV_VER_03 : RTV_VER_04;
}

/// Whether the field is one that modifiers write.
enum class Edited { No, Yes };

/// Calls `visit(offset, member, Edited)` for each field of the version's header except the magic
/// code. The flags come first, since they give the byte order of the others.
/// \param header  a RecordFile::header_t
template <typename Header, typename Visit>
void visitRtvHeader(version_e version, Header& header, Visit visit) {
  const RtvLayout layout = rtvLayout(version);
  if (layout.hasFlagsAndAltitude) visit(kFlagsAt, header.flags, Edited::No);
  visit(kVersionMajorAt, header.version_major, Edited::No);
  visit(kVersionMinorAt, header.version_minor, Edited::No);
  visit(kDeviceIdAt, header.device_id, Edited::Yes);
  visit(kStartTimeAt, header.start_time, Edited::Yes);
  visit(kLngAt, header.lng, Edited::No);
  visit(kLatAt, header.lat, Edited::No);
  if (layout.hasFlagsAndAltitude) visit(kAltAt, header.alt, Edited::No);
  visit(layout.framesCountAt(), header.frames_count, Edited::No);
  visit(layout.framesMaxAt(), header.frames_max, Edited::No);
  visit(layout.widthAt(), header.width, Edited::Yes);
  visit(layout.heightAt(), header.height, Edited::Yes);
  visit(layout.frameFormatAt(), header.frame_format, Edited::No);
  visit(layout.frameCodecAt(), header.frame_codec, Edited::No);
  visit(layout.taggingFlagsAt(), header.tagging_flags, Edited::Yes);
}

/// Offset of the CAN block in a tag of version 04, which begins like a tag of version 03.
constexpr unsigned int kCanAt = sizeof(frametag03Ver_t);

/// What a CAN block says that its length is: its size without that field.
constexpr unsigned short kCanLength = 107;
static_assert(kCanLength == sizeof(can_data_io) - sizeof can_data_io::can_data_length);

/// A 24-bit field of a version 02 tag: the low three bytes, least significant first.
inline void put24(unsigned char (&at)[3], unsigned int value) {
  std::memcpy(at, &value, sizeof at);
}
/// The same, read as signed.
inline int signed24(const unsigned char (&bytes)[3]) {
  // Shifting up and down again extends the sign.
  const unsigned int value = bytes[0] | bytes[1] << 8 | static_cast<unsigned int>(bytes[2]) << 16;
  return static_cast<int>(value << 8) >> 8;
}

/// The numbers of a version 02 tag in the fields of later versions; z is 0.
inline frametag03Ver_t widened(const frametag_02ver_t& tag) {
  return {tag.time_flag,
          tag.data_offset,
          tag.data_length,
          signed24(tag.x),
          signed24(tag.y),
          0,
          static_cast<unsigned int>(signed24(tag.relative_distance)),
          tag.speed,
          tag.direction};
}

/// The tag in version 02, which keeps the low 24 bits of x, y and the distance, and no z.
inline frametag_02ver_t narrowed(const frametag03Ver_t& tag) {
  frametag_02ver_t narrow{};
  narrow.time_flag = tag.time_flag;
  narrow.data_offset = tag.data_offset;
  narrow.data_length = tag.data_length;
  put24(narrow.x, static_cast<unsigned int>(tag.x));
  put24(narrow.y, static_cast<unsigned int>(tag.y));
  put24(narrow.relative_distance, tag.relative_distance);
  narrow.speed = tag.speed;
  narrow.direction = tag.direction;
  return narrow;
}

}  // namespace velmar::detail

#endif
