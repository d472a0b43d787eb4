#include "toolkit/base/FileBytes.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "toolkit/base/Failure.h"
#include "toolkit/base/FileKind.h"

namespace velmar::toolkit {

// Without O_NONBLOCK a pipe that nobody writes to would not open.
FileBytes::FileBytes(std::string path)
    : path_(std::move(path)), file_(path_, O_RDONLY | O_NONBLOCK) {
  struct stat status {};
  if (!file_.isOpen() || fstat(file_.get(), &status) != 0) {
    throw Failure::ofSystem(path_, "cannot open it", errno);
  }
  if (!S_ISREG(status.st_mode)) {
    throw Failure(path_, "it is " + kindOf(status.st_mode) + ", not a file",
                  VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E);
  }
  size_ = static_cast<std::uint64_t>(status.st_size);
}

std::string FileBytes::read(std::uint64_t offset, std::uint64_t length) const {
  std::string bytes(sizeWithin(offset, length), '\0');
  if (!file_.readAt(bytes.data(), bytes.size(), offset)) {
    if (errno != 0) throw Failure::ofSystem(path_, "cannot read it", errno);
    throw Failure(path_, "it has become shorter while it was read",
                  VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  }
  return bytes;
}

}  // namespace velmar::toolkit
