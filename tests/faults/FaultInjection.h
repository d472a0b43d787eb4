/// Makes calls of the operating system or of the allocator fail, by their number.
///
/// The functions are defined in the test program itself, where the shared libraries that it loads
/// find them first as well.
#ifndef VELMAR_TESTS_FAULT_INJECTION_H
#define VELMAR_TESTS_FAULT_INJECTION_H

enum class Call {
  Allocate,  ///< malloc(); with AddressSanitizer, which has its own, operator new
  Close,     ///< closes all the same
  Fallocate,
  Ftruncate,
  Mmap,     ///< of a file
  Reserve,  ///< mmap() without a file
  Munmap,   ///< unmaps all the same: nothing could be done about a map that stays
  Open,
  OpenFolder,
  Pread,
  Pwrite,
  Rename,
  Stat,        ///< stat() and fstat()
  SyncData,    ///< fdatasync()
  SyncFolder,  ///< fsync()
  Write,
};

enum class Extent {
  Once,
  FromThereOn,
  HalfDone,  ///< half of the bytes are written, the rest is refused
};

/// Fails from here on what it says, until disarm().
void arm(Call call, unsigned number, Extent extent, int error);
/// How many calls have failed.
unsigned disarm();

/// What has been written does not reach the disk. As the system does, fdatasync() says so once to
/// each descriptor that is open now, and to no other.
void loseWrites();

#endif
