#include "support.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "velmar_logger/control.h"

extern "C" int LLVMFuzzerInitialize(int* /*argumentCount*/, char*** /*arguments*/) {
  constexpr int kNoLines = 4;
  velmar_logger::setLevel(kNoLines);
  return 0;
}

void require(bool holds) {
  if (!holds) std::abort();
}

void consume(const void* bytes, std::size_t size) {
  static volatile unsigned char sink = 0;
  unsigned char all = 0;
  for (std::size_t i = 0; i < size; ++i) all ^= static_cast<const unsigned char*>(bytes)[i];
  sink = sink ^ all;
}

TemporaryFile::TemporaryFile(const std::string& extension)
    : path_("/dev/shm/velmar-fuzz-" + std::to_string(::getpid()) + "." + extension) {}

TemporaryFile::~TemporaryFile() { ::unlink(path_.c_str()); }

void TemporaryFile::write(const std::uint8_t* data, std::size_t size) const {
  std::ofstream file(path_, std::ios::binary);
  file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  require(file.flush().good());
}
