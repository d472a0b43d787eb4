#include "support.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>

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
  // The sanitizer checks a copy as a whole, which is far quicker than byte by byte.
  static std::vector<char> copy;
  copy.resize(std::max(copy.size(), size));
  if (size > 0) std::memcpy(copy.data(), bytes, size);
}

TemporaryFile::TemporaryFile(const std::string& extension)
    : path_("/dev/shm/velmar-fuzz-" + std::to_string(::getpid()) + "." + extension) {}

TemporaryFile::~TemporaryFile() { ::unlink(path_.c_str()); }

void TemporaryFile::write(const std::uint8_t* data, std::size_t size) const {
  std::ofstream file(path_, std::ios::binary);
  file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  require(file.flush().good());
}
