#include "common/PublishFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "common/FileDescriptor.h"

namespace {

std::string folderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace

int publishFile(const std::string& temporaryPath, const std::string& finalPath) {
  const FileDescriptor file(temporaryPath, O_RDONLY);
  if (!file.isOpen() || ::fdatasync(file.get()) != 0) return errno;
  if (std::rename(temporaryPath.c_str(), finalPath.c_str()) != 0) return errno;

  // The file is complete and in place. A folder that cannot be synchronised (no permission to read
  // it, a file system that does not) leaves open only which name it has after a power cut.
  const FileDescriptor folder(folderOf(finalPath), O_RDONLY | O_DIRECTORY);
  if (folder.isOpen()) ::fsync(folder.get());
  return 0;
}
