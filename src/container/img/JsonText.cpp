#include "container/img/JsonText.h"

#include <json/reader.h>
#include <json/writer.h>

#include <memory>
#include <sstream>

// Json::Reader is the dialect that the format was written with: its successor reads another one
// (trailing commas, a byte order mark). Both are deprecated in jsoncpp, neither is going away.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
bool parseJson(const std::string& text, Json::Value& value) {
  return Json::Reader().parse(text, value, true);
}
#pragma GCC diagnostic pop

std::string styledText(const Json::Value& value) {
  // Made once: it is a JSON value itself, and takes longer to make than most texts to write.
  static const Json::StreamWriterBuilder builder = [] {
    Json::StreamWriterBuilder made;
    made["indentation"] = "   ";
    return made;
  }();
  std::ostringstream text;
  text.exceptions(std::ios::badbit);  // else a want of memory would only cut the text short
  if (value.hasComment(Json::commentBefore)) text << '\n';
  const std::unique_ptr<Json::StreamWriter> writer(builder.newStreamWriter());
  writer->write(value, &text);
  text << '\n';
  return text.str();
}
