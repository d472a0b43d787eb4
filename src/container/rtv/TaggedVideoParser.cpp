#include "velmar_video/rtv/TaggedVideoParser.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <turbojpeg.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>

#include "common/Guarded.h"
#include "common/ImageGeometry.h"
#include "container/rtv/CanByteOrder.h"
#include "container/rtv/RtvLayout.h"
#include "container/rtv/TaggedVideoParserState.h"
#include "velmar_logger/velmar_logger.h"
#include "velmar_video/TypeConversion.h"
#include "velmar_video/rtv/RecordFileToolkit.h"

namespace {

constexpr char kTag[] = "TaggedVideoParser";
constexpr char kIdentifier[] = "velmar";
constexpr float kHundredths = 100.0F;

template <typename T>
T valueAt(const unsigned char* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

// In 32 bits, where the lowest value is its own magnitude.
unsigned int magnitude(int value) {
  const auto bits = static_cast<unsigned int>(value);
  return value < 0 ? 0U - bits : bits;
}

}  // namespace

// For callers: a parser may outlive them.
const std::string TaggedVideoParser::IDENTIFIER = kIdentifier;
const std::string TaggedVideoParser::TAG = kTag;

TaggedVideoParser::TaggedVideoParser() : state_(new (std::nothrow) State) {}

TaggedVideoParser::~TaggedVideoParser() { clear(); }

ErrorCode_e TaggedVideoParser::init(const char* path) { return init(path, {false, kTag}); }

ErrorCode_e TaggedVideoParser::init(const char* path, const InitMode& mode) {
  if (state_ == nullptr) return RTV_ERR_BUFFER_NOT_ALLOCATED;
  const std::lock_guard lock(state_->mMutex);
  if (const auto code = beforeInitCheck(path, mode)) return code;
  const auto result = guarded(mode.tag, "init", RTV_ERR_BUFFER_NOT_ALLOCATED, [&] {
    if (const auto code = open(path, mode)) return code;
    const auto code = load(mode);
    if (code == RTV_ERR_SUCCESS) fileName_ = path;
    return code;
  });
  if (result != RTV_ERR_SUCCESS) release(mode.tag);
  return result;
}

ErrorCode_e TaggedVideoParser::clear() {
  if (state_ == nullptr) return RTV_ERR_SUCCESS;
  const std::lock_guard lock(state_->mMutex);
  release(kTag);
  fileName_.clear();
  RecordFile::clear();
  return RTV_ERR_SUCCESS;
}

void TaggedVideoParser::release(const char* tag) {
  if (!state_->mMapAddr.unmap()) {
    velmar_logger::e(tag, "munmap fail: %s", std::strerror(errno));
  }
  state_->mFileFd.close();
  state_->mFileSize = 0;
}

ErrorCode_e TaggedVideoParser::beforeInitCheck(const char* path) {
  return beforeInitCheck(path, {false, kTag});
}

ErrorCode_e TaggedVideoParser::beforeInitCheck(const char* path, const InitMode& mode) const {
  if (isInitialised()) {
    velmar_logger::e(mode.tag, "TaggedVideoParser::init: Error: already inited by %s\n",
                     fileName_.c_str());
    return RTV_ERR_DUPLICATE_INIT;
  }
  if (path == nullptr) return RTV_ERR_NULL_POINTER;
  if (*path == '\0') return RTV_ERR_INVALID_FILE_NAME;
  if (::access(path, F_OK) != 0) return RTV_ERR_FILE_NOT_EXIST;
  if (::access(path, R_OK) != 0) return RTV_ERR_STATUS_FILE_CANNOT_READ;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::open(const char* path, const InitMode& mode) {
  struct stat status {};
  if (::stat(path, &status) != 0 || status.st_size == 0) return RTV_ERR_FILE_SIZE_IS_ZERO;
  FileDescriptor file(path, mode.writable ? O_RDWR : O_RDONLY);
  if (!file.isOpen()) {
    velmar_logger::e(mode.tag, "TaggedVideoParser::init: Error: open fail: %s, %s\n", path,
                     std::strerror(errno));
    return RTV_ERR_FILE_OPEN_FAIL;
  }
  const auto access = mode.writable ? MemoryMap::Access::ReadWrite : MemoryMap::Access::ReadOnly;
  // Another file may have got the path meanwhile.
  const bool isKnown = ::fstat(file.get(), &status) == 0;
  const auto size = static_cast<unsigned long>(status.st_size);
  if (!isKnown || !state_->mMapAddr.map(file.get(), size, access)) {
    velmar_logger::e(mode.tag, "mmap fail: %s", std::strerror(errno));
    if (isKnown) file.release();  // stays open where the map is refused: part of the contract
    return RTV_ERR_FILE_MMAP_FAIL;
  }
  state_->mFileFd = std::move(file);
  state_->mFileSize = size;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::load(const InitMode& mode) {
  unsigned char header[kRtvHeaderSizeMax];
  copyBytes(0, sizeof header, header);
  if (!readVersion(header, mode) || !readIdentifier(header)) return RTV_ERR_NOT_VELMAR_VIDEO_FORMAT;
  readHeader(header);
  if (const auto code = readTags()) return code;
  return checkComplete(mode);
}

// What a file that is cut short has lost reads as zeros.
void TaggedVideoParser::copyBytes(unsigned long offset, std::size_t size,
                                  unsigned char* bytes) const {
  const unsigned long fileSize = state_->mFileSize;
  const std::size_t there = offset < fileSize ? std::min<std::size_t>(size, fileSize - offset) : 0;
  if (there > 0) std::memcpy(bytes, state_->mMapAddr.data() + offset, there);
  std::memset(bytes + there, 0, size - there);
}

bool TaggedVideoParser::readVersion(const unsigned char* file, const InitMode& mode) {
  const unsigned int major = file[kVersionMajorAt];
  const unsigned int minor = file[kVersionMinorAt];
  if (major != 0 || minor < 1 || minor > 4) {
    velmar_logger::e(mode.tag, "version unknown: %u.%u\n", major, minor);
    return false;
  }
  version_ = minor <= 2 ? RTV_VER_02 : minor == 3 ? RTV_VER_03 : RTV_VER_04;
  return true;
}

bool TaggedVideoParser::readIdentifier(const unsigned char* file) {
  auto& magic = headerOf(version_).magic_code;
  std::memset(magic, 0, sizeof magic);
  if (std::memcmp(file, kIdentifier, std::strlen(kIdentifier)) != 0) return false;
  std::memcpy(magic, file + kMagicCodeAt, rtvLayout(version_).magicSize);
  return true;
}

void TaggedVideoParser::readHeader(const unsigned char* file) {
  const RtvLayout layout = rtvLayout(version_);
  header_t& header = headerOf(version_);
  // Version 02 is never swapped.
  const auto read = [&]<typename T>(T& field, unsigned int at) {
    const T stored = valueAt<T>(file + at);
    field = version_ == RTV_VER_02 ? stored : swauto(stored);
  };
  if (layout.hasFlagsAndAltitude) header.flags = file[kFlagsAt];  // before anything is swapped
  header.version_major = file[kVersionMajorAt];
  header.version_minor = file[kVersionMinorAt];
  std::memcpy(header.device_id, file + kDeviceIdAt, kRtvDeviceIdSize);
  read(header.start_time, kStartTimeAt);
  read(header.lng, kLngAt);
  read(header.lat, kLatAt);
  if (layout.hasFlagsAndAltitude) read(header.alt, kAltAt);
  read(header.frames_count, layout.framesCountAt());
  read(header.frames_max, layout.framesMaxAt());
  read(header.width, layout.widthAt());
  read(header.height, layout.heightAt());
  header.frame_format = static_cast<format_e>(file[layout.frameFormatAt()]);
  header.frame_codec = static_cast<codec_e>(file[layout.frameCodecAt()]);
  read(header.tagging_flags, layout.taggingFlagsAt());
}

bool TaggedVideoParser::hasTagTable() const {
  return rtvLayout(version_).tagAt(headerOf(version_).frames_count) <= state_->mFileSize;
}

ErrorCode_e TaggedVideoParser::readTags() {
  if (version_ == RTV_VER_02) tagsVer02_.clear();
  if (version_ == RTV_VER_03) tagsVer03_.clear();
  if (version_ == RTV_VER_04) tags_.clear();
  if (!hasTagTable()) return RTV_ERR_SUCCESS;  // and not complete, as is found next
  const unsigned int count = headerOf(version_).frames_count;
  const unsigned char* table = state_->mMapAddr.data() + rtvLayout(version_).headerSize;
  if (version_ == RTV_VER_02) {
    const auto* tags = reinterpret_cast<const frametag_02ver_t*>(table);
    tagsVer02_.assign(tags, tags + count);
    return RTV_ERR_SUCCESS;
  }
  if (version_ == RTV_VER_03) {
    const auto* tags = reinterpret_cast<const frametag03Ver_t*>(table);
    tagsVer03_.assign(tags, tags + count);
    if (mustSwapTag()) {
      for (frametag03Ver_t& tag : tagsVer03_) swauto(tag);
    }
    return RTV_ERR_SUCCESS;
  }
  return readTagsVer04(count);
}

ErrorCode_e TaggedVideoParser::readTagsVer04(unsigned int count) {
  const unsigned char* file = state_->mMapAddr.data();
  tags_.reserve(count);
  for (unsigned int i = 0; i < count; ++i) {
    frametag_t& tag = tags_.emplace_back(this);
    if (!tag.fill(file + rtvLayout(version_).tagAt(i), CAN_SIZE_ALIGNED)) {
      return RTV_ERR_BUFFER_NOT_ALLOCATED;
    }
    // The array is to hold what a copy of the tag holds, which aligns the block once more. Doing
    // that in place saves the second block.
    can_data_init_ptr(tag.pCan(), true);
  }
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::checkComplete(const InitMode& mode) const {
  const unsigned int count = headerOf(version_).frames_count;
  frametag03Ver_t last{};  // without frames: all zeros
  if (count > 0) {
    // Where the frame lies stands at the same place of the tag in every version.
    unsigned char bytes[sizeof last];
    copyBytes(rtvLayout(version_).tagAt(count - 1), sizeof bytes, bytes);
    last = valueAt<frametag03Ver_t>(bytes);
    if (version_ != RTV_VER_02 && mustSwapTag()) swauto(last);
  }
  const unsigned long offset = last.data_offset;
  const unsigned int length = last.data_length;
  const unsigned long fileSize = state_->mFileSize;
  if (hasTagTable() && offset <= fileSize && length == fileSize - offset) return RTV_ERR_SUCCESS;
  const bool isShorter = offset > fileSize || length > fileSize - offset;
  velmar_logger::e(mode.tag, "mFileSize: %lu %s (lastFrmOffset: %lu + lastFrmDatLen: %u)\n",
                   fileSize, isShorter ? "<" : ">", offset, length);
  return RTV_ERR_VIDEO_NOT_COMPLETE;
}

bool TaggedVideoParser::isInitialised() const {
  return state_ != nullptr && state_->mMapAddr.isMapped();
}

ErrorCode_e TaggedVideoParser::checkInit() const {
  return isInitialised() ? RTV_ERR_SUCCESS : RTV_ERR_NOT_INIT;
}

ErrorCode_e TaggedVideoParser::loadAllFromFile() { return checkInit(); }

ErrorCode_e TaggedVideoParser::getVersion(version_e& version) {
  if (const auto code = checkInit()) return code;
  version = version_;
  return RTV_ERR_SUCCESS;
}

template <typename T>
ErrorCode_e TaggedVideoParser::getHeaderField(T header_t::*field, T& value) const {
  if (const auto code = checkInit()) return code;
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
  if (const auto code = getHeaderField(&header_t::width, width)) return code;
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
  if (const auto code = checkInit()) return code;
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
  if (const auto code = checkInit()) return code;
  const header_t& header = headerOf(version_);
  lat = NDS2Degree(header.lat);
  lng = NDS2Degree(header.lng);
  alt = version_ == RTV_VER_02 ? 0.0 : version_ == RTV_VER_03 ? header.alt : header.alt / 100.0;
  velmar_logger::i(kTag, "getStdPosition: lat = %f, lng = %f, alt = %f", lat, lng, alt);
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getStartPosition(int& lng, int& lat, int& alt) {
  if (const auto code = checkInit()) return code;
  const header_t& header = headerOf(version_);
  lng = header.lng;
  lat = header.lat;
  alt = header.alt;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::checkIndex(unsigned short index) {
  unsigned short count = 0;
  if (const auto code = getFramesCount(count)) return code;
  return index < count ? RTV_ERR_SUCCESS : RTV_ERR_INVALID_PARAMETER;
}

ErrorCode_e TaggedVideoParser::checkCorruption(unsigned short index, unsigned short& rIndex) {
  rIndex = index;
  return RTV_ERR_SUCCESS;
}

frametag03Ver_t TaggedVideoParser::tagAt(unsigned short index) const {
  if (version_ == RTV_VER_03) return tagsVer03_[index];
  if (version_ == RTV_VER_02) {
    const frametag_02ver_t& tag = tagsVer02_[index];
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
  const frametag_t& tag = tags_[index];
  return {tag.time_flag(), tag.data_offset(),       tag.data_length(), tag.x(),        tag.y(),
          tag.z(),         tag.relative_distance(), tag.speed(),       tag.direction()};
}

ErrorCode_e TaggedVideoParser::getTag(unsigned short index, frametag03Ver_t& tag) {
  if (const auto code = checkIndex(index)) return code;
  tag = tagAt(index);
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getTimeFlag(unsigned short index, int& timeFlag) {
  frametag03Ver_t tag;
  if (const auto code = getTag(index, tag)) return code;
  timeFlag = tag.time_flag;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getTimeStamp(unsigned short index, unsigned long& timestamp) {
  frametag03Ver_t tag;
  if (const auto code = getTag(index, tag)) return code;
  const unsigned long epoch = version_ == RTV_VER_02 ? kRtvVersion02Epoch : 0;
  timestamp = epoch + headerOf(version_).start_time + magnitude(tag.time_flag);
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getRelPosition(unsigned short index, float& a, float& b, float& c) {
  frametag03Ver_t tag;
  if (const auto code = getTag(index, tag)) return code;
  a = static_cast<float>(tag.y) / kHundredths;
  b = static_cast<float>(tag.x) / kHundredths;
  c = static_cast<float>(tag.z) / kHundredths;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getRelDistance(unsigned short index, float& distance) {
  frametag03Ver_t tag;
  if (const auto code = getTag(index, tag)) return code;
  // Signed in version 02 only.
  const long stored = version_ == RTV_VER_02 ? static_cast<int>(tag.relative_distance)
                                             : static_cast<long>(tag.relative_distance);
  distance = static_cast<float>(stored) / kHundredths;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getSpeed(unsigned short index, float& speed) {
  frametag03Ver_t tag;
  if (const auto code = getTag(index, tag)) return code;
  speed = static_cast<float>(tag.speed) / kHundredths;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getDirection(unsigned short index, float& direction) {
  frametag03Ver_t tag;
  if (const auto code = getTag(index, tag)) return code;
  direction = tag.direction;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getCAN(unsigned short index, can_data& can) {
  if (const auto code = checkInit()) return code;
  if (version_ != RTV_VER_04) {
    can_data_io_purge(reinterpret_cast<can_data_io*>(&can));
    can_data_init_ptr(&can, false);
    return RTV_ERR_SUCCESS;
  }
  if (const auto code = checkIndex(index)) return code;
  can_data_assign(can, *tags_[index].pCan());
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getCANRecord(unsigned short index, can_data_io& record) {
  if (const auto code = checkIndex(index)) return code;
  if (version_ != RTV_VER_04) {
    can_data_io_purge(&record);
    return RTV_ERR_SUCCESS;
  }
  record = valueAt<can_data_io>(state_->mMapAddr.data() + rtvLayout(version_).tagAt(index) +
                                sizeof(frametag03Ver_t));
  // By this file's own flags, not by the latch.
  const bool fileIsBigEndian = (header_.flags & 1) != 0;
  if (fileIsBigEndian != isCPUBigEndian()) reverseCanFields(record, true, true, true);
  return RTV_ERR_SUCCESS;
}

void TaggedVideoParser::getRawImageRange(unsigned short index, unsigned long& offset,
                                         unsigned int& size, bool useCorruptionCheck,
                                         unsigned short* rIndex) {
  if (checkIndex(index) != RTV_ERR_SUCCESS) return;
  unsigned short chosen = index;
  if (useCorruptionCheck) checkCorruption(index, chosen);
  if (rIndex != nullptr) *rIndex = chosen;
  const frametag03Ver_t tag = tagAt(chosen);
  offset = tag.data_offset;
  size = tag.data_length;
}

ErrorCode_e TaggedVideoParser::getRawImageSize(unsigned short index, unsigned int& size,
                                               bool useCorruptionCheck) {
  if (const auto code = checkIndex(index)) return code;
  unsigned long offset = 0;
  getRawImageRange(index, offset, size, useCorruptionCheck, nullptr);
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::findBytes(unsigned long offset, unsigned int length,
                                         const unsigned char*& bytes) const {
  if (offset > state_->mFileSize || length > state_->mFileSize - offset) {
    return RTV_ERR_VIDEO_NOT_COMPLETE;
  }
  bytes = state_->mMapAddr.data() + offset;
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getRawImage(unsigned short index, unsigned int bufSize,
                                           unsigned char* buf) {
  if (const auto code = checkIndex(index)) return code;
  unsigned long offset = 0;
  unsigned int length = 0;
  getRawImageRange(index, offset, length, true, nullptr);
  if (length > bufSize) return RTV_ERR_INVALID_PARAMETER;
  if (buf == nullptr) return RTV_ERR_BUFFER_NOT_ALLOCATED;
  const unsigned char* bytes = nullptr;
  if (const auto code = findBytes(offset, length, bytes)) return code;
  std::memcpy(buf, bytes, length);
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getRawImage(unsigned short index, std::string& out) {
  if (const auto code = checkIndex(index)) return code;
  unsigned long offset = 0;
  unsigned int length = 0;
  getRawImageRange(index, offset, length, true, nullptr);
  const unsigned char* bytes = nullptr;
  if (const auto code = findBytes(offset, length, bytes)) return code;
  return guarded(kTag, "getRawImage", RTV_ERR_BUFFER_NOT_ALLOCATED, [&] {
    out.assign(reinterpret_cast<const char*>(bytes), length);
    return RTV_ERR_SUCCESS;
  });
}

tjscalingfactor TaggedVideoParser::getScalingFactor(ScaleFactor_e scale) {
  static constexpr std::array<tjscalingfactor, 8> kFactors = {
      {{1, 1}, {7, 8}, {3, 4}, {5, 8}, {1, 2}, {3, 8}, {1, 4}, {1, 8}}};
  const auto index = static_cast<std::size_t>(scale);
  return index < kFactors.size() ? kFactors[index] : kFactors[RTV_SCALE_1_1];
}

bool TaggedVideoParser::getPixelFormat(format_e format, int* pixelFormat) {
  switch (format) {
    case RTV_FMT_RGB:
      *pixelFormat = TJPF_RGB;
      return true;
    case RTV_FMT_BGR:
      *pixelFormat = TJPF_BGR;
      return true;
    case RTV_FMT_GRAY:
      *pixelFormat = TJPF_GRAY;
      return true;
    default:
      return false;
  }
}

bool TaggedVideoParser::getPixelSize(format_e format, int* bytes) {
  int pixelFormat = 0;
  if (!getPixelFormat(format, &pixelFormat)) return false;
  *bytes = tjPixelSize[pixelFormat];
  return true;
}

ErrorCode_e TaggedVideoParser::getImageSizeInBytes(unsigned int& size, format_e format,
                                                   ScaleFactor_e scale, unsigned short cropTop,
                                                   unsigned short cropBottom,
                                                   unsigned short* outWidth,
                                                   unsigned short* outHeight) {
  unsigned short width = 0;
  unsigned short height = 0;
  if (const auto code = getImageResolution(width, height)) return code;
  int pixelSize = 0;
  if (!getPixelSize(format, &pixelSize)) return RTV_ERR_COLOR_FORMAT_NOT_SUPPROT;
  const ImageGeometry geometry(width, height, getScalingFactor(scale), cropTop, cropBottom,
                               pixelSize);
  if (!geometry.isValid()) return RTV_ERR_INVALID_PARAMETER;
  size = static_cast<unsigned int>(geometry.size());
  if (outWidth != nullptr) *outWidth = static_cast<unsigned short>(geometry.width);
  if (outHeight != nullptr) *outHeight = static_cast<unsigned short>(geometry.rows());
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::getImage(unsigned short index, unsigned int size, unsigned char* buf,
                                        format_e format, ScaleFactor_e scale,
                                        unsigned short cropTop, unsigned short cropBottom) {
  if (const auto code = checkIndex(index)) {
    velmar_logger::e(kTag, "checkIndex fail: index: %u:, ret: %d", index, code);
    return code;
  }
  unsigned short width = 0;
  unsigned short height = 0;
  getImageResolution(width, height);
  int pixelFormat = 0;
  int pixelSize = 0;
  if (!getPixelFormat(format, &pixelFormat) || !getPixelSize(format, &pixelSize)) {
    return RTV_ERR_COLOR_FORMAT_NOT_SUPPROT;
  }
  const ImageGeometry geometry(width, height, getScalingFactor(scale), cropTop, cropBottom,
                               pixelSize);
  if (!geometry.isDecodableTo(size)) return RTV_ERR_INVALID_PARAMETER;
  if (buf == nullptr) return RTV_ERR_BUFFER_NOT_ALLOCATED;

  unsigned short rIndex = index;
  unsigned long offset = 0;
  unsigned int length = 0;
  getRawImageRange(index, offset, length, true, &rIndex);
  const unsigned char* jpeg = nullptr;
  if (const auto code = findBytes(offset, length, jpeg)) return code;
  const auto code = state_->decoder.decode(jpeg, length, geometry, pixelFormat, buf);
  if (code == VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E) {
    velmar_logger::e(kTag, "tjDecompress2 error: %s, index: %u, r_index: %u\n",
                     state_->decoder.cause(), index, rIndex);
  }
  return velmarErrorCode2RTVErrorCode(code);
}
