// Writes a RecordFile to the log as readable text.
#include <cstring>

#include "container/rtv/RtvLayout.h"
#include "velmar_logger/velmar_logger.h"
#include "velmar_video/rtv/RecordFile.h"

using namespace velmar::detail;

namespace {

constexpr char kTag[] = "RecordFile";

std::string canText(const RecordFile::frametag_t& tag) {
  if (tag.pCan() == nullptr) return "";
  return can_data_toString(reinterpret_cast<can_data_io*>(tag.pCan()), tag.can_size());
}

}  // namespace

void RecordFile::dump() {
  switch (version_) {
    case RTV_VER_02:
      return dump_ver02();
    case RTV_VER_03:
      return dump_ver03();
    case RTV_VER_04:
      return dump_ver04();
    default:
      velmar_logger::e(kTag, "RTV Version Error: %d", version_);
  }
}

void RecordFile::dump_ver02() {
  velmar_logger::i(kTag, "filename: %s", fileName_.c_str());
  dumpHeader(RTV_VER_02);
  for (std::size_t i = 0; i < tagsVer02_.size(); ++i) {
    const frametag_02ver_t& tag = tagsVer02_[i];
    velmar_logger::i(kTag, "frame_tag[%d]: ", static_cast<int>(i));
    velmar_logger::i(kTag,
                     " time_flag: %d, data_offset: %lu, data_length: %u, relative_poistion: "
                     "(x: %d, y: %d), relative_distance: %d, speed: %u, direction: %u",
                     tag.time_flag, tag.data_offset, tag.data_length, signed24(tag.x),
                     signed24(tag.y), signed24(tag.relative_distance), tag.speed, tag.direction);
  }
}

void RecordFile::dump_ver03() {
  // On purpose only this version is named in its first line.
  velmar_logger::i(kTag, "v03 filename: %s", fileName_.c_str());
  dumpHeader(RTV_VER_03);
  for (std::size_t i = 0; i < tagsVer03_.size(); ++i) {
    const frametag03Ver_t& tag = tagsVer03_[i];
    velmar_logger::i(kTag, "frame_tag[%d]: ", static_cast<int>(i));
    velmar_logger::i(kTag,
                     " time_flag: %d, data_offset: %lu, data_length: %u, relative_poistion: "
                     "(x: %d, y: %d, z: %d), relative_distance: %u, speed: %u, direction: %u",
                     tag.time_flag, tag.data_offset, tag.data_length, tag.x, tag.y, tag.z,
                     tag.relative_distance, tag.speed, tag.direction);
  }
}

void RecordFile::dump_ver04() {
  velmar_logger::i(kTag, "filename: %s", fileName_.c_str());
  dumpHeader(RTV_VER_04);
  for (std::size_t i = 0; i < tags_.size(); ++i) {
    const frametag_t& tag = tags_[i];
    velmar_logger::i(kTag, "frame_tag[%d]: ", static_cast<int>(i));
    velmar_logger::i(
        kTag,
        " time_flag: %d, data_offset: %lu, data_length: %u, relative_poistion: (x: %d, y: %d, "
        "z: %d), relative_distance: %u, speed: %u, direction: %u, CAN: %s",
        tag.time_flag(), tag.data_offset(), tag.data_length(), tag.x(), tag.y(), tag.z(),
        tag.relative_distance(), tag.speed(), tag.direction(), canText(tag).c_str());
  }
}

void RecordFile::dumpHeader(version_e version) const {
  const header_t& header = headerOf(version);
  const std::string magic(header.magic_code,
                          ::strnlen(header.magic_code, sizeof header.magic_code));
  velmar_logger::i(kTag, "magic_code: %s", magic.c_str());
  if (version != RTV_VER_02) velmar_logger::i(kTag, "flags: 0x%.2x", header.flags);
  velmar_logger::i(kTag, "version: %u.%u", header.version_major, header.version_minor);
  velmar_logger::i(kTag, "device_id: ");
  for (const unsigned char byte : header.device_id) velmar_logger::i(kTag, "%.2x", byte);
  velmar_logger::i(kTag, "\n");
  velmar_logger::i(kTag, "start_time: %ld", static_cast<long>(header.start_time));
  if (version == RTV_VER_02) {
    velmar_logger::i(kTag, "start_position: lng %d, lat %d", header.lng, header.lat);
  } else {
    velmar_logger::i(kTag, "start_position: lng %d, lat %d, alt %d", header.lng, header.lat,
                     header.alt);
  }
  velmar_logger::i(kTag, "frames_count: %u", header.frames_count);
  velmar_logger::i(kTag, "frames_max: %u", header.frames_max);
  velmar_logger::i(kTag, "video_resolution: width %u, height %u", header.width, header.height);
  velmar_logger::i(kTag, "frame_format: %u", header.frame_format);
  velmar_logger::i(kTag, "frame_codec: %u", header.frame_codec);
  velmar_logger::i(kTag, "taggging_flags: 0x%.8x\n", header.tagging_flags);
}
