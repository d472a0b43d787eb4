#include "toolkit/files/InputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "base/FileDescriptor.h"
#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

std::string readFile(const std::string& path, std::size_t limit) {
  constexpr std::size_t kLeast = 4096;
  const bool isInput = path == "-";
  const detail::FileDescriptor file =
      isInput ? detail::FileDescriptor() : detail::FileDescriptor(path, O_RDONLY);
  const int fd = isInput ? STDIN_FILENO : file.get();
  struct stat status {};
  if ((!isInput && !file.isOpen()) || fstat(fd, &status) != 0) {
    throw Failure::ofSystem(path, "cannot open it", errno);
  }
  // One byte more than the size shows the end; a file without a size, such as a pipe, grows on.
  std::string bytes;
  std::size_t filled = 0;
  std::size_t wanted = static_cast<std::size_t>(status.st_size) + 1;
  while (filled < limit) {
    if (filled == bytes.size()) {
      bytes.resize(std::min(limit, std::max({wanted, kLeast, 2 * filled})));
    }
    const ssize_t count = ::read(fd, bytes.data() + filled, bytes.size() - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw Failure::ofSystem(path, "cannot read it", errno);
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  bytes.resize(filled);
  return bytes;
}

}  // namespace velmar::toolkit
