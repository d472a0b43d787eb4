/// What the program says on standard error.
#ifndef VELMAR_TOOL_DIAGNOSTICS_H
#define VELMAR_TOOL_DIAGNOSTICS_H

#include <string>

namespace velmar::tool {

/// One printable line with the program's name in front. Thread-safe.
void say(const std::string& line);

}  // namespace velmar::tool

#endif
