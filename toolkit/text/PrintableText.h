#ifndef VELMAR_TOOLKIT_PRINTABLE_TEXT_H
#define VELMAR_TOOLKIT_PRINTABLE_TEXT_H

#include <string>
#include <string_view>

namespace velmar::toolkit {

/// With a question mark for each control character, those above 0x7F and those of the writing
/// direction included, and for each byte that is no UTF-8: a name from a file or of one must not
/// break the line, nor command the terminal.
std::string printable(std::string_view text);

}  // namespace velmar::toolkit

#endif
