/// The tool's command line as data, to write it down in other forms than --help.
#ifndef VELMAR_REFERENCE_COMMAND_ENTRY_H
#define VELMAR_REFERENCE_COMMAND_ENTRY_H

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

struct OptionEntry {
  std::vector<std::string> names;    ///< with their dashes; a positional has one, without
  std::string value;                 ///< "FILE", "png|ppm"; empty for a switch
  std::vector<std::string> choices;  ///< all that the value can be; empty if it is free
  std::string help;
  std::vector<std::string> excludes;  ///< names of options that it does not go with
  bool required = false;
  bool repeatable = false;

  bool takesFile() const { return value == "FILE" || value == "CSV"; }
  bool takesFolder() const { return value == "DIR"; }
};

struct CommandEntry {
  std::string name;  ///< behind that of its group: "catalog add"
  std::string purpose;
  std::vector<OptionEntry> positionals;
  std::vector<OptionEntry> options;
  std::string footer;
  bool isGroup = false;  ///< of other commands

  std::string ownName() const { return name.substr(name.find(' ') + 1); }
};

/// A command, or the program with the options in front of a command.
CommandEntry readCommand(const CLI::App& app);
/// The program's commands in their order, behind each group those in it.
std::vector<CommandEntry> readCommands(const CLI::App& program);

/// Those of them that are in the group, which is empty for the program.
std::vector<CommandEntry> commandsIn(const std::string& group,
                                     const std::vector<CommandEntry>& commands);
std::vector<std::string> ownNames(const std::vector<CommandEntry>& commands);
/// The names of the groups among them.
std::vector<std::string> groupNames(const std::vector<CommandEntry>& commands);

std::string joined(const std::vector<std::string>& words, const std::string& separator);
/// `text` with a backslash in front of each of its characters that are in `special`.
std::string escaped(const std::string& text, const std::string& special);
/// The beginning of a help text, for lists with a line for each option.
std::string shortHelp(const std::string& help);

#endif
