#ifndef VELMAR_COMMON_PUBLISH_FILE_H
#define VELMAR_COMMON_PUBLISH_FILE_H

#include <string>

/// Gives a finished file its final name so that neither a crash nor a power cut can leave that
/// name on an unfinished file: its data go to the disk before the rename, the rename itself
/// after it, as far as the folder allows. A file that has the final name is replaced.
/// \return 0 or the errno of the step that failed
int publishFile(const std::string& temporaryPath, const std::string& finalPath);

/// Brings what is in the file to the disk.
/// \return 0 or the errno of the step that failed
int syncFile(const std::string& path);

/// Brings the name of the file to the disk as far as its folder allows: one that cannot be read or
/// synchronised leaves open only whether the file has its name after a power cut.
void syncName(const std::string& path);

#endif
