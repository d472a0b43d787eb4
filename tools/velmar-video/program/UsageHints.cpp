#include "program/UsageHints.h"

#include <algorithm>

#include "program/Toolkit.h"
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
  const auto chosen = app.get_subcommands();
  const CLI::App& command = chosen.empty() ? app : *chosen.front();
  const std::string where = chosen.empty() ? "" : command.get_name() + ": ";
  if (found->starts_with('-')) {
    const std::string name = found->substr(0, found->find('='));
    const auto names = optionNames(command);
    if (std::find(names.begin(), names.end(), name) != names.end()) {
      return where + name + " has to come after " + command.get_name();
    }
    return where + "there is no option " + name + suggestion(name, names);
  }
  if (!chosen.empty()) return where + *found + " is one argument too many";
  return "there is no command " + *found + suggestion(*found, commandNames(app));
}

std::vector<std::string> withHelpOption(const CLI::App& app, std::vector<std::string> arguments) {
  if (arguments.empty() || arguments.front() != "help") return arguments;
  arguments.erase(arguments.begin());
  const auto names = commandNames(app);
  const bool isKnown =
      arguments.empty() || std::find(names.begin(), names.end(), arguments.front()) != names.end();
  if (isKnown) arguments.emplace_back("--help");
  return arguments;
}

}  // namespace velmar::tool
