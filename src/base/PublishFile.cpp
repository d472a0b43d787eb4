#include "base/PublishFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <new>

#include "base/FileDescriptor.h"

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

}  // namespace

int syncFile(const std::string& path) {
  FileDescriptor file(path, O_RDONLY);
  if (!file.isOpen()) file = FileDescriptor(path, O_WRONLY);  // only one of them may be allowed
  return file.isOpen() && file.sync() ? 0 : errno;
}

void syncName(const std::string& path) {
  const FileDescriptor folder = openFolder(path);
  if (folder.isOpen()) ::fsync(folder.get());
}

bool renameFile(const std::string& temporaryPath, const std::string& finalPath) {
  // Open the folder first, since nothing may fail after the rename.
  const FileDescriptor folder = openFolder(finalPath);
  if (std::rename(temporaryPath.c_str(), finalPath.c_str()) != 0) return false;
  if (folder.isOpen()) ::fsync(folder.get());
  return true;
}

}  // namespace velmar::detail
