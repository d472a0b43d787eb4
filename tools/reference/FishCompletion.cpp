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

}  // namespace

std::string fishCompletion(const CLI::App& program) {
  std::ostringstream out;
  out << "# Completion of velmar-video for fish; generated.\n"
         "complete -c velmar-video -n __fish_use_subcommand -f\n";
  for (const OptionEntry& option : readCommand(program).options) {
    writeOption(out, option, "__fish_use_subcommand");
  }
  for (const CommandEntry& command : readCommands(program)) {
    out << "complete -c velmar-video -n __fish_use_subcommand -a " << command.name << " -d "
        << shellQuoted(shortHelp(command.purpose)) << '\n';
    for (const OptionEntry& option : command.options) {
      writeOption(out, option, "__fish_seen_subcommand_from " + command.name);
    }
  }
  return out.str();
}
