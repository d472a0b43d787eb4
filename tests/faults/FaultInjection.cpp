#include "faults/FaultInjection.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

struct {
  bool armed = false;
  Call call{};
  unsigned first = 0, last = 0;
  Extent extent{};
  int error = 0;
  unsigned calls = 0, failed = 0;
} plan;

std::array<bool, 1024> hasNews{};  // by descriptor: of writes that were lost

bool hearsOfLoss(int fd) {
  if (!std::exchange(hasNews.at(fd), false)) return false;
  errno = EIO;
  return true;
}

bool fails(Call call) {
  if (!plan.armed || call != plan.call) return false;
  ++plan.calls;
  if (plan.calls < plan.first || plan.calls > plan.last) return false;
  ++plan.failed;
  errno = plan.error;
  return true;
}

// How much of `size` bytes a failing call still writes.
std::size_t part(std::size_t size) {
  return plan.extent == Extent::HalfDone && plan.calls == plan.first ? size / 2 : 0;
}

// Calls the function that this program's own stands before.
template <typename Result, typename... Arguments>
Result next(const char* name, Arguments... arguments) {
  return reinterpret_cast<Result (*)(Arguments...)>(::dlsym(RTLD_NEXT, name))(arguments...);
}

}  // namespace

void arm(Call call, unsigned number, Extent extent, int error) {
  const unsigned last = extent == Extent::Once       ? number
                        : extent == Extent::HalfDone ? number + 1
                                                     : -1U;
  plan = {true, call, number, last, extent, error, 0, 0};
}

unsigned disarm() {
  plan.armed = false;
  return plan.failed;
}

void loseWrites() { hasNews.fill(true); }

extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  const Call call = (flags & O_DIRECTORY) != 0 ? Call::OpenFolder : Call::Open;
  const int fd = fails(call) ? -1 : next<int>("open", path, flags, mode);
  if (fd >= 0) hasNews.at(fd) = false;
  return fd;
}

int close(int fd) {
  const int result = next<int>("close", fd);
  return fails(Call::Close) ? -1 : result;
}

ssize_t pread(int fd, void* data, std::size_t size, off_t offset) {
  return fails(Call::Pread) ? -1 : next<ssize_t>("pread", fd, data, size, offset);
}

ssize_t write(int fd, const void* data, std::size_t size) {
  if (fails(Call::Write)) size = part(size);
  return size > 0 ? next<ssize_t>("write", fd, data, size) : -1;
}

ssize_t pwrite(int fd, const void* data, std::size_t size, off_t offset) {
  if (fails(Call::Pwrite)) size = part(size);
  return size > 0 ? next<ssize_t>("pwrite", fd, data, size, offset) : -1;
}

int ftruncate(int fd, off_t length) noexcept {
  return fails(Call::Ftruncate) ? -1 : next<int>("ftruncate", fd, length);
}

int fallocate(int fd, int mode, off_t offset, off_t length) {
  return fails(Call::Fallocate) ? -1 : next<int>("fallocate", fd, mode, offset, length);
}

void* mmap(void* at, std::size_t size, int protection, int flags, int fd, off_t offset) noexcept {
  const Call call = (flags & MAP_ANONYMOUS) != 0 ? Call::Reserve : Call::Mmap;
  return fails(call) ? MAP_FAILED : next<void*>("mmap", at, size, protection, flags, fd, offset);
}

int munmap(void* at, std::size_t size) noexcept {
  const int result = next<int>("munmap", at, size);
  return fails(Call::Munmap) ? -1 : result;
}

int rename(const char* from, const char* to) noexcept {
  return fails(Call::Rename) ? -1 : next<int>("rename", from, to);
}

int stat(const char* path, struct stat* status) noexcept {
  return fails(Call::Stat) ? -1 : next<int>("stat", path, status);
}

int fstat(int fd, struct stat* status) noexcept {
  return fails(Call::Stat) ? -1 : next<int>("fstat", fd, status);
}

// These do nothing otherwise: no power cut comes into it, and a disk takes its time.
int fdatasync(int fd) { return fails(Call::SyncData) || hearsOfLoss(fd) ? -1 : 0; }
int fsync(int /*fd*/) { return fails(Call::SyncFolder) ? -1 : 0; }

#ifndef __SANITIZE_ADDRESS__
void* __libc_malloc(std::size_t size);

void* malloc(std::size_t size) noexcept {
  return fails(Call::Allocate) ? nullptr : __libc_malloc(size);
}
#endif

}  // extern "C"

#ifdef __SANITIZE_ADDRESS__
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return fails(Call::Allocate) ? nullptr : std::malloc(size);
}

void* operator new(std::size_t size) {
  if (void* memory = operator new(size, std::nothrow)) return memory;
  throw std::bad_alloc();
}

void* operator new[](std::size_t size) { return operator new(size); }

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
  return operator new(size, tag);
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
#endif
