/// JSON text to values and back, as the metadata of "img" files has it.
#ifndef VELMAR_IMG_JSON_TEXT_H
#define VELMAR_IMG_JSON_TEXT_H

#include <json/value.h>

#include <string>

/// Parses with comments kept. False if the text is not JSON; throws jsoncpp's exceptions, for
/// nesting beyond its limit among others.
bool parseJson(const std::string& text, Json::Value& value);

/// jsoncpp's styled text: three spaces of indentation, a final newline. Value::toStyledString()
/// indents with tabs in some versions of jsoncpp. Throws without memory.
std::string styledText(const Json::Value& value);

#endif
