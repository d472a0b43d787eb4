#include <sstream>

#include "CommandEntry.h"
#include "Forms.h"

namespace {

std::string allNames(const CommandEntry& command) {
  std::vector<std::string> names;
  for (const OptionEntry& option : command.options) {
    names.insert(names.end(), option.names.begin(), option.names.end());
  }
  return joined(names, " ");
}

// Choices and folders, then a line of all options whose values nobody can guess.
void writeValues(std::ostream& out, const CommandEntry& command) {
  std::vector<std::string> free;
  for (const OptionEntry& option : command.options) {
    const std::string pattern = '\'' + command.name + ' ' + option.names.back() + '\'';
    if (option.value.empty() || option.takesFile()) continue;
    if (option.takesFolder()) {
      out << "    " << pattern << ") compopt -o dirnames +o default 2>/dev/null; return ;;\n";
    } else if (!option.choices.empty()) {
      out << "    " << pattern << ") words='" << joined(option.choices, " ") << "' ;;\n";
    } else {
      free.push_back(pattern);
    }
  }
  if (!free.empty()) out << "    " << joined(free, " | ") << ") ;;\n";
}

}  // namespace

std::string bashCompletion(const CLI::App& program) {
  const auto commands = readCommands(program);

  std::ostringstream out;
  out << R"(# Completion of velmar-video for bash; generated.
_velmar_video() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command='' words=''
  local i
  COMPREPLY=()
  # --option=value comes in three words.
  [ "$current" != = ] || current=''
  [ "$previous" != = ] || previous=${COMP_WORDS[COMP_CWORD - 2]}
  for ((i = 1; i < COMP_CWORD; i++)); do
    [[ ${COMP_WORDS[i]} == -* ]] && continue
    command+=${command:+ }${COMP_WORDS[i]}
    # A group's name has one of its commands behind it.
    case $command in )"
      << joined(groupNames(commands), " | ") << R"() ;; *) break ;; esac
  done
  # What is left without an answer gets the names of files.
  case "$command $previous" in
)";
  for (const CommandEntry& command : commands) writeValues(out, command);
  out << R"(    *)
      case $command in
        '') words=')"
      << joined(ownNames(commandsIn("", commands)), " ") << ' ' << allNames(readCommand(program))
      << "' ;;\n";
  for (const CommandEntry& command : commands) {
    out << "        '" << command.name << "') ";
    // The words behind the others are files.
    const std::string start = command.isGroup ? "" : "[[ $current != -* ]] || ";
    const std::string names = joined(ownNames(commandsIn(command.name, commands)), " ");
    out << start << "words='" << names << (names.empty() ? "" : " ") << allNames(command)
        << "' ;;\n";
  }
  out << R"(      esac
      [ -n "$words" ] || return
      ;;
  esac
  compopt +o default 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -o default -F _velmar_video velmar-video
)";
  return out.str();
}
