#include "base/FileDescriptor.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace velmar::detail {

namespace {

// Calls `transfer` (a read or a write) until nothing is left, despite short counts and interrupts.
template <typename Byte, typename Transfer>
bool transferAll(Byte* next, std::size_t size, Transfer transfer) {
  while (size > 0) {
    const ssize_t count = transfer(next, size);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    next += count;
    size -= static_cast<std::size_t>(count);
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
  return transferAll(
      static_cast<const char*>(data), size,
      [this](const char* next, std::size_t left) { return ::write(fd_, next, left); });
}

bool FileDescriptor::writeAt(const void* data, std::size_t size, unsigned long offset) const {
  const auto* bytes = static_cast<const char*>(data);
  return transferAll(bytes, size, [this, bytes, offset](const char* next, std::size_t left) {
    return ::pwrite(fd_, next, left, static_cast<off_t>(offset) + (next - bytes));
  });
}

bool FileDescriptor::readAt(void* data, std::size_t size, unsigned long offset) const {
  auto* bytes = static_cast<char*>(data);
  errno = 0;
  return transferAll(bytes, size, [this, bytes, offset](char* next, std::size_t left) {
    return ::pread(fd_, next, left, static_cast<off_t>(offset) + (next - bytes));
  });
}

bool FileDescriptor::sync() const { return ::fdatasync(fd_) == 0; }

bool FileDescriptor::reserve(unsigned long offset, unsigned long size) const {
  int result = 0;
  do {
    result =
        ::fallocate(fd_, FALLOC_FL_KEEP_SIZE, static_cast<off_t>(offset), static_cast<off_t>(size));
  } while (result != 0 && errno == EINTR);
  return result == 0 || errno == EOPNOTSUPP || errno == ENOSYS;
}

}  // namespace velmar::detail
