#include "base/PublishFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <new>

namespace velmar::detail {

namespace {

std::string folderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

// The result is not open if the folder cannot be opened, for whatever reason.
FileDescriptor openFolder(const std::string& path) {
  try {
    return {folderOf(path), O_RDONLY | O_DIRECTORY};
  } catch (const std::bad_alloc&) {
    return {};
  }
}

// Whether the file is this process's now. Some file systems have no locks.
bool lock(const FileDescriptor& file) {
  int result = 0;
  do {
    result = ::flock(file.get(), LOCK_EX | LOCK_NB);
  } while (result != 0 && errno == EINTR);
  return result == 0 || errno == EOPNOTSUPP || errno == ENOLCK;
}

}  // namespace

FileDescriptor claimFile(const std::string& path, unsigned int mode) {
  constexpr int kTries = 100;  // others may rename or delete it meanwhile
  for (int i = 0; i < kTries; ++i) {
    FileDescriptor file(path, O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK, mode);
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0) return {};
    if (!S_ISREG(status.st_mode)) {
      errno = EINVAL;
      return {};
    }
    if (!lock(file)) return {};
    if (!hasName(file, path)) continue;
    if (::ftruncate(file.get(), 0) != 0) return {};
    return file;
  }
  return {};
}

bool hasName(const FileDescriptor& file, const std::string& path) {
  struct stat opened {};
  struct stat named {};
  if (::fstat(file.get(), &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
      named.st_dev == opened.st_dev && named.st_ino == opened.st_ino) {
    return true;
  }
  errno = ESTALE;
  return false;
}

bool publishFile(const FileDescriptor& claimed, const std::string& temporaryPath,
                 const std::string& finalPath) {
  if (!hasName(claimed, temporaryPath)) return false;
  if (std::rename(temporaryPath.c_str(), finalPath.c_str()) != 0) return false;
  // A child of this process may keep the file open.
  ::flock(claimed.get(), LOCK_UN);
  errno = syncName(finalPath);
  return errno == 0;
}

void unclaimFile(FileDescriptor& claimed) {
  ::flock(claimed.get(), LOCK_UN);
  claimed.close();
}

int syncFile(const std::string& path) {
  FileDescriptor file(path, O_RDONLY);
  if (!file.isOpen()) file = FileDescriptor(path, O_WRONLY);  // only one of them may be allowed
  return file.isOpen() && file.sync() ? 0 : errno;
}

int syncName(const std::string& path) {
  const FileDescriptor folder = openFolder(path);
  const bool isSynced = !folder.isOpen() || ::fsync(folder.get()) == 0;
  return isSynced || errno == EINVAL || errno == EROFS ? 0 : errno;
}

bool renameFile(const std::string& temporaryPath, const std::string& finalPath) {
  if (std::rename(temporaryPath.c_str(), finalPath.c_str()) != 0) return false;
  errno = syncName(finalPath);
  return errno == 0;
}

}  // namespace velmar::detail
