#include "velmar_video/rtv/TaggedVideoParser.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <type_traits>

#include "base/Guarded.h"
#include "container/rtv/RtvLayout.h"
#include "container/rtv/TaggedVideoParserState.h"
#include "velmar_logger/velmar_logger.h"

using namespace velmar::detail;

namespace {

constexpr char kIdentifier[] = "velmar";
constexpr auto& kTag = kTaggedVideoParserTag;

}  // namespace

// For callers only: a parser may live longer than these strings.
const std::string TaggedVideoParser::IDENTIFIER = kIdentifier;
const std::string TaggedVideoParser::TAG = kTag;

TaggedVideoParser::TaggedVideoParser() : state_(new (std::nothrow) State) {}

TaggedVideoParser::~TaggedVideoParser() { clear(); }

ErrorCode_e TaggedVideoParser::init(const char* path) { return init(path, {false, kTag}); }

ErrorCode_e TaggedVideoParser::init(const char* path, const InitMode& mode) {
  if (state_ == nullptr) return RTV_ERR_BUFFER_NOT_ALLOCATED;
  const std::lock_guard lock(state_->mMutex);
  if (const auto code = beforeInitCheck(path, mode); code != RTV_ERR_SUCCESS) return code;
  const auto result = guarded(mode.tag, "init", RTV_ERR_BUFFER_NOT_ALLOCATED, [&] {
    if (const auto code = open(path, mode); code != RTV_ERR_SUCCESS) return code;
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
  // Another file may have got the path meanwhile.
  const bool isKnown = ::fstat(file.get(), &status) == 0;
  const auto size = static_cast<unsigned long>(status.st_size);
  if (!isKnown || !state_->mMapAddr.map(file.get(), size)) {
    velmar_logger::e(mode.tag, "mmap fail: %s", std::strerror(errno));
    if (isKnown) file.release();  // leaks: kept for existing programs
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
  if (const auto code = readTags(); code != RTV_ERR_SUCCESS) return code;
  return checkComplete(mode);
}

// Missing bytes of a file that is cut short read as zeros.
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
  version_ = rtvVersion(minor);
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
  const auto read = [&]<typename T>(unsigned int at, T& field, Edited /*edited*/) {
    std::memcpy(&field, file + at, sizeof field);
    // Version 02 is never swapped.
    if constexpr (std::is_integral_v<T> && sizeof(T) > 1) {
      if (version_ != RTV_VER_02) field = swauto(field);
    }
  };
  visitRtvHeader(version_, headerOf(version_), read);
}

bool TaggedVideoParser::hasTagTable() const {
  return rtvLayout(version_).tagAt(headerOf(version_).frames_count) <= state_->mFileSize;
}

ErrorCode_e TaggedVideoParser::readTags() {
  if (version_ == RTV_VER_02) tagsVer02_.clear();
  if (version_ == RTV_VER_03) tagsVer03_.clear();
  if (version_ == RTV_VER_04) tags_.clear();
  if (!hasTagTable()) return RTV_ERR_SUCCESS;  // checkComplete() finds it next
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
    // The array has to hold what a copy of the tag would: a copy aligns the block once more. Doing
    // that in place saves a second block.
    can_data_init_ptr(tag.pCan(), true);
  }
  return RTV_ERR_SUCCESS;
}

ErrorCode_e TaggedVideoParser::checkComplete(const InitMode& mode) const {
  const unsigned int count = headerOf(version_).frames_count;
  frametag03Ver_t last{};  // without frames: all zeros
  if (count > 0) {
    // Offset and size of the frame are at the same place of the tag in every version.
    unsigned char bytes[sizeof last];
    copyBytes(rtvLayout(version_).tagAt(count - 1), sizeof bytes, bytes);
    last = get<frametag03Ver_t>(bytes);
    if (version_ != RTV_VER_02 && mustSwapTag()) swauto(last);
  }
  const unsigned long offset = last.data_offset;
  const unsigned int length = last.data_length;
  const unsigned long fileSize = state_->mFileSize;
  if (hasTagTable() && offset <= fileSize && length == fileSize - offset) return RTV_ERR_SUCCESS;
  const bool isLonger = offset <= fileSize && length < fileSize - offset;
  velmar_logger::e(mode.tag, "mFileSize: %lu %s (lastFrmOffset: %lu + lastFrmDatLen: %u)\n",
                   fileSize, isLonger ? ">" : "<", offset, length);
  return RTV_ERR_VIDEO_NOT_COMPLETE;
}

bool TaggedVideoParser::isInitialised() const {
  return state_ != nullptr && state_->mMapAddr.isMapped();
}

ErrorCode_e TaggedVideoParser::checkInit() const {
  return isInitialised() ? RTV_ERR_SUCCESS : RTV_ERR_NOT_INIT;
}
