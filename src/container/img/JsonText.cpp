#include "container/img/JsonText.h"

#include <json/reader.h>
#include <json/writer.h>

// Json::Reader is the dialect that the format was written with: its successor reads another one
// (trailing commas, a byte order mark). Both are deprecated in jsoncpp, neither is going away.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
bool parseJson(const std::string& text, Json::Value& value) {
  return Json::Reader().parse(text, value, true);
}
#pragma GCC diagnostic pop

std::string styledText(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "   ";
  std::string text = value.hasComment(Json::commentBefore) ? "\n" : "";
  text += Json::writeString(builder, value);
  text += '\n';
  return text;
}
