#include "container/img/FrameIndexJournal.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/PublishFile.h"
#include "velmar_logger/velmar_logger.h"

namespace velmar::detail {

FrameIndexJournal::FrameIndexJournal(const std::string& path)
    : path_(path), newPath_(path + ".new") {}

// What has the name belongs to another recording, whose file has gone.
bool FrameIndexJournal::create(const std::string& path) {
  ::unlink(path.c_str());
  file_ = FileDescriptor(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0644);
  return file_.isOpen() && file_.write(kJournalMagic.data(), kJournalMagic.size());
}

void FrameIndexJournal::open() {
  if (!create(path_)) giveUp();
}

void FrameIndexJournal::append(const FrameIndex& record) {
  const JournalRecord stored = JournalRecord::of(record);
  if (file_.isOpen() && !file_.write(&stored, sizeof stored)) giveUp();
}

// In pieces: together they are larger than the index, which already takes memory.
bool FrameIndexJournal::write(const std::vector<FrameIndex>& records) {
  std::array<JournalRecord, 1024> piece;
  for (std::size_t done = 0; done < records.size(); done += piece.size()) {
    const std::size_t count = std::min(piece.size(), records.size() - done);
    std::transform(&records[done], &records[done] + count, piece.begin(), JournalRecord::of);
    if (!file_.write(piece.data(), count * sizeof(JournalRecord))) return false;
  }
  return true;
}

bool FrameIndexJournal::replace(const std::vector<FrameIndex>& records) {
  if (!file_.isOpen()) return true;
  if (create(newPath_) && write(records) && file_.sync() &&
      std::rename(newPath_.c_str(), path_.c_str()) == 0 && syncName(path_) == 0) {
    return true;
  }
  giveUp();
  ::unlink(newPath_.c_str());
  return false;
}

void FrameIndexJournal::close() { file_.close(); }

void FrameIndexJournal::remove() {
  file_.close();
  ::unlink(path_.c_str());
}

void FrameIndexJournal::giveUp() {
  velmar_logger::w("ImgContainerCreater_TAG", "index journal %s cannot be written: %s",
                   path_.c_str(), std::strerror(errno));
  file_.close();
}

}  // namespace velmar::detail
