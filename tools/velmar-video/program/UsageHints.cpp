#include "program/UsageHints.h"

#include <algorithm>

#include "program/Toolkit.h"
#include "toolkit/text/Joined.h"
#include "toolkit/text/Suggestion.h"

namespace velmar::tool {

namespace {

std::vector<std::string> commandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(command->get_name());
  }
  return names;
}

// Which of the commands in groups was chosen.
const CLI::App& chosenCommand(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return chosen.empty() ? app : chosenCommand(*chosen.front());
}

// "catalog add"; empty for the program itself.
std::string fullName(const CLI::App& command) {
  const CLI::App* parent = command.get_parent();
  if (parent == nullptr) return "";
  const std::string group = fullName(*parent);
  return (group.empty() ? "" : group + " ") + command.get_name();
}

std::vector<std::string> optionNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

}  // namespace

std::optional<std::string> unexpectedArgument(const CLI::App& app,
                                              const std::vector<std::string>& arguments) {
  const std::vector<std::string> extras = app.remaining(true);
  const auto found =
      std::find_first_of(arguments.begin(), arguments.end(), extras.begin(), extras.end());
  if (found == arguments.end()) return std::nullopt;
  const CLI::App& command = chosenCommand(app);
  const std::string name = fullName(command);
  const std::string where = name.empty() ? "" : name + ": ";
  if (found->starts_with('-')) {
    const std::string option = found->substr(0, found->find('='));
    const auto names = optionNames(command);
    if (std::find(names.begin(), names.end(), option) != names.end()) {
      return where + option + " has to come after " + name;
    }
    return where + "there is no option " + option + suggestion(option, names);
  }
  const auto commands = commandNames(command);
  if (commands.empty()) return where + *found + " is one argument too many";
  return where + "there is no command " + *found + suggestion(*found, commands);
}

std::optional<std::string> missingCommand(const CLI::App& app) {
  const CLI::App& group = chosenCommand(app);
  const auto commands = commandNames(group);
  if (commands.empty()) return std::nullopt;
  return fullName(group) + ": a command is missing: " + joined(commands, " or ");
}

std::vector<std::string> withHelpOption(const CLI::App& app, std::vector<std::string> arguments) {
  if (arguments.empty() || arguments.front() != "help") return arguments;
  arguments.erase(arguments.begin());
  const CLI::App* group = &app;
  for (const std::string& name : arguments) {
    const auto names = commandNames(*group);
    if (names.empty()) break;
    if (std::find(names.begin(), names.end(), name) == names.end()) return arguments;
    group = group->get_subcommand(name);
  }
  arguments.emplace_back("--help");
  return arguments;
}

}  // namespace velmar::tool
