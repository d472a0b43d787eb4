/// What the program says on standard error.
#ifndef VELMAR_TOOL_DIAGNOSTICS_H
#define VELMAR_TOOL_DIAGNOSTICS_H

#include <string>

/// One line with the program's name in front. Any thread.
void say(const std::string& line);

#endif
