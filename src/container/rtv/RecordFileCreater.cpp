#include "velmar_video/rtv/RecordFileCreater.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "base/FileDescriptor.h"
#include "base/Guarded.h"
#include "base/PublishFile.h"
#include "container/rtv/RtvLayout.h"
#include "velmar_logger/velmar_logger.h"

using namespace velmar::detail;

namespace {

constexpr char kTag[] = "RecordFileCreater";
constexpr unsigned int kFrameRate = 60;
constexpr unsigned int kTagSizeMax = 145;

unsigned short slotsFor(unsigned int duration) {
  return duration == 0 ? kRtvFramesMax : static_cast<unsigned short>(duration * kFrameRate);
}

}  // namespace

// Nested, so that programs may have a FileDescriptor of their own.
struct RecordFileCreater::File : FileDescriptor {
  explicit File(FileDescriptor&& file) : FileDescriptor(std::move(file)) {}
};

RecordFileCreater::RecordFileCreater(const std::string& fileName, unsigned short framesMax,
                                     version_e version, unsigned int* fileSizeOut)
    : RecordFile() {
  version_ = version;
  header_t& header = headerOf(version_);
  header.frames_max = framesMax;
  if (rtvLayout(version_).hasFlagsAndAltitude && isCPUBigEndian()) header.flags |= 1;
  fileSize_ = rtvLayout(version_).tagAt(framesMax);
  const bool isMade = guarded(kTag, "RecordFileCreater", false, [&] {
    fileName_ = fileName;
    temporaryPath_ = fileName + kTemporaryEnding;
    return makeTagTable();
  });
  if (!isMade) abandon();
  if (fileSizeOut != nullptr) *fileSizeOut = static_cast<unsigned int>(fileSize_);
}

RecordFileCreater::RecordFileCreater(std::string fileName, unsigned int duration, version_e version,
                                     unsigned int* fileSizeOut)
    : RecordFileCreater(fileName, slotsFor(duration), version, fileSizeOut) {}

RecordFileCreater::~RecordFileCreater() { close(); }

bool RecordFileCreater::makeTagTable() {
  file_ = std::make_unique<File>(claimFile(temporaryPath_, 0644));
  if (!file_->isOpen()) {
    file_.reset();  // a file with that name is not this writer's
    velmar_logger::e(kTag, "Error: open fail %s, %s", temporaryPath_.c_str(), std::strerror(errno));
    return false;
  }
  if (::ftruncate(file_->get(), static_cast<off_t>(fileSize_)) != 0) return logged("ftruncate");
  return file_->reserve(0, fileSize_) || logged("fallocate");
}

void RecordFileCreater::abandon() {
  if (!isOpen()) return;
  if (hasName(*file_, temporaryPath_)) ::unlink(temporaryPath_.c_str());
  release();
}

void RecordFileCreater::release() {
  unclaimFile(*file_);
  file_.reset();
}

bool RecordFileCreater::isOpen() const { return file_ != nullptr; }

void RecordFileCreater::setDeviceId(const unsigned char* id, unsigned int size) {
  if (size != kRtvDeviceIdSize) {
    velmar_logger::w(kTag, "Device id array size is %u, should be %u", size, kRtvDeviceIdSize);
  }
  if (id != nullptr) {
    std::memcpy(headerOf(version_).device_id, id, std::min(size, kRtvDeviceIdSize));
  }
}

void RecordFileCreater::setStartTime(unsigned long startTime) {
  headerOf(version_).start_time = startTime;
}

void RecordFileCreater::setVideoResolution(unsigned short width, unsigned short height) {
  headerOf(version_).width = width;
  headerOf(version_).height = height;
}

void RecordFileCreater::setFrameFormat(format_e format) {
  headerOf(version_).frame_format = format;
}

void RecordFileCreater::setFrameCodec(codec_e codec) { headerOf(version_).frame_codec = codec; }

void RecordFileCreater::setStartPosition(int lng, int lat, int alt) {
  headerOf(version_).lng = lng;
  headerOf(version_).lat = lat;
  headerWithAllFields().alt = alt;
}

void RecordFileCreater::setTaggingFlags(unsigned int flags) {
  headerWithAllFields().tagging_flags = flags;
}

void RecordFileCreater::getTaggingFlags(unsigned int& flags) {
  flags = headerWithAllFields().tagging_flags;
}

// Version 02 keeps altitude and tagging flags where they never reach its file.
RecordFile::header_t& RecordFileCreater::headerWithAllFields() {
  return headerOf(version_ == RTV_VER_02 ? RTV_VER_03 : version_);
}

bool RecordFileCreater::addFrame(int timeFlag, const std::string& data, int x, int y, int z,
                                 unsigned int relativeDistance, unsigned short speed,
                                 unsigned short direction, const can_data_io* can) {
  if (data.size() > UINT32_MAX) {
    velmar_logger::e(kTag, "frame of %zu bytes is too large", data.size());
    return false;
  }
  return addFrame(timeFlag, data.data(), static_cast<unsigned int>(data.size()), x, y, z,
                  relativeDistance, speed, direction, can);
}

