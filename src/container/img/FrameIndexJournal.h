#ifndef VELMAR_IMG_FRAME_INDEX_JOURNAL_H
#define VELMAR_IMG_FRAME_INDEX_JOURNAL_H

#include <string>
#include <vector>

#include "base/FileDescriptor.h"
#include "container/img/FrameIndex.h"

/// Keeps the index of a running recording on file, since an "img" file gets its index only when it
/// is finished: what a killed recorder leaves behind can be put together from it.
///
/// The journal holds the records as they would stand in the file, one behind the other. It is a
/// help, not a condition: a journal that cannot be written is given up and the recording goes on.
class FrameIndexJournal {
 public:
  explicit FrameIndexJournal(const std::string& path);

  // None of these throws.

  /// Starts an empty journal.
  void open();
  /// Appends a record in file byte order, after the frame itself has been written: a record must
  /// never stand for bytes that are not there.
  void append(const FrameIndex& record);
  /// Puts these records in the place of all that were appended, at one stroke.
  void replace(const std::vector<FrameIndex>& records);
  /// Closes the journal and leaves it.
  void close();
  /// Closes the journal and deletes it.
  void remove();

 private:
  void giveUp();

  const std::string path_;
  const std::string newPath_;
  FileDescriptor file_;
};

#endif
