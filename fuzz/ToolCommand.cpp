#include "ToolCommand.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>

#include "support.h"

namespace {

// The fuzzer itself goes on using standard error.
void silence() {
  std::cerr.setstate(std::ios::failbit);
  const int nowhere = ::open("/dev/null", O_WRONLY);
  require(::dup2(nowhere, STDOUT_FILENO) == STDOUT_FILENO && ::close(nowhere) == 0);
}

}  // namespace

ToolCommand::ToolCommand(std::vector<std::string> arguments) {
  silence();
  velmar::tool::addCommands(tool_);
  std::reverse(arguments.begin(), arguments.end());
  tool_.app.parse(arguments);
}

bool ToolCommand::run() const try {
  return tool_.run() != velmar::tool::ExitStatus::Failed;
} catch (const velmar::toolkit::Failure&) {
  return false;
}
