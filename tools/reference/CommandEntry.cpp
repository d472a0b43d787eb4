#include "CommandEntry.h"

#include <algorithm>

namespace {

std::string withDashes(const std::string& name) { return (name.size() == 1 ? "-" : "--") + name; }

// The parser gives the value's name and the checks on it in one text: "KIND:{jpg,png}".
void readValue(const CLI::Option& option, OptionEntry& entry) {
  if (option.get_type_size() == 0) return;
  const std::string type = option.get_type_name();
  const std::size_t brace = type.find(":{");
  entry.value = type.substr(0, brace);
  if (brace == type.npos) return;
  entry.choices = CLI::detail::split(type.substr(brace + 2, type.size() - brace - 3), ',');
  entry.value = joined(entry.choices, "|");
}

OptionEntry readOption(const CLI::Option& option, const std::vector<const CLI::Option*>& all) {
  OptionEntry entry;
  if (option.get_positional()) {
    entry.names = {option.get_name()};
  } else {
    for (const std::string& name : option.get_snames()) entry.names.push_back(withDashes(name));
    for (const std::string& name : option.get_lnames()) entry.names.push_back(withDashes(name));
    readValue(option, entry);
  }
  entry.help = option.get_description();
  const auto excluded = option.get_excludes();
  for (const CLI::Option* other : all) {
    if (std::any_of(excluded.begin(), excluded.end(), [&](auto* one) { return one == other; })) {
      entry.excludes.push_back(other->get_name());
    }
  }
  entry.required = option.get_required();
  entry.repeatable = option.get_expected_max() >= CLI::detail::expected_max_vector_size;
  return entry;
}

std::vector<const CLI::App*> commandsOf(const CLI::App& app) {
  return app.get_subcommands([](const CLI::App*) { return true; });
}

}  // namespace

CommandEntry readCommand(const CLI::App& app) {
  CommandEntry entry{app.get_name(), app.get_description(), {}, {}, app.get_footer()};
  entry.isGroup = !commandsOf(app).empty();
  const auto options = app.get_options();
  for (const CLI::Option* option : options) {
    (option->get_positional() ? entry.positionals : entry.options)
        .push_back(readOption(*option, options));
  }
  return entry;
}

std::vector<CommandEntry> readCommands(const CLI::App& program) {
  std::vector<CommandEntry> commands;
  for (const CLI::App* command : commandsOf(program)) {
    commands.push_back(readCommand(*command));
    for (CommandEntry& inGroup : readCommands(*command)) {
      inGroup.name.insert(0, command->get_name() + " ");
      commands.push_back(std::move(inGroup));
    }
  }
  return commands;
}

std::vector<CommandEntry> commandsIn(const std::string& group,
                                     const std::vector<CommandEntry>& commands) {
  std::vector<CommandEntry> found;
  for (const CommandEntry& command : commands) {
    const std::size_t space = command.name.rfind(' ');
    if (command.name.substr(0, space == std::string::npos ? 0 : space) == group) {
      found.push_back(command);
    }
  }
  return found;
}

std::vector<std::string> ownNames(const std::vector<CommandEntry>& commands) {
  std::vector<std::string> names;
  names.reserve(commands.size());
  for (const CommandEntry& command : commands) names.push_back(command.ownName());
  return names;
}

std::vector<std::string> groupNames(const std::vector<CommandEntry>& commands) {
  std::vector<std::string> names;
  for (const CommandEntry& command : commands) {
    if (command.isGroup) names.push_back(command.name);
  }
  return names;
}

std::string joined(const std::vector<std::string>& words, const std::string& separator) {
  return CLI::detail::join(words, separator);
}

std::string escaped(const std::string& text, const std::string& special) {
  std::string result;
  for (const char c : text) {
    if (special.find(c) != special.npos) result += '\\';
    result += c;
  }
  return result;
}

std::string shortHelp(const std::string& help) {
  constexpr std::size_t kMost = 72;
  const std::string sentence = help.substr(0, help.find(". "));
  if (sentence.size() <= kMost) return sentence.substr(0, sentence.find_last_not_of('.') + 1);
  return sentence.substr(0, sentence.rfind(' ', kMost)) + " ...";
}
