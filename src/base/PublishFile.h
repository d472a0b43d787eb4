#ifndef VELMAR_BASE_PUBLISH_FILE_H
#define VELMAR_BASE_PUBLISH_FILE_H

#include <string>

#include "base/FileDescriptor.h"

namespace velmar::detail {

/// What the name of a file ends in that is not finished.
constexpr char kTemporaryEnding[] = ".tmp";

/// Makes an empty file for this descriptor alone, readable and writable: as long as it is open, the
/// file is locked (flock(2)), as far as the file system has locks. A file that has the name already
/// is emptied unless it is locked. Not open, with the cause in errno, if the file is locked
/// (EWOULDBLOCK), no regular file or a symbolic link.
FileDescriptor claimFile(const std::string& path, unsigned int mode);

/// Whether the name stands for the file still; the cause is in errno otherwise.
bool hasName(const FileDescriptor& file, const std::string& path);

/// Gives a finished file its final name, and brings the rename to the disk as far as the folder
/// allows. A file that has the final name is replaced. The content has to be on the disk already
/// (FileDescriptor::sync()); then neither a crash nor a power cut can leave the name on an
/// unfinished file. False, with the cause in errno, if the file keeps its old name, or if the disk
/// fails to take the new one.
bool renameFile(const std::string& temporaryPath, const std::string& finalPath);

/// The same for a file that claimFile() made, which is not locked any more then. Not if something
/// else has got the temporary name.
bool publishFile(const FileDescriptor& claimed, const std::string& temporaryPath,
                 const std::string& finalPath);

/// Closes a file that claimFile() made. It is not locked any more even if a child of this process
/// has it open.
void unclaimFile(FileDescriptor& claimed);

/// Brings the content of the file to the disk.
/// \return 0 or the errno of the step that failed
int syncFile(const std::string& path);

/// Brings the name of the file to the disk. A folder that cannot be read or synchronised is no
/// failure: then the file may lose its name in a power cut.
/// \return 0 or the errno of the disk's failure
int syncName(const std::string& path);

}  // namespace velmar::detail

#endif
