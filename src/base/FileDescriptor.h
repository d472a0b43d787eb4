#ifndef VELMAR_BASE_FILE_DESCRIPTOR_H
#define VELMAR_BASE_FILE_DESCRIPTOR_H

#include <cstddef>
#include <string>

namespace velmar::detail {

/// Owns an open file. Failures leave their cause in errno.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  /// open(2), close-on-exec; see isOpen().
  FileDescriptor(const std::string& path, int flags, unsigned int mode = 0);
  /// Takes a descriptor over; not open if it is negative.
  explicit FileDescriptor(int fd) : fd_(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept;
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  ~FileDescriptor();

  bool isOpen() const { return fd_ >= 0; }
  int get() const { return fd_; }
  /// Leaves errno as it is.
  void close();
  /// Gives the descriptor up without closing it.
  void release() { fd_ = -1; }
  /// Calls write(2) until all is written. On false a part of the data may be in the file.
  bool write(const void* data, std::size_t size) const;
  /// The same with pwrite(2), `offset` bytes from the start of the file.
  bool writeAt(const void* data, std::size_t size, unsigned long offset) const;

  /// Calls pread(2) until all is read. False on a failure, and, with errno 0, if the file ends
  /// before.
  bool readAt(void* data, std::size_t size, unsigned long offset) const;

  /// Brings what has been written to the disk, by fdatasync(2).
  bool sync() const;

  /// Reserves disk space for a part of the file without changing its length, so that a
  /// write there does not run into a full disk. Also true if the file system does not support that.
  bool reserve(unsigned long offset, unsigned long size) const;

 private:
  int fd_ = -1;
};

}  // namespace velmar::detail

#endif
