#include "Commands.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Commands commands("img", "rtv");
  commands.run(data, size);
  return 0;
}
