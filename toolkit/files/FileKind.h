#ifndef VELMAR_TOOLKIT_FILE_KIND_H
#define VELMAR_TOOLKIT_FILE_KIND_H

#include <sys/stat.h>

#include <string>

namespace velmar::toolkit {

/// What something is that is no regular file, such as "a folder".
inline std::string kindOf(mode_t mode) {
  if (S_ISDIR(mode)) return "a folder";
  if (S_ISFIFO(mode)) return "a pipe";
  if (S_ISLNK(mode)) return "a symbolic link";
  return S_ISSOCK(mode) ? "a socket" : "a device";
}

}  // namespace velmar::toolkit

#endif
