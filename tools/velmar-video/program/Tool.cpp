#include "program/Tool.h"

namespace velmar::tool {

Tool::Tool() : app("Creates, shows, edits and repairs recordings of a vehicle-mounted camera.") {
  app.name("velmar-video");
  app.require_subcommand(0, 1);
  app.set_version_flag("--version", "velmar-video " VELMAR_TOOL_VERSION);
  app.footer(
      "A recording is a file of JPEG pictures with their times; its name ends in .img or .rtv, "
      "which\n"
      "says in which of the two containers it is.\n\n"
      "velmar-video COMMAND --help, or help COMMAND, tells about a command. For a start:\n"
      "  velmar-video sample drive.img && velmar-video info drive.img\n\n"
      "Exit status: 0 done, 1 failed, 2 wrong usage, 3 done but something was lost or skipped.");
  addCommonOptions(app);
}

CLI::App& Tool::addCommand(const CommandWords& words) {
  const std::size_t space = words.name.find(' ');
  const bool isInGroup = space != std::string::npos;
  CLI::App& group = isInGroup ? *app.get_subcommand(words.name.substr(0, space)) : app;
  CLI::App& command =
      *group.add_subcommand(words.name.substr(isInGroup ? space + 1 : 0), words.purpose);
  command.footer("Example:\n  velmar-video " + words.example);
  addCommonOptions(command);
  return command;
}

void Tool::addGroup(const CommandWords& words) { addCommand(words).require_subcommand(1); }

void Tool::addCommonOptions(CLI::App& command) {
  command.add_flag("--quiet", quiet, "Show no progress");
  command.add_flag("--verbose", verbose, "Show the library's own log on standard error");
}

void addCommands(Tool& tool) {
  addCreateCommand(tool);
  addInfoCommand(tool);
  addFramesCommand(tool);
  addExtractCommand(tool);
  addCatCommand(tool);
  addCutCommand(tool);
  addSplitCommand(tool);
  addConcatCommand(tool);
  addConvertCommand(tool);
  addExportCommand(tool);
  addEditCommand(tool);
  addDumpCommand(tool);
  addRecoverCommand(tool);
  addVerifyCommand(tool);
  addDiffCommand(tool);
  addSampleCommand(tool);
  addSheetCommand(tool);
  addViewCommand(tool);
  addCatalogCommand(tool);
}

}  // namespace velmar::tool
