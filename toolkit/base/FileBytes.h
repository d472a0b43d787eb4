#ifndef VELMAR_TOOLKIT_FILE_BYTES_H
#define VELMAR_TOOLKIT_FILE_BYTES_H

#include <algorithm>
#include <cstdint>
#include <string>

#include "base/FileDescriptor.h"

namespace velmar::toolkit {

/// A file of any size, of which parts are read. Reading leaves it as it is. Any thread.
class FileBytes {
 public:
  /// Throws Failure.
  explicit FileBytes(std::string path);

  const std::string& path() const { return path_; }
  /// When it was opened, bytes.
  std::uint64_t size() const { return size_; }
  bool contains(std::uint64_t offset, std::uint64_t length) const {
    return offset <= size_ && length <= size_ - offset;
  }
  /// What of so many bytes is in the file.
  std::uint64_t sizeWithin(std::uint64_t offset, std::uint64_t length) const {
    return offset < size_ ? std::min(length, size_ - offset) : 0;
  }
  /// Fewer bytes where the file ends. Throws Failure.
  std::string read(std::uint64_t offset, std::uint64_t length) const;

 private:
  std::string path_;
  detail::FileDescriptor file_;
  std::uint64_t size_ = 0;
};

}  // namespace velmar::toolkit

#endif
