#ifndef VELMAR_TOOL_FILE_BYTES_H
#define VELMAR_TOOL_FILE_BYTES_H

#include <cstdint>
#include <string>
#include <string_view>

#include "common/FileDescriptor.h"

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
  /// Fewer bytes where the file ends. Throws Failure.
  std::string read(std::uint64_t offset, std::uint64_t length) const;

 private:
  std::string path_;
  FileDescriptor file_;
  std::uint64_t size_ = 0;
};

/// The marker that a JPEG begins with.
bool beginsAsJpeg(std::string_view bytes);

/// The marker that a JPEG ends with; zeros may follow it, which some cameras fill frames up with.
bool endsAsJpeg(std::string_view bytes);

#endif
