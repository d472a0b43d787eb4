#include "toolkit/files/LockHolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <fstream>
#include <sstream>

#include "base/FileDescriptor.h"

namespace velmar::toolkit {

namespace {

std::string programOf(const std::string& process) {
  std::string name;
  std::getline(std::ifstream("/proc/" + process + "/comm"), name);
  return name.empty() ? "" : " (" + name + ")";
}

// From lines such as "3: FLOCK  ADVISORY  WRITE 1234 fe:00:5678 0 EOF", where the last part of the
// file's identity is its inode.
std::string describeHolder(ino_t inode) {
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) {
    std::istringstream words(line);
    std::string number, kind, mode, access, process, file;
    words >> number >> kind >> mode >> access >> process >> file;
    if (kind == "FLOCK" && file.ends_with(":" + std::to_string(inode))) {
      return "process " + process + programOf(process);
    }
  }
  return "another process";
}

}  // namespace

std::optional<std::string> lockHolder(const std::string& path) {
  const detail::FileDescriptor file(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  struct stat status {};
  if (!file.isOpen() || ::fstat(file.get(), &status) != 0) return std::nullopt;
  if (::flock(file.get(), LOCK_SH | LOCK_NB) == 0 || errno != EWOULDBLOCK) return std::nullopt;
  return describeHolder(status.st_ino);
}

}  // namespace velmar::toolkit
