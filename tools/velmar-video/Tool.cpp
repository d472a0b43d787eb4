#include "Tool.h"

#include <iostream>
#include <new>

#include "Diagnostics.h"

#if __has_include(<velmar_logger/control.h>)
#include <velmar_logger/control.h>
#endif

namespace {

ExitStatus reportUsage(const std::string& words) {
  say(words + " (--help tells more)");
  return ExitStatus::Usage;
}

/// Help and the version are asked for by what CLI11 treats as errors.
ExitStatus reportParseError(const Tool& tool, const CLI::ParseError& error) {
  if (error.get_exit_code() != 0) return reportUsage(error.what());
  tool.app.exit(error);
  if (std::cout.flush()) return ExitStatus::Done;
  throw Failure("standard output", "cannot write to it", VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E);
}

void silenceLibrary() {
  // What goes wrong is said once, in the program's own words.
#if __has_include(<velmar_logger/control.h>)
  constexpr int kNone = 4;
  velmar_logger::setLevel(kNone);
#endif
}

ExitStatus parseAndRun(Tool& tool, int argc, const char* const* argv) {
  try {
    tool.app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return reportParseError(tool, error);
  }
  if (!tool.run) return reportUsage("a command is missing, such as info");
  if (!tool.verbose) silenceLibrary();
  return tool.run();
}

}  // namespace

Tool::Tool() : app("Makes, shows and takes apart recordings of a vehicle's camera.") {
  app.name("velmar-video");
  app.require_subcommand(0, 1);
  app.set_version_flag("--version", "velmar-video " VELMAR_TOOL_VERSION);
  app.footer(
      "velmar-video COMMAND --help tells about a command. For a start:\n"
      "  velmar-video sample drive.img && velmar-video info drive.img\n\n"
      "Exit status: 0 done, 1 failed, 2 wrong usage, 3 done but something was lost or skipped.");
  addCommonOptions(app);
}

CLI::App* Tool::addCommand(const std::string& name, const std::string& purpose,
                           const std::string& example) {
  CLI::App* command = app.add_subcommand(name, purpose);
  command->footer("Example:\n  velmar-video " + example);
  addCommonOptions(*command);
  return command;
}

void Tool::addCommonOptions(CLI::App& command) {
  command.add_flag("--quiet", quiet, "No progress");
  command.add_flag("--verbose", verbose, "Show the library's own log on standard error");
}

int runTool(int argc, const char* const* argv) {
  ExitStatus status = ExitStatus::Failed;
  try {
    Tool tool;
    addCreateCommand(tool);
    addInfoCommand(tool);
    addFramesCommand(tool);
    addExtractCommand(tool);
    addCatCommand(tool);
    addCutCommand(tool);
    addConcatCommand(tool);
    addConvertCommand(tool);
    addEditCommand(tool);
    addDumpCommand(tool);
    addSampleCommand(tool);
    status = parseAndRun(tool, argc, argv);
  } catch (const UsageError& error) {
    status = reportUsage(error.what());
  } catch (const std::bad_alloc&) {
    say("there is not enough memory (" +
        errorCode2String(VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E) + ")");
  } catch (const std::exception& error) {
    say(error.what());
  }
  return static_cast<int>(status);
}
