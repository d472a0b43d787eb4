#include "Recovery.h"
#include "support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TemporaryFile file("rtv.tmp");
  static const Recovery recovery(file.path(), ".rtv", {});
  file.write(data, size);
  recovery.run();
  return 0;
}
