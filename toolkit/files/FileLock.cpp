#include "toolkit/files/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience(30);
constexpr std::chrono::milliseconds kPause(1);

// False, with the cause in errno, which is EWOULDBLOCK if others have it.
bool tryLock(const detail::FileDescriptor& file, int kind) {
  return ::flock(file.get(), kind | LOCK_NB) == 0;
}

Failure busy(const std::string& path, const std::string& words) {
  return {path, words + "; try again later", VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E};
}

}  // namespace

// Without O_NONBLOCK a pipe that nobody writes to would not open.
FileLock::FileLock(const std::string& path, Kind kind)
    : path_(path), file_(path, (kind == Kind::Edit ? O_RDWR : O_RDONLY) | O_NONBLOCK) {
  if (kind == Kind::Edit) {
    if (!file_.isOpen()) throw Failure::ofSystem(path_, "cannot change it", errno);
    lockForEditing();
  } else if (file_.isOpen()) {
    lockForReading();
  }
}

void FileLock::lockForReading() const {
  const auto end = Clock::now() + kPatience;
  while (!tryLock(file_, LOCK_SH) && errno == EWOULDBLOCK) {
    if (Clock::now() > end) throw busy(path_, "an edit is changing it");
    std::this_thread::sleep_for(kPause);
  }
}

void FileLock::lockForEditing() const {
  const auto end = Clock::now() + kPatience;
  while (!tryLock(file_, LOCK_EX)) {
    if (errno == ENOLCK || errno == EOPNOTSUPP) break;  // some file systems have no locks
    if (errno != EWOULDBLOCK) throw Failure::ofSystem(path_, "cannot lock it", errno);
    // Readers would let another reader in.
    if (!tryLock(file_, LOCK_SH)) throw busy(path_, "another edit is changing it");
    ::flock(file_.get(), LOCK_UN);
    if (Clock::now() > end) throw busy(path_, "it is being read");
    std::this_thread::sleep_for(kPause);
  }
  struct stat locked {};
  struct stat named {};
  if (::fstat(file_.get(), &locked) != 0 || ::stat(path_.c_str(), &named) != 0 ||
      locked.st_dev != named.st_dev || locked.st_ino != named.st_ino) {
    throw busy(path_, "another file has got its name");
  }
}

void FileLock::sync() const {
  if (!file_.sync()) throw Failure::ofSystem(path_, "cannot bring it to the disk", errno);
}

}  // namespace velmar::toolkit
