#ifndef VELMAR_TOOL_USAGE_HINTS_H
#define VELMAR_TOOL_USAGE_HINTS_H

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

namespace velmar::tool {

/// What is wrong with the first of the arguments that the parser had no place for, with the command
/// or option that may have been meant. Nothing if all had one.
std::optional<std::string> unexpectedArgument(const CLI::App& app,
                                              const std::vector<std::string>& arguments);

/// That a command of a group is missing, and which there are. Nothing if none is.
std::optional<std::string> missingCommand(const CLI::App& app);

/// The arguments with "COMMAND --help" in the place of "help COMMAND". What is no command is left
/// for unexpectedArgument().
std::vector<std::string> withHelpOption(const CLI::App& app, std::vector<std::string> arguments);

}  // namespace velmar::tool

#endif
