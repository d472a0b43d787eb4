#include "common/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

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
  const char* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = ::write(fd_, next, size);
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    next += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}
