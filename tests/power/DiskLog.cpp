#include "power/DiskLog.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdarg>
#include <filesystem>
#include <optional>

#include "support/TestSupport.h"

namespace {

using Kind = DiskEvent::Kind;
constexpr std::size_t kPage = 4096;

struct {
  std::vector<DiskEvent>* events = nullptr;
  std::string folder;
  std::map<std::string, int> names;
  std::map<int, int> files;  // by their descriptors
  int count = 0;
} recorder;

template <typename Result, typename... Arguments>
Result next(const char* name, Arguments... arguments) {
  return reinterpret_cast<Result (*)(Arguments...)>(::dlsym(RTLD_NEXT, name))(arguments...);
}

std::optional<std::string> nameIn(const char* path) {
  const std::string text = path;
  const bool isInside = recorder.events != nullptr && text.starts_with(recorder.folder) &&
                        text.find('/', recorder.folder.size()) == text.npos;
  return isInside ? std::optional(text.substr(recorder.folder.size())) : std::nullopt;
}

void add(DiskEvent event) { recorder.events->push_back(std::move(event)); }

void opened(const char* path, int flags, int fd) {
  const auto name = nameIn(path);
  if (!name || fd < 0 || (flags & O_DIRECTORY) != 0) return;
  if (!recorder.names.contains(*name)) {
    recorder.names[*name] = recorder.count++;
    add({Kind::Create, recorder.names[*name], *name});
  } else if ((flags & O_TRUNC) != 0) {
    add({Kind::Resize, recorder.names[*name]});
  }
  recorder.files[fd] = recorder.names[*name];
}

int fileOf(int fd) {
  const auto file = recorder.files.find(fd);
  return recorder.events == nullptr || file == recorder.files.end() ? -1 : file->second;
}

void written(int fd, const void* data, ssize_t size, std::uint64_t offset) {
  if (fileOf(fd) < 0 || size <= 0) return;
  const std::string bytes(static_cast<const char*>(data), static_cast<std::size_t>(size));
  add({Kind::Write, fileOf(fd), "", "", offset, bytes});
}

void perform(const DiskEvent& event, std::string& content) {
  if (event.kind == Kind::Resize) content.resize(event.offset);
  if (event.kind != Kind::Write) return;
  content.resize(std::max<std::size_t>(content.size(), event.offset + event.bytes.size()));
  content.replace(event.offset, event.bytes.size(), event.bytes);
}

// Only the pages that the disk happens to have; the size changes in any case.
void performInPart(DiskEvent event, std::string& content, std::mt19937& random) {
  const std::string before = content;
  perform(event, content);
  for (std::size_t at = 0; event.kind == Kind::Write && at < event.bytes.size();) {
    const std::size_t place = event.offset + at;
    const std::size_t size = std::min(kPage - place % kPage, event.bytes.size() - at);
    if (random() % 2 == 0) {
      std::string old = before.substr(std::min(place, before.size()), size);
      old.resize(size);
      content.replace(place, size, old);
    }
    at += size;
  }
}

void perform(const DiskEvent& event, std::map<std::string, int>& names) {
  if (event.kind == Kind::Create) names[event.name] = event.file;
  if (event.kind == Kind::Unlink) names.erase(event.name);
  if (event.kind != Kind::Rename || !names.contains(event.name)) return;
  names[event.target] = names[event.name];
  names.erase(event.name);
}

bool changesNames(Kind kind) {
  return kind == Kind::Create || kind == Kind::Rename || kind == Kind::Unlink;
}

}  // namespace

DiskLog::DiskLog(const std::string& folder) {
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names_[entry.path().filename()] = static_cast<int>(contents_.size());
    contents_.push_back(readFile(entry.path()));
  }
  recorder.names = names_;
  recorder.count = static_cast<int>(contents_.size());
  recorder.files.clear();
  recorder.folder = folder;
  recorder.events = &events_;
}

DiskLog::~DiskLog() { stop(); }

void DiskLog::stop() { recorder.events = nullptr; }

void DiskLog::promise(std::size_t what) {
  DiskEvent event{Kind::Promise};
  event.promised = what;
  add(event);
}

