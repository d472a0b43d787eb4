/// The program's command line, to which each command adds itself.
#ifndef VELMAR_TOOL_TOOL_H
#define VELMAR_TOOL_TOOL_H

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "toolkit/base/Failure.h"

struct Tool {
  Tool();

  /// A command with the options that all have. The example is what follows the program's name.
  CLI::App* addCommand(const std::string& name, const std::string& purpose,
                       const std::string& example);

  CLI::App app;
  bool quiet = false;
  bool verbose = false;
  /// The chosen command, set by the parsing.
  std::function<ExitStatus()> run;

 private:
  void addCommonOptions(CLI::App& command);
};

/// Adds all of these.
void addCommands(Tool& tool);

// Each in the file of its name. They run until done and throw Failure or UsageError.
void addCreateCommand(Tool& tool);
void addInfoCommand(Tool& tool);
void addFramesCommand(Tool& tool);
void addExtractCommand(Tool& tool);
void addCatCommand(Tool& tool);
void addConvertCommand(Tool& tool);
void addCutCommand(Tool& tool);
void addConcatCommand(Tool& tool);
void addEditCommand(Tool& tool);
void addDumpCommand(Tool& tool);
void addRecoverCommand(Tool& tool);
void addVerifyCommand(Tool& tool);
void addSampleCommand(Tool& tool);

#endif
