#include "container/img/MetaDataBlock.h"

#include <unistd.h>

#include <cerrno>

namespace velmar::detail {

int replaceMetaDataBlock(const FileDescriptor& file, unsigned long offset,
                         const std::string& oldText, const std::string& newText) {
  if (newText.size() > oldText.size() && !file.reserve(offset, newText.size())) return errno;
  std::string block = newText;
  if (block.size() < oldText.size()) block.resize(oldText.size(), ' ');
  if (!file.writeAt(block.data(), block.size(), offset)) {
    const int cause = errno;
    file.writeAt(oldText.data(), oldText.size(), offset);
    ::ftruncate(file.get(), static_cast<off_t>(offset + oldText.size()));
    return cause;
  }
  return 0;
}

}  // namespace velmar::detail
