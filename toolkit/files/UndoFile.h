/// What an edit in place overwrites, kept beside the file until the edit is on the disk. After an
/// interruption at any moment it brings back the file as it was. docs/formats/undo.md describes
/// the file.
#ifndef VELMAR_TOOLKIT_UNDO_FILE_H
#define VELMAR_TOOLKIT_UNDO_FILE_H

#include <cstdint>
#include <string>
#include <vector>

#include "toolkit/files/FileBytes.h"
#include "toolkit/files/FileLock.h"

namespace velmar::toolkit {

/// What an edit can reach of a file.
struct EditedPlaces {
  /// Adds bytes that are overwritten, behind those that were added before.
  void overwrite(FilePlace place);

  std::vector<FilePlace> overwritten;
  /// Up to here and from there on all bytes must be as they were for an edit to be undone. In
  /// between are frames.
  std::uint64_t headEnd = 0;
  std::uint64_t tailStart = 0;
};

/// Where the undo file of a file is: beside what symbolic links lead to.
std::string undoPath(const std::string& path);

enum class UndoState {
  None,
  Unused,   ///< not whole: the edit had not begun to write
  Pending,  ///< an edit was interrupted, and can be undone
  Foreign,  ///< of another file, or the file has been replaced or changed since
};

/// What there is beside the file, while it is locked. Throws Failure if that cannot be read.
UndoState undoState(const std::string& path);

/// In words, for somebody who reads the file; empty if they need not know.
std::string undoWords(const std::string& path, UndoState state);

/// Writes the undo file and brings it to the disk. Throws Failure and leaves nothing behind.
void keepForUndo(const std::string& path, const EditedPlaces& places);

/// Removes the undo file, on the disk, too. Throws Failure; if that cannot be brought to the disk,
/// a power cut may bring the undo file back.
void dropUndo(const std::string& path);

/// Brings the file back to what it was and removes the undo file. Throws Failure if that is of
/// another file, which stays as it is.
/// \param lock  for editing
/// \return what there was
UndoState undoEdit(const std::string& path, const FileLock& lock);

}  // namespace velmar::toolkit

#endif
