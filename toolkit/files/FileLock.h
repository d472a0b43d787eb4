#ifndef VELMAR_TOOLKIT_FILE_LOCK_H
#define VELMAR_TOOLKIT_FILE_LOCK_H

#include <string>

#include "base/FileDescriptor.h"

namespace velmar::toolkit {

/// Keeps an edit in place and those who read header, index or metadata apart while it lives. Only
/// programs that ask for it, too, are kept away (flock(2)).
class FileLock {
 public:
  enum class Kind {
    Read,  ///< with other readers; nothing is locked if the file or its file system does not allow
    Edit,  ///< alone; nothing is locked if the file system has no locks
  };

  /// Waits up to half a minute for those of the other kind. Throws Failure, for a second edit at
  /// once.
  FileLock(const std::string& path, Kind kind);

  /// Brings the file to the disk. Throws Failure.
  void sync() const;

 private:
  void lockForReading() const;
  void lockForEditing() const;

  std::string path_;
  detail::FileDescriptor file_;
};

}  // namespace velmar::toolkit

#endif
