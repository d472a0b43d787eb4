#ifndef VELMAR_BASE_FILE_DESCRIPTOR_H
#define VELMAR_BASE_FILE_DESCRIPTOR_H

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

  /// pread(2) until all is read. False where the file ends before, with errno 0, and on a failure.
  bool readAt(void* data, std::size_t size, unsigned long offset) const;

  /// fdatasync(2): what has been written is on the disk.
  bool sync() const;

  /// Makes sure that the blocks of a part of the file are there, without changing its length, so
  /// that neither a write nor a store through a map can run into a full disk. True as well where
  /// the file system cannot do that.
  bool reserve(unsigned long offset, unsigned long size) const;

 private:
  int fd_ = -1;
};

#endif
