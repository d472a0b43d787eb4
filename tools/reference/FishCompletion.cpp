#include <sstream>

#include "CommandEntry.h"
#include "Forms.h"

namespace {

std::string shellQuoted(const std::string& text) { return '\'' + escaped(text, "'\\") + '\''; }

void writeOption(std::ostream& out, const OptionEntry& option, const std::string& condition) {
  out << "complete -c velmar-video -n " << shellQuoted(condition);
  for (const std::string& name : option.names) {
    out << (name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1));
  }
  if (!option.choices.empty()) {
    out << " -x -a " << shellQuoted(joined(option.choices, " "));
  } else if (option.takesFile()) {
    out << " -r -F";
  } else if (option.takesFolder()) {
    out << " -x -a '(__fish_complete_directories)'";
  } else if (!option.value.empty()) {
    out << " -x";
  }
  out << " -d " << shellQuoted(shortHelp(option.help)) << '\n';
}

std::string condition(const std::string& command) {
  return "__velmar_video_is" + (command.empty() ? "" : " " + command);
}

// The names of a group's commands, which is what comes next.
void writeNames(std::ostream& out, const std::string& group,
                const std::vector<CommandEntry>& commands) {
  const std::string start = "complete -c velmar-video -n " + shellQuoted(condition(group));
  out << start << " -f\n";
  for (const CommandEntry& command : commandsIn(group, commands)) {
    out << start << " -a " << command.ownName() << " -d " << shellQuoted(shortHelp(command.purpose))
        << '\n';
  }
}

}  // namespace

std::string fishCompletion(const CLI::App& program) {
  const auto commands = readCommands(program);
  std::ostringstream out;
  out << R"(# Completion of velmar-video for fish; generated.
function __velmar_video_is -d 'Whether these are the words of the command'
  set -l command
  for word in (commandline -opc)[2..-1]
    string match -q -- '-*' $word; and continue
    set -a command $word
    # A group's name has one of its commands behind it.
    contains -- "$command" )"
      << joined(groupNames(commands), " ") << R"(; or break
  end
  test "$command" = "$argv"
end
)";
  writeNames(out, "", commands);
  for (const OptionEntry& option : readCommand(program).options) {
    writeOption(out, option, condition(""));
  }
  for (const CommandEntry& command : commands) {
    if (command.isGroup) writeNames(out, command.name, commands);
    for (const OptionEntry& option : command.options) {
      writeOption(out, option, condition(command.name));
    }
  }
  return out.str();
}
