#include "container/img/FrameIndexJournal.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "velmar_logger/velmar_logger.h"

namespace velmar::detail {

FrameIndexJournal::FrameIndexJournal(const std::string& path)
    : path_(path), newPath_(path + ".new") {}

void FrameIndexJournal::open() {
  file_ = FileDescriptor(path_, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (file_.isOpen()) return;
  giveUp();
  ::unlink(path_.c_str());  // an old one belongs to another recording
}

void FrameIndexJournal::append(const FrameIndex& record) {
  if (file_.isOpen() && !file_.write(&record, sizeof record)) giveUp();
}

void FrameIndexJournal::replace(const std::vector<FrameIndex>& records) {
  if (!file_.isOpen()) return;
  file_ = FileDescriptor(newPath_, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (!file_.isOpen() || !file_.write(records.data(), records.size() * sizeof(FrameIndex)) ||
      !file_.sync() || std::rename(newPath_.c_str(), path_.c_str()) != 0) {
    giveUp();
    ::unlink(newPath_.c_str());
  }
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
