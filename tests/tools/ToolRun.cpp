#include "ToolRun.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "program/Tool.h"

using namespace velmar::toolkit;
using namespace velmar::tool;

ToolRun runTool(void (*command)(Tool&), std::vector<std::string> arguments) {
  Tool tool;
  command(tool);
  std::reverse(arguments.begin(), arguments.end());
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  ToolRun result{ExitStatus::Failed, ""};
  std::string failure;
  try {
    tool.app.parse(arguments);
    result.status = tool.run();
  } catch (const UsageError& error) {
    result.status = ExitStatus::Usage;
    failure = error.what();
  } catch (const Failure& error) {
    failure = error.what();
  }
  testing::internal::GetCapturedStdout();
  result.diagnostics = testing::internal::GetCapturedStderr() + failure;
  return result;
}
