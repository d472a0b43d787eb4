/// Conversion of JSON text to values and back, in the form that the metadata of "img" files has.
/// The process's locale makes no difference.
#ifndef VELMAR_IMG_JSON_TEXT_H
#define VELMAR_IMG_JSON_TEXT_H

#include <json/value.h>

#include <string>

namespace velmar::detail {

/// Parses the text and keeps its comments, without blanks at their ends. False if it is not JSON.
/// Throws jsoncpp's exceptions, for example if the nesting is beyond its limit.
bool parseJson(const std::string& text, Json::Value& value);

/// A copy that has no comments, neither its own nor its members'.
Json::Value withoutComments(const Json::Value& value);

/// The text of jsoncpp's StyledWriter: three spaces of indentation, an object's brace behind its
/// key, short arrays on one line, a final newline. (Value::toStyledString() has another shape in
/// later versions of jsoncpp.) Throws if memory runs out.
std::string styledText(const Json::Value& value);

}  // namespace velmar::detail

#endif
