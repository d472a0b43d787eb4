#include "container/img/ImgMetaData.h"
#include "support.h"

namespace {

/// What can be written can be read again.
void writeAndRead(const ImgMetaData& metaData) {
  std::string text;
  if (!metaData.toText(text)) return;
  consume(text);
  ImgMetaData again;
  require(again.jsonTo(text.c_str()));
  require(again.framesCount == metaData.framesCount && again.width == metaData.width);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  ImgMetaData read;
  if (read.jsonTo(text.c_str())) writeAndRead(read);

  ImgMetaData made;
  made.cameraId = text;
  made.cameraParams = text;
  made.extendedInfo = text;
  writeAndRead(made);
  return 0;
}
