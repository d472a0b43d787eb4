/// JSON for people and for programs.
#ifndef VELMAR_TOOLKIT_JSON_TEXT_H
#define VELMAR_TOOLKIT_JSON_TEXT_H

#include <json/value.h>

#include <string>

namespace velmar::toolkit {

/// The file's text, which is valid JSON; Failure says where it is not.
std::string readJsonFile(const std::string& path);

/// Null if the text is no JSON; comments may be in it.
Json::Value parseJson(const std::string& text);

/// On one line, in ASCII.
std::string toJsonText(const Json::Value& value);

/// On one line for people: with characters as they are, as far as printableJson() shows them.
std::string shownJson(const Json::Value& value);

}  // namespace velmar::toolkit

#endif
