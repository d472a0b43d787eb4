#ifndef VELMAR_TOOLKIT_FILE_PLACE_H
#define VELMAR_TOOLKIT_FILE_PLACE_H

#include <cstdint>

namespace velmar::toolkit {

/// Bytes of a file.
struct FilePlace {
  std::uint64_t offset;
  std::uint64_t size;

  std::uint64_t end() const { return offset + size; }
};

}  // namespace velmar::toolkit

#endif
