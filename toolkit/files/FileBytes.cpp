#include "toolkit/files/FileBytes.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "toolkit/base/Failure.h"
#include "toolkit/files/FileKind.h"

namespace velmar::toolkit {

namespace {

// After readAt().
std::string whyUnread() {
  if (errno == 0) return "it has become shorter while it was read";
  return std::string("cannot read it: ") + std::strerror(errno);
}

}  // namespace

// Without O_NONBLOCK a pipe that nobody writes to would not open.
FileBytes::FileBytes(std::string path, Unreadable unreadable)
    : path_(std::move(path)), unreadable_(unreadable), file_(path_, O_RDONLY | O_NONBLOCK) {
  struct stat status {};
  if (!file_.isOpen() || fstat(file_.get(), &status) != 0) {
    throw Failure::ofSystem(path_, "cannot open it", errno);
  }
  if (!S_ISREG(status.st_mode)) {
    throw Failure(path_, "it is " + kindOf(status.st_mode) + ", not a file",
                  VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E);
  }
  size_ = static_cast<std::uint64_t>(status.st_size);
}

void FileBytes::updateSize() {
  struct stat status {};
  if (fstat(file_.get(), &status) == 0) size_ = static_cast<std::uint64_t>(status.st_size);
}

std::string FileBytes::read(std::uint64_t offset, std::uint64_t length) const {
  std::string bytes(sizeWithin(offset, length), '\0');
  if (file_.readAt(bytes.data(), bytes.size(), offset)) return bytes;
  if (errno == EIO && unreadable_ == Unreadable::AsZeros) {
    readBlocks(offset, bytes);
    return bytes;
  }
  throw Failure(path_, whyUnread(), VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
}

std::string FileBytes::tryRead(const FilePlace& place, std::string& bytes) const {
  bytes.resize(place.size);
  return file_.readAt(bytes.data(), bytes.size(), place.offset) ? "" : whyUnread();
}

bool FileBytes::isAt(const std::string& path) const {
  struct stat mine {};
  struct stat there {};
  return fstat(file_.get(), &mine) == 0 && stat(path.c_str(), &there) == 0 &&
         mine.st_dev == there.st_dev && mine.st_ino == there.st_ino;
}

// What the disk cannot read is known by the block.
void FileBytes::readBlocks(std::uint64_t offset, std::string& bytes) const {
  constexpr std::uint64_t kBlock = 4096;
  const std::uint64_t end = offset + bytes.size();
  for (std::uint64_t at = offset; at < end;) {
    const std::uint64_t next = std::min(end, at - at % kBlock + kBlock);
    char* const block = bytes.data() + (at - offset);
    if (!file_.readAt(block, next - at, at)) {
      if (errno != EIO) throw Failure(path_, whyUnread(), VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
      std::memset(block, 0, next - at);
    }
    at = next;
  }
}

}  // namespace velmar::toolkit
