#ifndef VELMAR_TOOLKIT_FILE_BYTES_H
#define VELMAR_TOOLKIT_FILE_BYTES_H

#include <algorithm>
#include <cstdint>
#include <string>

#include "base/FileDescriptor.h"

namespace velmar::toolkit {

/// Bytes of a file.
struct FilePlace {
  std::uint64_t offset;
  std::uint64_t size;

  std::uint64_t end() const { return offset + size; }
};

/// What read() returns for bytes that the disk cannot read.
enum class Unreadable {
  Fails,    ///< nothing: it throws
  AsZeros,  ///< zeros, for a whole block of the file system at least
};

/// A file of any size, of which parts are read. Reading leaves it as it is, and is thread-safe.
class FileBytes {
 public:
  /// Throws Failure.
  explicit FileBytes(std::string path, Unreadable unreadable = Unreadable::Fails);

  const std::string& path() const { return path_; }
  /// When it was opened or updated, bytes.
  std::uint64_t size() const { return size_; }
  /// Looks how large it is now.
  void updateSize();
  bool contains(std::uint64_t offset, std::uint64_t length) const {
    return offset <= size_ && length <= size_ - offset;
  }
  /// How many of `length` bytes at `offset` the file contains.
  std::uint64_t sizeWithin(std::uint64_t offset, std::uint64_t length) const {
    return offset < size_ ? std::min(length, size_ - offset) : 0;
  }
  /// Fewer bytes where the file ends. Throws Failure.
  std::string read(std::uint64_t offset, std::uint64_t length) const;
  /// Reads all of a place that the file contains.
  /// \return why that cannot be; empty if `bytes` has it
  std::string tryRead(const FilePlace& place, std::string& bytes) const;
  /// Whether a path leads to this file. Its own does not if another has got its name.
  bool isAt(const std::string& path) const;
  /// For maps of the file.
  int descriptor() const { return file_.get(); }

 private:
  void readBlocks(std::uint64_t offset, std::string& bytes) const;

  std::string path_;
  Unreadable unreadable_;
  detail::FileDescriptor file_;
  std::uint64_t size_ = 0;
};

}  // namespace velmar::toolkit

#endif
