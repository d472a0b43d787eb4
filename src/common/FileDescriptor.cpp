#include "common/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace {

// Calls `write` until nothing is left, over short counts and interruptions.
template <typename Write>
bool writeAll(const void* data, std::size_t size, Write write) {
  const char* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = write(next, size);
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    next += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

}  // namespace

FileDescriptor::FileDescriptor(const std::string& path, int flags, unsigned int mode)
    : fd_(::open(path.c_str(), flags | O_CLOEXEC, mode)) {}

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  std::swap(fd_, other.fd_);
  return *this;
}

FileDescriptor::~FileDescriptor() { close(); }

void FileDescriptor::close() {
  if (!isOpen()) return;
  const int cause = errno;
  ::close(std::exchange(fd_, -1));
  errno = cause;
}

bool FileDescriptor::write(const void* data, std::size_t size) const {
  return writeAll(data, size,
                  [this](const char* next, std::size_t left) { return ::write(fd_, next, left); });
}

bool FileDescriptor::writeAt(const void* data, std::size_t size, unsigned long offset) const {
  return writeAll(data, size, [this, &offset](const char* next, std::size_t left) {
    const ssize_t written = ::pwrite(fd_, next, left, static_cast<off_t>(offset));
    if (written > 0) offset += static_cast<unsigned long>(written);
    return written;
  });
}

bool FileDescriptor::reserve(unsigned long offset, unsigned long size) const {
  int result = 0;
  do {
    result =
        ::fallocate(fd_, FALLOC_FL_KEEP_SIZE, static_cast<off_t>(offset), static_cast<off_t>(size));
  } while (result != 0 && errno == EINTR);
  return result == 0 || errno == EOPNOTSUPP || errno == ENOSYS;
}
