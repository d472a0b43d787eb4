#include "Recordings.h"
#include "container/img/ImgContainerModifier.h"
#include "support.h"

namespace {

void readRaw(const std::string& path) {
  ImgContainerModifier modifier(path);
  modifier.open();
  std::vector<unsigned char> buffer(1 << 16);
  forSomeFrames(3, [&](unsigned int index) {
    modifier.getRawImage(index, buffer.size(), buffer.data());
    consume(buffer.data(), buffer.size());
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TemporaryFile file("img");
  file.write(data, size);
  editAll(*makeVelmarVideoFileModifier(file.path()), data, size);
  readRaw(file.path());
  readAll(*makeVelmarVideoFileReader(file.path()));
  return 0;
}
