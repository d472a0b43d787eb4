/// What there is of a recording while it is being recorded, or of one whose recorder was killed.
#ifndef VELMAR_TOOLKIT_RUNNING_TABLES_H
#define VELMAR_TOOLKIT_RUNNING_TABLES_H

#include <memory>
#include <string>

#include "toolkit/recording/RecordingTables.h"

namespace velmar::toolkit {

/// The frames in a recorder's temporary file that are whole. What the recorder writes at the end,
/// such as the device id and the start of an rtv, is not there yet; the size is that of frame 0.
class RunningTables : public RecordingTables {
 public:
  /// Takes in the frames that have come since the last time.
  virtual void update() = 0;
};

/// Throws Failure if the file cannot be read, or if it is of an img whose index journal is missing.
/// \param path  the temporary file's
std::unique_ptr<RunningTables> openRunningTables(const std::string& path);

/// The temporary file of a recording, whichever of the two is given.
std::string temporaryPath(const std::string& path);
/// The same for the recording.
std::string finalPath(const std::string& path);

}  // namespace velmar::toolkit

#endif
