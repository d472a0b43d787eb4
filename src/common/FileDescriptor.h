#ifndef VELMAR_COMMON_FILE_DESCRIPTOR_H
#define VELMAR_COMMON_FILE_DESCRIPTOR_H

#include <cstddef>
#include <string>

/// Owns an open file. Failures leave their cause in errno.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  /// open(2), close-on-exec; see isOpen().
  FileDescriptor(const std::string& path, int flags, unsigned int mode = 0);
  FileDescriptor(FileDescriptor&& other) noexcept;
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  ~FileDescriptor();

  bool isOpen() const { return fd_ >= 0; }
  int get() const { return fd_; }
  /// errno is kept.
  void close();
  /// Gives the descriptor up without closing it.
  void release() { fd_ = -1; }
  /// write(2) until all is written; false leaves a part of the data behind.
  bool write(const void* data, std::size_t size) const;
  /// The same with pwrite(2), `offset` bytes behind the file's start.
  bool writeAt(const void* data, std::size_t size, unsigned long offset) const;

 private:
  int fd_ = -1;
};

#endif
