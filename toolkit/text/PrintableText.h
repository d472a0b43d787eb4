#ifndef VELMAR_TOOLKIT_PRINTABLE_TEXT_H
#define VELMAR_TOOLKIT_PRINTABLE_TEXT_H

#include <string>
#include <string_view>

namespace velmar::toolkit {

/// With "\x1B" and the like in the place of the bytes of control characters, those above 0x7F and
/// those of the writing direction included, and of each byte that is no UTF-8: a name from a file
/// or of one must not break the line, nor command the terminal.
std::string printable(std::string_view text);

/// The same of JSON, with the escapes that it has: "\u202E".
std::string printableJson(std::string_view text);

}  // namespace velmar::toolkit

#endif
