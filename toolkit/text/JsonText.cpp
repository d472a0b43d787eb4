#include "toolkit/text/JsonText.h"

#include <json/reader.h>
#include <json/writer.h>

#include <memory>

#include "toolkit/base/Failure.h"
#include "toolkit/files/InputFile.h"
#include "toolkit/text/PrintableText.h"

namespace velmar::toolkit {

namespace {

bool parse(const std::string& text, bool allowComments, Json::Value& value, std::string& errors) {
  Json::CharReaderBuilder builder;
  // Plain JSON, so that whoever reads the recording can read it, some levels deeper there.
  builder["allowComments"] = allowComments;
  builder["allowTrailingCommas"] = false;
  builder["failIfExtra"] = true;
  builder["skipBom"] = false;
  builder["stackLimit"] = 900;
  try {
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    return reader->parse(text.data(), text.data() + text.size(), &value, &errors);
  } catch (const Json::Exception& error) {
    errors = error.what();
    return false;
  }
}

// The first of several lines such as "* Line 1, Column 2\n  Syntax error".
std::string firstError(const std::string& errors) {
  std::string line;
  for (const char character : errors.substr(errors.find_first_not_of("* "))) {
    if (character == '*') break;
    const bool blank = character == ' ' || character == '\n';
    if (!blank) line += character;
    if (blank && !line.empty() && line.back() != ' ') line += ' ';
  }
  while (line.ends_with(' ')) line.pop_back();
  return line;
}

}  // namespace

std::string readJsonFile(const std::string& path) {
  std::string text = readFile(path);
  Json::Value value;
  std::string errors = "unreadable";
  if (!parse(text, false, value, errors)) {
    throw Failure(path, "it is not valid JSON: " + firstError(errors),
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  return text;
}

Json::Value parseJson(const std::string& text) {
  Json::Value value;
  std::string errors;
  return parse(text, true, value, errors) ? value : Json::Value();
}

namespace {

Json::StreamWriterBuilder oneLine() {
  Json::StreamWriterBuilder builder;
  builder["commentStyle"] = "None";
  builder["indentation"] = "";
  return builder;
}

}  // namespace

std::string toJsonText(const Json::Value& value) {
  std::string text = Json::writeString(oneLine(), value);
  // The only control character that jsoncpp leaves as it is.
  for (auto at = text.find('\x7F'); at != text.npos; at = text.find('\x7F', at)) {
    text.replace(at, 1, "\\u007f");
  }
  return text;
}

std::string shownJson(const Json::Value& value) {
  Json::StreamWriterBuilder builder = oneLine();
  builder["emitUTF8"] = true;
  return printableJson(Json::writeString(builder, value));
}

}  // namespace velmar::toolkit
