#ifndef VELMAR_IMG_FRAME_INDEX_JOURNAL_H
#define VELMAR_IMG_FRAME_INDEX_JOURNAL_H

#include <string>
#include <vector>

#include "base/FileDescriptor.h"
#include "container/img/FrameIndex.h"

namespace velmar::detail {

/// Keeps the index of a running recording in a file of its own, since an "img" file gets its index
/// only when it is finished. If the recorder is killed, its frames are recovered with the journal.
///
/// The journal holds the records in the form of the index, one behind the other. A recording does
/// not depend on it: a journal that cannot be written is given up, and the recording goes on.
class FrameIndexJournal {
 public:
  explicit FrameIndexJournal(const std::string& path);

  // None of these operations throws.

  /// Starts an empty journal.
  void open();
  /// Appends a record in file byte order. Call it after the frame itself has been written, since a
  /// record must never stand for bytes that are not there.
  void append(const FrameIndex& record);
  /// Replaces all records that were appended by these, in one step, and brings them to the disk.
  /// False if the journal is as it was. True as well if there is none, since then nothing can be
  /// saved by stopping.
  bool replace(const std::vector<FrameIndex>& records);
  /// Closes the journal and keeps it.
  void close();
  /// Closes the journal and deletes it.
  void remove();

 private:
  static FileDescriptor create(const std::string& path);
  void giveUp();

  const std::string path_;
  const std::string newPath_;
  FileDescriptor file_;
};

}  // namespace velmar::detail

#endif
