#include <json/reader.h>
#include <json/writer.h>

#include <algorithm>
#include <memory>

#include "container/img/ImgMetaData.h"
#include "support.h"

namespace {

// Without its comments, which may change their places.
std::string valuesOf(const std::string& text) {
  Json::CharReaderBuilder builder;
  builder["collectComments"] = false;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value value;
  require(reader->parse(text.data(), text.data() + text.size(), &value, nullptr));
  return Json::writeString(Json::StreamWriterBuilder(), value);
}

// jsoncpp's writer ends a member's name at a zero byte, and replaces what is not UTF-8.
bool isWrittenExactly(const std::string& text) {
  const auto isAscii = [](char character) { return character > 0; };
  return std::all_of(text.begin(), text.end(), isAscii) && text.find("\\u") == text.npos;
}

// What can be written can be read again.
void writeAndRead(const ImgMetaData& metaData) {
  std::string text;
  if (!metaData.toText(text)) return;
  consume(text);
  ImgMetaData again;
  require(again.jsonTo(text.c_str()));
  require(again.framesCount == metaData.framesCount && again.width == metaData.width);
  if (!isWrittenExactly(metaData.cameraParams + metaData.extendedInfo)) return;
  require(valuesOf(again.cameraParams) == valuesOf(metaData.cameraParams));
  require(valuesOf(again.extendedInfo) == valuesOf(metaData.extendedInfo));
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
