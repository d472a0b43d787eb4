#include "container/img/MetaDataBlock.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace {

// What the file system cannot reserve, the write itself will find out.
bool reserve(int fd, unsigned long offset, unsigned long size) {
  return ::fallocate(fd, FALLOC_FL_KEEP_SIZE, static_cast<off_t>(offset),
                     static_cast<off_t>(size)) == 0 ||
         errno == EOPNOTSUPP || errno == ENOSYS;
}

bool cutAt(int fd, unsigned long length) {
  return ::ftruncate(fd, static_cast<off_t>(length)) == 0;
}

}  // namespace

int replaceMetaDataBlock(const FileDescriptor& file, unsigned long offset,
                         const std::string& oldText, const std::string& newText) {
  if (newText.size() > oldText.size() && !reserve(file.get(), offset, newText.size())) {
    return errno;
  }
  // One write, with blanks over what is left of a longer old text: JSON does not mind them.
  std::string block = newText;
  if (block.size() < oldText.size()) block.resize(oldText.size(), ' ');
  if (!file.writeAt(block.data(), block.size(), offset)) {
    const int cause = errno;
    file.writeAt(oldText.data(), oldText.size(), offset);
    cutAt(file.get(), offset + oldText.size());
    return cause;
  }
  if (block.size() > newText.size() && !cutAt(file.get(), offset + newText.size())) return errno;
  return 0;
}
