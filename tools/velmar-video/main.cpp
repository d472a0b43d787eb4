#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "program/Diagnostics.h"
#include "program/Tool.h"
#include "program/UsageHints.h"

#if __has_include(<velmar_logger/control.h>)
#include <velmar_logger/control.h>
#endif

using namespace velmar::tool;

namespace {

// A standard stream that is closed must not become the number of a file that is opened later.
void occupyStandardStreams() {
  int fd = 0;
  while (fd >= 0 && fd <= STDERR_FILENO) fd = ::open("/dev/null", O_RDONLY);
  if (fd > STDERR_FILENO) ::close(fd);
}

// As many as the system lets it have open: concat opens all its inputs.
void allowManyFiles() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

ExitStatus reportUsage(const std::string& words) {
  say(words + " (--help tells more)");
  return ExitStatus::Usage;
}

// Help and the version are asked for by what CLI11 treats as errors.
ExitStatus reportParseError(const Tool& tool, const CLI::ParseError& error,
                            const std::vector<std::string>& arguments) {
  if (error.get_exit_code() != 0) {
    // A misspelt option is the cause, too, of one that is missing.
    const bool isMissing = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    const bool isExtra = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr || isMissing;
    auto words = isExtra ? unexpectedArgument(tool.app, arguments) : std::nullopt;
    if (!words && isMissing) words = missingCommand(tool.app);
    return reportUsage(words.value_or(error.what()));
  }
  tool.app.exit(error);
  if (std::cout.flush()) return ExitStatus::Done;
  throw Failure("standard output", "cannot write to it", VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E);
}

// What goes wrong is said once, in the program's own words, unless the library's are asked for.
// They may have bytes of files in them, and so go the same way.
void directLog([[maybe_unused]] bool isShown) {
#if __has_include(<velmar_logger/control.h>)
  constexpr int kNone = 4;
  velmar_logger::setLevel(kNone);
  if (!isShown) return;
  velmar_logger::setSink([](int level, const char* tag, std::string_view message) {
    constexpr int kWarning = 2;
    while (message.ends_with('\n')) message.remove_suffix(1);
    if (level >= kWarning) say(std::string(tag) + ": " + std::string(message));
  });
#endif
}

ExitStatus parseAndRun(Tool& tool, int argc, const char* const* argv) {
  const auto given = withHelpOption(tool.app, std::vector<std::string>(argv + 1, argv + argc));
  try {
    std::vector<std::string> arguments = given;
    for (std::string& argument : arguments) {
      // The parser would take brackets for a list; only files have such names.
      if (argument.starts_with('[') && argument.ends_with(']')) argument.insert(0, "./");
    }
    std::reverse(arguments.begin(), arguments.end());
    tool.app.parse(arguments);
  } catch (const CLI::ParseError& error) {
    return reportParseError(tool, error, given);
  }
  if (!tool.run) return reportUsage("a command is missing, such as info");
  directLog(tool.verbose);
  return tool.run();
}

}  // namespace

int main(int argc, char** argv) {
  occupyStandardStreams();
  allowManyFiles();
  ExitStatus status = ExitStatus::Failed;
  try {
    Tool tool;
    addCommands(tool);
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
