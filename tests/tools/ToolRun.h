/// Runs a command of the tool inside the test.
#ifndef VELMAR_TESTS_TOOL_RUN_H
#define VELMAR_TESTS_TOOL_RUN_H

#include <string>
#include <vector>

#include "program/CommandJob.h"

struct ToolRun {
  ExitStatus status;
  std::string diagnostics;  ///< what it said on standard error, or its failure
};

struct Tool;

/// \param command    of main's list, such as addRecoverCommand
/// \param arguments  from the command's name on
ToolRun runTool(void (*command)(Tool&), std::vector<std::string> arguments);

#endif
