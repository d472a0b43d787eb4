#ifndef VELMAR_FUZZ_TOOL_COMMAND_H
#define VELMAR_FUZZ_TOOL_COMMAND_H

#include <string>
#include <vector>

#include "program/Tool.h"

/// A command line of the tool, parsed once: the parsing is far slower than what most inputs make a
/// command do. What it says is not shown.
class ToolCommand {
 public:
  explicit ToolCommand(std::vector<std::string> arguments);

  /// Whether it came to its end; else it said why not.
  bool run() const;

 private:
  velmar::tool::Tool tool_;
};

#endif
