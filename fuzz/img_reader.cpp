#include "Recordings.h"
#include "support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TemporaryFile file("img");
  file.write(data, size);
  readAll(*makeVelmarVideoFileReader(file.path()));
  return 0;
}
