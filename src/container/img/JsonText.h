/// JSON text to values and back, as the metadata of "img" files has it, whatever locale the process
/// has.
#ifndef VELMAR_IMG_JSON_TEXT_H
#define VELMAR_IMG_JSON_TEXT_H

#include <json/value.h>

#include <string>

/// Parses with comments kept. False if the text is not JSON; throws jsoncpp's exceptions, for
/// nesting beyond its limit among others.
bool parseJson(const std::string& text, Json::Value& value);

/// The text of jsoncpp's StyledWriter: three spaces of indentation, an object's brace behind its
/// key, short arrays on one line, a final newline. (Value::toStyledString() gave that once, and
/// gives another in later versions of jsoncpp.) Throws without memory.
std::string styledText(const Json::Value& value);

#endif
