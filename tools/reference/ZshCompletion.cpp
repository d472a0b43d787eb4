#include <sstream>

#include "CommandEntry.h"
#include "Forms.h"

namespace {

std::string shellQuoted(const std::string& text) {
  std::string result = "'";
  for (const char c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return result + "'";
}

std::string valueAction(const OptionEntry& option) {
  if (!option.choices.empty()) return ":(" + joined(option.choices, " ") + ')';
  if (option.takesFile()) return ":_files";
  if (option.takesFolder()) return ":_files -/";
  return ": ";
}

void writeOption(std::ostream& out, const OptionEntry& option, const std::string& indent) {
  const std::string help = '[' + escaped(shortHelp(option.help), "[]:\\") + ']';
  for (const std::string& name : option.names) {
    std::vector<std::string> excluded = option.excludes;
    if (!option.repeatable) {
      excluded.insert(excluded.end(), option.names.begin(), option.names.end());
    }
    std::string spec = option.repeatable ? "*" : '(' + joined(excluded, " ") + ')';
    spec += name;
    if (!option.value.empty() && name.starts_with("--")) spec += '=';
    spec += help;
    if (!option.value.empty()) {
      const std::string title = option.choices.empty() ? option.value : "value";
      spec += ':' + escaped(title, ":") + valueAction(option);
    }
    out << indent << shellQuoted(spec) << " \\\n";
  }
}

std::string functionOf(const std::string& group) {
  return "_velmar-video" + (group.empty() ? "" : "_" + group);
}

// A function that completes the commands of a group, or of the program, and what is behind them.
void writeFunction(std::ostream& out, const std::string& group,
                   const std::vector<OptionEntry>& options,
                   const std::vector<CommandEntry>& commands) {
  const auto inGroup = commandsIn(group, commands);
  out << functionOf(group) << R"(() {
  local context state state_descr line
  typeset -A opt_args
  local -a commands=(
)";
  for (const CommandEntry& command : inGroup) {
    const std::string help = escaped(shortHelp(command.purpose), ":\\");
    out << "    " << shellQuoted(command.ownName() + ':' + help) << '\n';
  }
  out << "  )\n  _arguments -C \\\n";
  for (const OptionEntry& option : options) writeOption(out, option, "    ");
  out << R"(    '1: :->command' '*:: :->argument'
  case $state in
    command) _describe command commands ;;
    argument)
      case $words[1] in
)";
  for (const CommandEntry& command : inGroup) {
    out << "        " << command.ownName() << ")\n          ";
    if (command.isGroup) {
      out << functionOf(command.name) << '\n';
    } else {
      out << "_arguments \\\n";
      for (const OptionEntry& option : command.options) writeOption(out, option, "            ");
      out << "            '*:file:_files'\n";
    }
    out << "          ;;\n";
  }
  out << R"(      esac
      ;;
  esac
}

)";
}

}  // namespace

std::string zshCompletion(const CLI::App& program) {
  const auto commands = readCommands(program);
  std::ostringstream out;
  out << "#compdef velmar-video\n# Completion of velmar-video for zsh; generated.\n\n";
  for (const CommandEntry& command : commands) {
    if (command.isGroup) writeFunction(out, command.name, command.options, commands);
  }
  writeFunction(out, "", readCommand(program).options, commands);
  out << "_velmar-video \"$@\"\n";
  return out.str();
}
