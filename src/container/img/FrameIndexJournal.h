#ifndef VELMAR_IMG_FRAME_INDEX_JOURNAL_H
#define VELMAR_IMG_FRAME_INDEX_JOURNAL_H

#include <string>
#include <string_view>
#include <vector>

#include "base/CheckSum.h"
#include "base/FileDescriptor.h"
#include "container/img/FrameIndex.h"

namespace velmar::detail {

/// What its name ends in, behind that of the temporary file.
constexpr char kJournalEnding[] = ".index";

/// What a journal begins with; the last byte is the version. Recorders of version 1.0 wrote the
/// records of the index alone.
constexpr std::string_view kJournalMagic("velmar.jrnl\1", 12);

/// A record of a journal, 36 bytes as in the file.
struct __attribute__((packed)) JournalRecord {
  FrameIndex record;       ///< big-endian
  std::uint64_t checkSum;  ///< of the record's bytes, big-endian

  static JournalRecord of(const FrameIndex& record) {
    const std::string_view bytes(reinterpret_cast<const char*>(&record), sizeof record);
    return {record, htonll(detail::checkSum(bytes))};
  }
  /// Whether all of it came to the disk.
  bool isWhole() const { return checkSum == of(record).checkSum; }
};
static_assert(sizeof(JournalRecord) == 36);

/// Keeps the index of a running recording in a file of its own, since an "img" file gets its index
/// only when it is finished. If the recorder is killed, its frames are recovered with the journal.
///
/// A journal that cannot be written is given up, and the recording goes on without. Only one that
/// cannot be replaced keeps it from being finished.
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
  /// If it is false, the journal on the disk may be the old one. True as well if there is none,
  /// since then nothing can be saved by stopping.
  bool replace(const std::vector<FrameIndex>& records);
  /// Closes the journal and keeps it.
  void close();
  /// Closes the journal and deletes it.
  void remove();

 private:
  bool create(const std::string& path);
  bool write(const std::vector<FrameIndex>& records);
  void giveUp();

  const std::string path_;
  const std::string newPath_;
  FileDescriptor file_;
};

}  // namespace velmar::detail

#endif
