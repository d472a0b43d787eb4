/// The program's command line, to which each command adds itself.
#ifndef VELMAR_TOOL_TOOL_H
#define VELMAR_TOOL_TOOL_H

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <string>

#include "program/CommandJob.h"
#include "program/Toolkit.h"
#include "toolkit/base/Failure.h"

namespace velmar::tool {

/// A command's name, what it is for and, behind the program's name, an example.
struct CommandWords {
  std::string name;  ///< of one in a group with that of the group: "catalog add"
  std::string purpose;
  std::string example;
};

/// What a command does with its options.
template <typename Options>
struct CommandParts {
  /// Adds the options; the object outlives the parsing.
  void (*addOptions)(CLI::App& command, Options& options);
  /// Runs until done; throws Failure or UsageError.
  ExitStatus (*work)(const Options& options, CommandJob& job);
  /// Throws UsageError for what the options cannot mean, before anything else is done; may be null.
  void (*checkUsage)(const Options& options) = nullptr;
};

struct Tool {
  Tool();

  /// A command with options of its own and those that all have.
  template <typename Options>
  void addCommand(const CommandWords& words, const CommandParts<Options>& parts) {
    const auto options = std::make_shared<Options>();
    CLI::App& command = addCommand(words);
    parts.addOptions(command, *options);
    command.callback([this, options, parts] {
      if (parts.checkUsage != nullptr) parts.checkUsage(*options);
      run = [this, options, work = parts.work] {
        CommandJob job(quiet);
        return work(*options, job);
      };
    });
  }

  /// A command that only has others, which are added after it.
  void addGroup(const CommandWords& words);

  CLI::App app;
  bool quiet = false;
  bool verbose = false;
  /// The chosen command, set by the parsing.
  std::function<ExitStatus()> run;

 private:
  CLI::App& addCommand(const CommandWords& words);
  void addCommonOptions(CLI::App& command);
};

/// Adds all of these.
void addCommands(Tool& tool);

// Each in the file of its name, those of a group in a folder with the group's name.
void addCreateCommand(Tool& tool);
void addInfoCommand(Tool& tool);
void addFramesCommand(Tool& tool);
void addExtractCommand(Tool& tool);
void addCatCommand(Tool& tool);
void addConvertCommand(Tool& tool);
void addExportCommand(Tool& tool);
void addCutCommand(Tool& tool);
void addSplitCommand(Tool& tool);
void addConcatCommand(Tool& tool);
void addEditCommand(Tool& tool);
void addDumpCommand(Tool& tool);
void addRecoverCommand(Tool& tool);
void addVerifyCommand(Tool& tool);
void addDiffCommand(Tool& tool);
void addSampleCommand(Tool& tool);
void addSheetCommand(Tool& tool);
void addViewCommand(Tool& tool);
void addCatalogCommand(Tool& tool);
void addCatalogAddCommand(Tool& tool);
void addCatalogFindCommand(Tool& tool);
void addCatalogInfoCommand(Tool& tool);
void addCatalogSqlCommand(Tool& tool);

}  // namespace velmar::tool

#endif