bool RecordFileCreater::addFrame(int timeFlag, const char* data, unsigned int length, int x, int y,
                                 int z, unsigned int relativeDistance, unsigned short speed,
                                 unsigned short direction, const can_data_io* can) {
  if (framesWritten_ >= headerOf(version_).frames_max) return false;
  if (data == nullptr && length > 0) {
    velmar_logger::e(kTag, "frame data is null");
    return false;
  }
  const unsigned long offset = fileSize_;
  if (!appendBytes(data, length)) return false;
  const unsigned short index = framesWritten_++;

  const frametag03Ver_t tag = {timeFlag, offset,           length, x,        y,
                               z,        relativeDistance, speed,  direction};
  unsigned char bytes[kTagSizeMax];
  if (version_ == RTV_VER_02) {
    put(bytes, narrowed(tag));
  } else {
    put(bytes, tag);
    can_data_io block;
    can_data_io_purge(&block);
    put(bytes + kCanAt, can != nullptr ? *can : block);
  }
  if (storeTag(bytes, index)) return true;
  // Without its tag the frame would keep the file from being opened.
  --framesWritten_;
  fileSize_ = offset;
  const unsigned char empty[kTagSizeMax] = {};
  file_->writeAt(empty, rtvLayout(version_).tagSize, rtvLayout(version_).tagAt(index));
  cutBehindFrames();
  return false;
}

bool RecordFileCreater::cutBehindFrames() {
  return ::ftruncate(file_->get(), static_cast<off_t>(fileSize_)) == 0 || logged("ftruncate");
}

bool RecordFileCreater::appendBytes(const char* data, unsigned int length) {
  const int file = isOpen() ? file_->get() : -1;  // the system refuses -1
  if (::ftruncate(file, static_cast<off_t>(fileSize_ + length)) != 0) return logged("ftruncate");
  if (!file_->writeAt(data, length, fileSize_)) {
    logged("pwrite");
    cutBehindFrames();
    return false;
  }
  fileSize_ += length;
  return true;
}

bool RecordFileCreater::logged(const char* step) const {
  velmar_logger::e(kTag, "Error: %s fail %s, %s", step, temporaryPath_.c_str(),
                   std::strerror(errno));
  return false;
}

// Not through a map: on file systems that copy what they change, a store may need space and would
// end the process if there is none.
bool RecordFileCreater::storeTag(const unsigned char* tag, unsigned int index) {
  constexpr unsigned int kLengthAt = offsetof(frametag_02ver_t, data_length);
  constexpr unsigned int kLengthSize = sizeof frametag_02ver_t::data_length;
  static_assert(kLengthAt == offsetof(frametag03Ver_t, data_length));
  // The length comes last: if the recorder is killed in between, the tag has no length yet and
  // cannot be mistaken for a whole one.
  const RtvLayout layout = rtvLayout(version_);
  const unsigned long slot = layout.tagAt(index);
  unsigned char withoutLength[kTagSizeMax];
  std::memcpy(withoutLength, tag, layout.tagSize);
  std::memset(withoutLength + kLengthAt, 0, kLengthSize);
  return (file_->writeAt(withoutLength, layout.tagSize, slot) &&
          file_->writeAt(tag + kLengthAt, kLengthSize, slot + kLengthAt)) ||
         logged("pwrite");
}

bool RecordFileCreater::close() {
  if (!isOpen()) return false;
  headerOf(version_).frames_count = framesWritten_;
  const bool published = cutBehindFrames() && storeHeader() && publish();
  release();
  return published;
}

bool RecordFileCreater::publish() {
  if (!file_->sync()) return logged("fdatasync");
  return publishFile(*file_, temporaryPath_, fileName_) || logged("rename");
}

bool RecordFileCreater::storeHeader() {
  unsigned char bytes[kRtvHeaderSizeMax] = {};
  encodeHeader(bytes);
  // The magic code comes last: if the recorder is killed in between, the header has none.
  const RtvLayout layout = rtvLayout(version_);
  return (file_->writeAt(bytes + layout.magicSize, layout.headerSize - layout.magicSize,
                         layout.magicSize) &&
          file_->writeAt(bytes, layout.magicSize, 0)) ||
         logged("pwrite");
}

void RecordFileCreater::encodeHeader(unsigned char* bytes) const {
  const bool is02 = version_ == RTV_VER_02;
  const bool is03 = version_ == RTV_VER_03;
  const char* magic = is02 ? MAGIC_CODE_V02 : is03 ? MAGIC_CODE_V03 : MAGIC_CODE;
  const unsigned char* version = is02 ? VERSION_V02 : is03 ? VERSION_V03 : VERSION;
  header_t header = headerOf(version_);
  header.version_major = version[0];
  header.version_minor = version[1];
  std::memcpy(bytes + kMagicCodeAt, magic, rtvLayout(version_).magicSize);
  visitRtvHeader(version_, header, [bytes](unsigned int at, const auto& field, Edited /*edited*/) {
    put(bytes + at, field);
  });
}
