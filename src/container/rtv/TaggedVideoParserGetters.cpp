// The getters for the values of header and tags.
#include "container/rtv/CanByteOrder.h"
#include "container/rtv/RtvLayout.h"
#include "container/rtv/TaggedVideoParserState.h"
#include "velmar_logger/velmar_logger.h"
#include "velmar_video/rtv/RecordFileToolkit.h"
#include "velmar_video/rtv/TaggedVideoParser.h"

using namespace velmar::detail;

namespace {

constexpr float kHundredths = 100.0F;

// In 32 bits, so the lowest value is its own magnitude.
unsigned int magnitude(int value) {
  const auto bits = static_cast<unsigned int>(value);
  return value < 0 ? 0U - bits : bits;
}

}  // namespace

ErrorCode_e TaggedVideoParser::loadAllFromFile() { return checkInit(); }

ErrorCode_e TaggedVideoParser::getVersion(version_e& version) {
  if (const auto code = checkInit(); code != RTV_ERR_SUCCESS) return code;
  version = version_;
  return RTV_ERR_SUCCESS;
}

template <typename T>
ErrorCode_e TaggedVideoParser::getHeaderField(T header_t::*field, T& value) const {
  if (const auto code = checkInit(); code != RTV_ERR_SUCCESS) return code;
  value = headerOf(version_).*field;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getFramesCount(unsigned short& count) {
  return getHeaderField(&header_t::frames_count, count);
}

ErrorCode_e TaggedVideoParser::getFramesMax(unsigned short& max) {
  return getHeaderField(&header_t::frames_max, max);
}

ErrorCode_e TaggedVideoParser::getImageResolution(unsigned short& width, unsigned short& height) {
  if (const auto code = getHeaderField(&header_t::width, width); code != RTV_ERR_SUCCESS)
    return code;
  return getHeaderField(&header_t::height, height);
}

ErrorCode_e TaggedVideoParser::getColorFormat(format_e& format) {
  return getHeaderField(&header_t::frame_format, format);
}

ErrorCode_e TaggedVideoParser::getCodec(codec_e& codec) {
  return getHeaderField(&header_t::frame_codec, codec);
}

ErrorCode_e TaggedVideoParser::getStartTime(unsigned long& startTime) {
  return getHeaderField(&header_t::start_time, startTime);
}

ErrorCode_e TaggedVideoParser::getTaggingFlags(unsigned int& flags) {
  return getHeaderField(&header_t::tagging_flags, flags);
}

ErrorCode_e TaggedVideoParser::getDeviceId(unsigned char* buf, unsigned int size) {
  if (const auto code = checkInit(); code != RTV_ERR_SUCCESS) return code;
  if (size < kRtvDeviceIdSize) return RTV_ERR_INVALID_PARAMETER;
  if (buf == nullptr) return RTV_ERR_BUFFER_NOT_ALLOCATED;
  std::memcpy(buf, headerOf(version_).device_id, kRtvDeviceIdSize);
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getImageColorFormat(format_e& format) {
  format = RTV_FMT_BGR;
  return RTV_ERR_SUCCESS;
}

double TaggedVideoParser::NDS2Degree(int v) { return RecordFileToolkit::NDS2Degree(v); }

ErrorCode_e TaggedVideoParser::getStdPosition(double& lat, double& lng, double& alt) {
  if (const auto code = checkInit(); code != RTV_ERR_SUCCESS) return code;
  const header_t& header = headerOf(version_);
  lat = NDS2Degree(header.lat);
  lng = NDS2Degree(header.lng);
  alt = version_ == RTV_VER_02 ? 0.0 : version_ == RTV_VER_03 ? header.alt : header.alt / 100.0;
  velmar_logger::i(kTaggedVideoParserTag, "getStdPosition: lat = %f, lng = %f, alt = %f", lat, lng,
                   alt);
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getStartPosition(int& lng, int& lat, int& alt) {
  if (const auto code = checkInit(); code != RTV_ERR_SUCCESS) return code;
  const header_t& header = headerOf(version_);
  lng = header.lng;
  lat = header.lat;
  alt = header.alt;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::checkIndex(unsigned short index) {
  unsigned short count = 0;
  if (const auto code = getFramesCount(count); code != RTV_ERR_SUCCESS) return code;
  return index < count ? RTV_ERR_SUCCESS : RTV_ERR_INVALID_PARAMETER;
}

ErrorCode_e TaggedVideoParser::checkCorruption(unsigned short index, unsigned short& rIndex) {
  rIndex = index;
  return RTV_ERR_SUCCESS;
}

frametag03Ver_t TaggedVideoParser::tagAt(unsigned short index) const {
  if (version_ == RTV_VER_03) return tagsVer03_[index];
  if (version_ == RTV_VER_02) return widened(tagsVer02_[index]);
  const frametag_t& tag = tags_[index];
  return {tag.time_flag(), tag.data_offset(),       tag.data_length(), tag.x(),        tag.y(),
          tag.z(),         tag.relative_distance(), tag.speed(),       tag.direction()};
}

ErrorCode_e TaggedVideoParser::getTag(unsigned short index, frametag03Ver_t& tag) {
  if (const auto code = checkIndex(index); code != RTV_ERR_SUCCESS) return code;
  tag = tagAt(index);
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getTimeFlag(unsigned short index, int& timeFlag) {
  frametag03Ver_t tag;
  if (const auto code = getTag(index, tag); code != RTV_ERR_SUCCESS) return code;
  timeFlag = tag.time_flag;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getTimeStamp(unsigned short index, unsigned long& timestamp) {
  frametag03Ver_t tag;
  if (const auto code = getTag(index, tag); code != RTV_ERR_SUCCESS) return code;
  const unsigned long epoch = version_ == RTV_VER_02 ? kRtvVersion02Epoch : 0;
  timestamp = epoch + headerOf(version_).start_time + magnitude(tag.time_flag);
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getRelPosition(unsigned short index, float& a, float& b, float& c) {
  frametag03Ver_t tag;
  if (const auto code = getTag(index, tag); code != RTV_ERR_SUCCESS) return code;
  a = static_cast<float>(tag.y) / kHundredths;
  b = static_cast<float>(tag.x) / kHundredths;
  c = static_cast<float>(tag.z) / kHundredths;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getRelDistance(unsigned short index, float& distance) {
  frametag03Ver_t tag;
  if (const auto code = getTag(index, tag); code != RTV_ERR_SUCCESS) return code;
  // Signed in version 02 only.
  const long stored = version_ == RTV_VER_02 ? static_cast<int>(tag.relative_distance)
                                             : static_cast<long>(tag.relative_distance);
  distance = static_cast<float>(stored) / kHundredths;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getSpeed(unsigned short index, float& speed) {
  frametag03Ver_t tag;
  if (const auto code = getTag(index, tag); code != RTV_ERR_SUCCESS) return code;
  speed = static_cast<float>(tag.speed) / kHundredths;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getDirection(unsigned short index, float& direction) {
  frametag03Ver_t tag;
  if (const auto code = getTag(index, tag); code != RTV_ERR_SUCCESS) return code;
  direction = tag.direction;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getCAN(unsigned short index, can_data& can) {
  if (const auto code = checkInit(); code != RTV_ERR_SUCCESS) return code;
  if (version_ != RTV_VER_04) {
    can_data_io_purge(reinterpret_cast<can_data_io*>(&can));
    can_data_init_ptr(&can, false);
    return RTV_ERR_SUCCESS;
  }
  if (const auto code = checkIndex(index); code != RTV_ERR_SUCCESS) return code;
  can_data_assign(can, *tags_[index].pCan());
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getCANRecord(unsigned short index, can_data_io& record) {
  if (const auto code = checkIndex(index); code != RTV_ERR_SUCCESS) return code;
  if (version_ != RTV_VER_04) {
    can_data_io_purge(&record);
    return RTV_ERR_SUCCESS;
  }
  record = get<can_data_io>(state_->mMapAddr.data() + rtvLayout(version_).tagAt(index) + kCanAt);
  // By this file's own flags, not by those of the process's first file.
  const bool fileIsBigEndian = (header_.flags & 1) != 0;
  if (fileIsBigEndian != isCPUBigEndian()) reverseCanFields(record, true, true, true);
  return RTV_ERR_SUCCESS;
}
