#ifndef VELMAR_VIEWER_TEMPORARY_FOLDER_H
#define VELMAR_VIEWER_TEMPORARY_FOLDER_H

#include <string>

namespace velmar::viewer {

/// A folder that goes with all that is in it.
class TemporaryFolder {
 public:
  /// In TMPDIR, or else /tmp. Throws Failure.
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace velmar::viewer

#endif
