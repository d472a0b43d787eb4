/// The files beside a recording that is being recorded.
#ifndef VELMAR_TOOLKIT_RECORDER_FILES_H
#define VELMAR_TOOLKIT_RECORDER_FILES_H

#include <string>

namespace velmar::toolkit {

/// The temporary file of a recording, whichever of the two is given.
std::string temporaryPath(const std::string& path);

/// The same for the recording.
std::string finalPath(const std::string& path);

/// Whether it has the name of a temporary file.
bool isTemporaryPath(const std::string& path);

/// The index journal of an img's temporary file.
std::string journalPath(const std::string& temporary);

}  // namespace velmar::toolkit

#endif
