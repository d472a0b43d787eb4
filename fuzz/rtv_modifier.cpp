#include "velmar_video/rtv/RtvContainerModifier.h"

#include "Recordings.h"
#include "support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool latched = latchHostByteOrder();
  require(latched);
  static const TemporaryFile file("rtv");
  file.write(data, size);
  RtvContainerModifier modifier(file.path());
  if (size % 2 == 0) modifier.setTaggingFlags(size);
  editAll(modifier, data, size);
  // Again: a modifier of this container may be opened more than once.
  editAll(modifier, data, size / 2);
  readAll(*makeVelmarVideoFileReader(file.path()));
  return 0;
}
