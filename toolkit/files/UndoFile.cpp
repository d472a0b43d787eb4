#include "toolkit/files/UndoFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <string_view>

#include "base/Bytes.h"
#include "base/CheckSum.h"
#include "base/FileDescriptor.h"
#include "base/PublishFile.h"
#include "toolkit/base/Failure.h"
#include "toolkit/files/FileBytes.h"
#include "velmar_video/VelmarVideoCommDef.h"

namespace velmar::toolkit {

namespace {

using namespace std::string_view_literals;
using detail::checkSum;

constexpr std::string_view kMagic = "velmar.undo\1"sv;  // ends with the version
constexpr std::size_t kNumber = sizeof(std::uint64_t);

void append(std::string& text, std::uint64_t number) {
  const std::uint64_t stored = htonll(number);
  text.append(reinterpret_cast<const char*>(&stored), sizeof stored);
}

// Takes what append() made off the front.
std::uint64_t takeNumber(std::string_view& text) {
  const std::uint64_t number = ntohll(detail::get<unsigned long>(text.data()));
  text.remove_prefix(kNumber);
  return number;
}

struct OldBytes {
  std::uint64_t offset;
  std::string bytes;

  std::uint64_t end() const { return offset + bytes.size(); }
};

struct Undo {
  std::uint64_t size = 0;  // of the file
  std::uint64_t headEnd = 0;
  std::uint64_t tailStart = 0;
  std::uint64_t sum = 0;  // of head and tail
  std::vector<OldBytes> old;
};

// The part of the file from `begin` to `end` as it is when all old bytes are back. Zeros stand
// where there is neither.
std::string restored(const FileBytes& file, const Undo& undo, std::uint64_t begin,
                     std::uint64_t end) {
  if (begin >= end) return {};
  std::string bytes = file.read(begin, end - begin);
  bytes.resize(end - begin);
  for (const OldBytes& old : undo.old) {
    const std::uint64_t from = std::max(begin, old.offset);
    const std::uint64_t to = std::min(end, old.end());
    if (from < to) {
      bytes.replace(from - begin, to - from, old.bytes, from - old.offset, to - from);
    }
  }
  return bytes;
}

std::uint64_t restoredSum(const FileBytes& file, const Undo& undo) {
  return checkSum(restored(file, undo, 0, undo.headEnd) +
                  restored(file, undo, std::max(undo.headEnd, undo.tailStart), undo.size));
}

std::string encode(const Undo& undo) {
  std::string text(kMagic);
  for (const std::uint64_t number : {undo.size, undo.headEnd, undo.tailStart, undo.sum}) {
    append(text, number);
  }
  for (const OldBytes& old : undo.old) {
    append(text, old.offset);
    append(text, old.bytes.size());
    text += old.bytes;
  }
  append(text, checkSum(text));
  return text;
}

// Whether it ends with the check sum of the rest.
bool isWhole(std::string_view text) {
  if (text.size() < kMagic.size() + kNumber || !text.starts_with(kMagic)) return false;
  std::string_view sum = text.substr(text.size() - kNumber);
  text.remove_suffix(kNumber);
  return takeNumber(sum) == checkSum(text);
}

// Of a whole one; nothing if its parts make no sense.
std::optional<Undo> decode(std::string_view text) {
  text.remove_prefix(kMagic.size());
  text.remove_suffix(kNumber);
  if (text.size() < 4 * kNumber) return std::nullopt;
  Undo undo;
  for (auto* number : {&undo.size, &undo.headEnd, &undo.tailStart, &undo.sum}) {
    *number = takeNumber(text);
  }
  while (!text.empty()) {
    if (text.size() < 2 * kNumber) return std::nullopt;
    const std::uint64_t offset = takeNumber(text);
    const std::uint64_t length = takeNumber(text);
    if (length > text.size() || offset > undo.size || length > undo.size - offset) {
      return std::nullopt;
    }
    undo.old.push_back({offset, std::string(text.substr(0, length))});
    text.remove_prefix(length);
  }
  return undo;
}

// What a power cut leaves of a file that was not on the disk yet: a part of it, and zeros.
bool mayBeUnfinished(std::string_view text) {
  const std::string_view begin = text.substr(0, kMagic.size());
  return kMagic.starts_with(begin.substr(0, begin.find_last_not_of('\0') + 1));
}

// An edit can cut off no more than it has kept, so that a wild size takes no memory.
bool fits(const FileBytes& file, const Undo& undo) {
  std::uint64_t most = file.size();
  for (const OldBytes& old : undo.old) most += old.bytes.size();
  return undo.size <= most && undo.headEnd <= undo.size && restoredSum(file, undo) == undo.sum;
}

struct Found {
  UndoState state = UndoState::None;
  Undo undo;
};

Found find(const std::string& path) {
  const std::string beside = undoPath(path);
  struct stat status {};
  if (::lstat(beside.c_str(), &status) != 0) {
    if (errno == ENOENT || errno == ENAMETOOLONG) return {};
    throw Failure::ofSystem(beside, "cannot look at it", errno);
  }
  if (!S_ISREG(status.st_mode)) return {UndoState::Foreign, {}};
  const FileBytes file(beside);
  const std::string text = file.read(0, file.size());
  if (!isWhole(text)) {
    return {mayBeUnfinished(text) ? UndoState::Unused : UndoState::Foreign, {}};
  }
  auto undo = decode(text);
  if (!undo || !fits(FileBytes(path), *undo)) return {UndoState::Foreign, {}};
  return {UndoState::Pending, std::move(*undo)};
}

Undo readUndo(const std::string& path, const EditedPlaces& places) {
  const FileBytes file(path);
  Undo undo{file.size(), std::min(places.headEnd, file.size()), places.tailStart, 0, {}};
  for (const FilePlace& place : places.overwritten) {
    undo.old.push_back({place.offset, file.read(place.offset, place.size)});
  }
  undo.sum = restoredSum(file, undo);
  return undo;
}

void putBack(const std::string& path, const Undo& undo, const FileLock& lock) {
  const detail::FileDescriptor file(path, O_WRONLY);
  const bool isBack =
      file.isOpen() &&
      std::all_of(undo.old.begin(), undo.old.end(),
                  [&file](const OldBytes& old) {
                    return file.writeAt(old.bytes.data(), old.bytes.size(), old.offset);
                  }) &&
      ::ftruncate(file.get(), static_cast<off_t>(undo.size)) == 0;
  if (!isBack) {
    throw Failure::ofSystem(path,
                            "the edit is half done and cannot be undone now; velmar-video recover "
                            "with this file alone undoes it",
                            errno);
  }
  lock.sync();
}

}  // namespace

void EditedPlaces::overwrite(FilePlace place) {
  if (!overwritten.empty() && overwritten.back().end() == place.offset) {
    overwritten.back().size += place.size;
  } else {
    overwritten.push_back(place);
  }
}

std::string undoPath(const std::string& path) {
  std::error_code error;
  const std::filesystem::path real = std::filesystem::canonical(path, error);
  return (error ? path : real.string()) + ".undo";
}

UndoState undoState(const std::string& path) { return find(path).state; }

std::string undoWords(const std::string& path, UndoState state) {
  if (state == UndoState::Pending) {
    return "an edit of it was interrupted and may be half done; velmar-video recover with this "
           "file alone undoes it";
  }
  if (state == UndoState::Foreign) {
    return undoPath(path) +
           " does not belong to it, or it was replaced or changed after an edit was interrupted; "
           "no edit is possible until that file is moved away";
  }
  return "";
}

void keepForUndo(const std::string& path, const EditedPlaces& places) {
  const std::string text = encode(readUndo(path, places));
  const std::string beside = undoPath(path);
  struct stat status {};
  const unsigned int mode = ::stat(path.c_str(), &status) == 0 ? status.st_mode & 0666U : 0600U;
  const detail::FileDescriptor file(beside, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
  if (!file.isOpen()) throw Failure::ofCreation(beside, errno);
  // Whoever reads the recording has to find out, whatever the umask is.
  int cause = 0;
  if (::fchmod(file.get(), mode) != 0 || !file.write(text.data(), text.size()) || !file.sync()) {
    cause = errno;
  } else {
    cause = detail::syncName(beside);
  }
  if (cause == 0) return;
  ::unlink(beside.c_str());
  throw Failure::ofSystem(beside, "cannot write it", cause);
}

void dropUndo(const std::string& path) {
  const std::string beside = undoPath(path);
  const int cause = ::unlink(beside.c_str()) == 0 ? detail::syncName(beside) : errno;
  if (cause != 0) throw Failure::ofSystem(beside, "cannot delete it", cause);
}

UndoState undoEdit(const std::string& path, const FileLock& lock) {
  const Found found = find(path);
  if (found.state == UndoState::Foreign) {
    throw Failure(path, undoWords(path, found.state), VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  if (found.state == UndoState::Pending) putBack(path, found.undo, lock);
  if (found.state != UndoState::None) dropUndo(path);
  return found.state;
}

}  // namespace velmar::toolkit
