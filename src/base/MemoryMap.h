#ifndef VELMAR_BASE_MEMORY_MAP_H
#define VELMAR_BASE_MEMORY_MAP_H

namespace velmar::detail {

/// Owns a shared map of a file from its beginning, for reading: a store could need space that a
/// full disk does not have, which would end the process. Failures leave their cause in errno.
class MemoryMap {
 public:
  MemoryMap() = default;
  MemoryMap(const MemoryMap&) = delete;
  MemoryMap& operator=(const MemoryMap&) = delete;
  ~MemoryMap();

  /// Maps `length` bytes in place of an earlier map. All of them have to be inside the file: take
  /// its size from the descriptor, since another file may have got the path meanwhile. The
  /// descriptor may be closed afterwards.
  bool map(int fd, unsigned long length);
  /// False if the system refuses; the object has no map afterwards in either case.
  bool unmap();
  /// Unmaps the file but keeps the address range reserved, inaccessible and without memory, until
  /// the next map() or the destructor, so that no other map gets these addresses.
  void retire();

  bool isMapped() const { return address_ != nullptr && !retired_; }
  /// Null unless mapped.
  const unsigned char* data() const { return isMapped() ? address_ : nullptr; }

 private:
  unsigned char* address_ = nullptr;
  unsigned long length_ = 0;
  bool retired_ = false;
};

}  // namespace velmar::detail

#endif
