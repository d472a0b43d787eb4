/// Runs a command of the tool inside the test.
#ifndef VELMAR_TESTS_TOOL_RUN_H
#define VELMAR_TESTS_TOOL_RUN_H

#include <string>
#include <vector>

#include "program/Tool.h"

struct ToolRun {
  velmar::tool::ExitStatus status;
  std::string diagnostics;  ///< what it said on standard error, or its failure
};

/// \param command    of main's list, such as addRecoverCommand
/// \param arguments  from the command's name on
ToolRun runTool(void (*command)(velmar::tool::Tool&), std::vector<std::string> arguments);

#endif
