/// What the program says on standard error.
#ifndef VELMAR_TOOL_DIAGNOSTICS_H
#define VELMAR_TOOL_DIAGNOSTICS_H

#include <string>

namespace velmar::tool {

/// One line with the program's name in front. Any thread.
void say(const std::string& line);

/// With question marks for control characters: a name from a file or of one must not break the
/// line, nor command the terminal.
std::string printable(std::string text);

}  // namespace velmar::tool

#endif
