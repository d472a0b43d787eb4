#ifndef VELMAR_BASE_MEMORY_MAP_H
#define VELMAR_BASE_MEMORY_MAP_H

/// Owns a shared map of a file from its beginning. Failures leave their cause in errno.
class MemoryMap {
 public:
  enum class Access { ReadOnly, ReadWrite };

  MemoryMap() = default;
  MemoryMap(const MemoryMap&) = delete;
  MemoryMap& operator=(const MemoryMap&) = delete;
  ~MemoryMap();

  /// Maps `length` bytes instead of what was mapped, all of them inside the file: ask the
  /// descriptor for its size, not the path, which another file may have got meanwhile. The
  /// descriptor may be closed afterwards.
  bool map(int fd, unsigned long length, Access access);
  /// Starts writing what was stored to the disk.
  void flush() const;
  /// False if the system refuses; the map is given up all the same.
  bool unmap();
  /// Unmaps the file but keeps the address range reserved, inaccessible and without memory, until
  /// the next map() or the end of this object: no other map can come to lie there meanwhile.
  void retire();

  bool isMapped() const { return address_ != nullptr && !retired_; }
  /// Null unless mapped.
  unsigned char* data() const { return isMapped() ? address_ : nullptr; }

 private:
  unsigned char* address_ = nullptr;
  unsigned long length_ = 0;
  bool retired_ = false;
};

#endif
