#include "Recovery.h"
#include "support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TemporaryFile file("rtv.tmp");
  file.write(data, size);
  recover(file.path(), ".rtv", {});
  verifyBytes("rtv", data, size);
  return 0;
}