std::size_t DiskLog::promisedBefore(std::size_t event) const {
  while (event-- > 0) {
    if (events_[event].kind == Kind::Promise) return events_[event].promised;
  }
  return 0;
}

Files DiskLog::cut(std::size_t before, DiskModel model, std::mt19937& random) const {
  std::map<int, std::size_t> synced;  // by file: what came earlier is on the disk
  std::size_t namesSynced = 0;
  for (std::size_t i = 0; i < before; ++i) {
    if (events_[i].kind == Kind::SyncFile) synced[events_[i].file] = i;
    const bool isJournaled = events_[i].kind == Kind::SyncFile && model == DiskModel::Ordered;
    if (events_[i].kind == Kind::SyncFolder || isJournaled) namesSynced = i;
  }
  std::map<int, std::size_t> reached;  // ordered: where the disk has stopped
  const auto stopOf = [&](int file, std::size_t from) {
    const auto [stop, isNew] = reached.try_emplace(file, from);
    if (isNew) stop->second += random() % (before - from + 1);
    return stop->second;
  };
  constexpr int kNames = -1;
  std::map<int, std::string> contents;
  for (std::size_t i = 0; i < contents_.size(); ++i) contents[static_cast<int>(i)] = contents_[i];
  std::map<std::string, int> names = names_;
  for (std::size_t i = 0; i < before; ++i) {
    const DiskEvent& event = events_[i];
    if (changesNames(event.kind)) {
      const bool isThere =
          model == DiskModel::Ordered ? i < stopOf(kNames, namesSynced) : random() % 2 == 0;
      if (i < namesSynced || isThere) perform(event, names);
      continue;
    }
    std::string& content = contents[event.file];
    if (i < synced[event.file]) {
      perform(event, content);
    } else if (model == DiskModel::Ordered) {
      if (i < stopOf(event.file, synced[event.file])) perform(event, content);
    } else if (random() % 4 != 0) {
      performInPart(event, content, random);
    }
  }
  Files files;
  for (const auto& [name, file] : names) files[name] = contents[file];
  return files;
}

extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  const int fd = next<int>("open", path, flags, mode);
  opened(path, flags, fd);
  return fd;
}

int close(int fd) {
  recorder.files.erase(fd);
  return next<int>("close", fd);
}

ssize_t write(int fd, const void* data, std::size_t size) {
  const off_t offset = fileOf(fd) < 0 ? 0 : ::lseek(fd, 0, SEEK_CUR);
  const auto count = next<ssize_t>("write", fd, data, size);
  written(fd, data, count, static_cast<std::uint64_t>(offset));
  return count;
}

ssize_t pwrite(int fd, const void* data, std::size_t size, off_t offset) {
  const auto count = next<ssize_t>("pwrite", fd, data, size, offset);
  written(fd, data, count, static_cast<std::uint64_t>(offset));
  return count;
}

int ftruncate(int fd, off_t length) noexcept {
  if (fileOf(fd) >= 0) {
    add({Kind::Resize, fileOf(fd), "", "", static_cast<std::uint64_t>(length)});
  }
  return next<int>("ftruncate", fd, length);
}

int rename(const char* from, const char* to) noexcept {
  const int result = next<int>("rename", from, to);
  const auto name = nameIn(from), target = nameIn(to);
  if (result != 0 || !name || !target) return result;
  recorder.names[*target] = recorder.names[*name];
  recorder.names.erase(*name);
  add({Kind::Rename, recorder.names[*target], *name, *target});
  return result;
}

int unlink(const char* path) noexcept {
  const int result = next<int>("unlink", path);
  const auto name = nameIn(path);
  if (result == 0 && name && recorder.names.erase(*name) > 0) add({Kind::Unlink, -1, *name});
  return result;
}

int fdatasync(int fd) {
  if (fileOf(fd) >= 0) add({Kind::SyncFile, fileOf(fd)});
  return 0;
}

// A descriptor that is no file's is the folder's.
int fsync(int fd) {
  if (recorder.events != nullptr)
    add({fileOf(fd) >= 0 ? Kind::SyncFile : Kind::SyncFolder, fileOf(fd)});
  return 0;
}

}  // extern "C"
