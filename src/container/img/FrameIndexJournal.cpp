#include "container/img/FrameIndexJournal.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/PublishFile.h"
#include "velmar_logger/velmar_logger.h"

namespace velmar::detail {

FrameIndexJournal::FrameIndexJournal(const std::string& path)
    : path_(path), newPath_(path + ".new") {}

// What has the name belongs to another recording, whose file has gone.
FileDescriptor FrameIndexJournal::create(const std::string& path) {
  ::unlink(path.c_str());
  return {path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0644};
}

void FrameIndexJournal::open() {
  file_ = create(path_);
  if (!file_.isOpen()) giveUp();
}

void FrameIndexJournal::append(const FrameIndex& record) {
  if (file_.isOpen() && !file_.write(&record, sizeof record)) giveUp();
}

bool FrameIndexJournal::replace(const std::vector<FrameIndex>& records) {
  if (!file_.isOpen()) return true;
  file_ = create(newPath_);
  if (file_.isOpen() && file_.write(records.data(), records.size() * sizeof(FrameIndex)) &&
      file_.sync() && std::rename(newPath_.c_str(), path_.c_str()) == 0 && syncName(path_) == 0) {
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
