#ifndef VELMAR_TOOLKIT_RECORDER_WATCH_H
#define VELMAR_TOOLKIT_RECORDER_WATCH_H

#include <string>

#include "base/FileDescriptor.h"

namespace velmar::toolkit {

/// Tells when something happens to a recorder's files, and once a second: not every file system
/// tells, and a recorder that is killed holds its lock for a moment longer than its files.
class RecorderWatch {
 public:
  /// Throws Failure.
  /// \param temporary  path of the temporary file
  explicit RecorderWatch(const std::string& temporary);

  /// Can be read when something has happened since clear().
  int descriptor() const { return all_.get(); }
  /// What has happened is known.
  void clear() const;

 private:
  bool add(const detail::FileDescriptor& file) const;

  detail::FileDescriptor events_;
  detail::FileDescriptor timer_;
  detail::FileDescriptor all_;
};

}  // namespace velmar::toolkit

#endif
