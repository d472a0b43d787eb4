#include "toolkit/writing/OutputGuard.h"
#include "toolkit/files/RecorderFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "base/FileDescriptor.h"
#include "toolkit/base/Failure.h"
#include "toolkit/files/FileKind.h"
#include "toolkit/files/LockHolder.h"
#include "toolkit/recording/RecordingDescription.h"

namespace velmar::toolkit {

namespace {

std::optional<struct stat> statusOf(const std::string& path) {
  struct stat status {};
  const int result = path == "-" ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status);
  if (result != 0) return std::nullopt;
  return status;
}

bool isSameFile(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

Failure refusal(const std::string& path, const std::string& words) {
  return {path, words, VELMAR_ERROR_CODE_INVALID_PARAMETER_E};
}

// A link, a pipe and the like are no temporary files of ours: not even --force writes there.
void refuseOtherThanFile(const std::string& temporary) {
  struct stat status {};
  if (lstat(temporary.c_str(), &status) != 0 || S_ISREG(status.st_mode)) return;
  throw refusal(temporary, "it is already there and is " + kindOf(status.st_mode) +
                               ", not a file; move it away");
}

bool exists(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0;
}

// `path` is the output or a file beside it that is needed while writing.
void refuseInput(const std::string& path, const std::vector<std::string>& inputs) {
  const auto status = statusOf(path);
  if (!status) return;
  for (const std::string& input : inputs) {
    const auto inputStatus = statusOf(input);
    if (inputStatus && isSameFile(*status, *inputStatus)) {
      throw refusal(path, "it would be overwritten, but it is also an input");
    }
  }
}

}  // namespace

void checkOutput(const std::string& path, const std::vector<std::string>& inputs, bool force) {
  refuseInput(path, inputs);
  const auto status = statusOf(path);
  if (status && !S_ISREG(status->st_mode)) {
    throw refusal(path, "it is already there and is " + kindOf(status->st_mode) + ", not a file");
  }
  if (exists(path) && !force) throw refusal(path, "it is already there; --force replaces it");
}

ReservedOutput::ReservedOutput(const std::string& path, const std::vector<std::string>& inputs,
                               bool force)
    : temporary_(temporaryPath(path)) {
  const std::string journal = journalPath(temporary_);
  refuseInput(temporary_, inputs);
  refuseInput(journal, inputs);
  checkOutput(path, inputs, force);
  refuseOtherThanFile(temporary_);
  refuseOtherThanFile(journal);
  if (const auto holder = lockHolder(temporary_)) {
    throw refusal(temporary_, *holder + " is recording to it");
  }
  if (force) return;
  const detail::FileDescriptor file(temporary_, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW,
                                    isRtvPath(path) ? 0644 : 0666);
  const int cause = errno;
  if (!file.isOpen() && cause != EEXIST) throw Failure::ofCreation(path, cause);
  for (const std::string& leftover : {temporary_, journal}) {
    if (leftover == temporary_ ? file.isOpen() : !exists(leftover)) continue;
    if (file.isOpen()) ::unlink(temporary_.c_str());
    throw refusal(leftover,
                  "it is already there, perhaps an interrupted recording, which the command "
                  "recover saves; --force replaces it");
  }
  // Another program may have finished its recording meanwhile.
  if (!exists(path)) return;
  ::unlink(temporary_.c_str());
  checkOutput(path, inputs, force);
}

ReservedOutput::ReservedOutput(ReservedOutput&& other) noexcept
    : temporary_(std::exchange(other.temporary_, "")) {}

ReservedOutput::~ReservedOutput() {
  struct stat status {};
  const bool isEmpty =
      lstat(temporary_.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_size == 0;
  if (isEmpty && !lockHolder(temporary_)) ::unlink(temporary_.c_str());
}

void checkStandardOutput(const std::string& input) {
  struct stat output {};
  const auto status = statusOf(input);
  if (status && fstat(STDOUT_FILENO, &output) == 0 && isSameFile(*status, output)) {
    throw refusal(input, "it is also where standard output goes");
  }
}

}  // namespace velmar::toolkit
