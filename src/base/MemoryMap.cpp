#include "base/MemoryMap.h"

#include <sys/mman.h>

#include <utility>

namespace velmar::detail {

MemoryMap::~MemoryMap() { unmap(); }

bool MemoryMap::map(int fd, unsigned long length) {
  unmap();
  void* address = ::mmap(nullptr, length, PROT_READ, MAP_SHARED, fd, 0);
  if (address == MAP_FAILED) return false;
  address_ = static_cast<unsigned char*>(address);
  length_ = length;
  retired_ = false;
  return true;
}

bool MemoryMap::unmap() {
  if (address_ == nullptr) return true;
  return ::munmap(std::exchange(address_, nullptr), length_) == 0;
}

void MemoryMap::retire() {
  if (!isMapped()) return;
  // One call replaces the file by the reservation, so the range is never free in between.
  void* reserved = ::mmap(address_, length_, PROT_NONE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED, -1, 0);
  if (reserved == MAP_FAILED) unmap();
  retired_ = true;
}

}  // namespace velmar::detail
