#include <algorithm>
#include <cctype>
#include <sstream>

#include "CommandEntry.h"
#include "Forms.h"

namespace {

// Text to be typed as it stands.
std::string literal(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '\\') {
      result += "\\e";
    } else if (c == '\'') {
      result += "\\(aq";
    } else {
      result += c == '-' ? "\\-" : std::string(1, c);
    }
  }
  return result;
}

// Text that the page may fill and break; options and negative numbers are as they are typed.
std::string prose(const std::string& text) {
  std::istringstream words(text);
  std::string result;
  for (std::string word; words >> word;) {
    if (!result.empty()) result += ' ';
    const std::size_t start = word.find_first_not_of("(\"");
    result += start != word.npos && word[start] == '-' ? literal(word) : word;
  }
  // A line that starts with one of these would be a request to the formatter.
  return result.find_first_of(".'") == 0 ? "\\&" + result : result;
}

// A command line that fits on a page: a long one goes on, as a shell takes it, on the next.
std::string commandLine(const std::string& text) {
  constexpr std::size_t kMost = 66;
  const std::string kIndent = "    ";
  if (text.size() <= kMost) return literal(text) + '\n';
  const std::size_t cut = std::max(text.rfind(" -", kMost) + 1, text.rfind(" |", kMost) + 1);
  if (cut <= kIndent.size()) return literal(text) + '\n';
  return literal(text.substr(0, cut) + '\\') + '\n' + commandLine(kIndent + text.substr(cut));
}

std::string bold(const std::string& text) { return "\\fB" + literal(text) + "\\fR"; }
std::string italic(const std::string& text) { return "\\fI" + literal(text) + "\\fR"; }

std::string sentence(std::string text) {
  if (!text.empty() && text.back() != '.') text += '.';
  return text;
}

void writeOption(std::ostream& out, const OptionEntry& option) {
  std::vector<std::string> names = option.names;
  for (std::string& name : names) name = bold(name);
  out << ".TP\n" << joined(names, ", ");
  if (!option.choices.empty()) {
    out << ' ' << bold(option.value);
  } else if (!option.value.empty()) {
    out << ' ' << italic(option.value);
  }
  out << '\n' << sentence(prose(option.help));
  if (option.required) out << " Required.";
  if (!option.excludes.empty()) {
    std::vector<std::string> others = option.excludes;
    for (std::string& name : others) name = bold(name);
    const std::string last = others.back();
    others.pop_back();
    out << " Not with " << joined(others, ", ") << (others.empty() ? "" : " or ") << last << '.';
  }
  out << '\n';
}

void writePositional(std::ostream& out, const OptionEntry& positional) {
  out << ".TP\n"
      << italic(positional.names.front()) << (positional.repeatable ? " ..." : "") << '\n'
      << sentence(prose(positional.help)) << '\n';
}

// Paragraphs, in which indented lines are to be typed as they stand.
void writeFooter(std::ostream& out, const std::string& footer) {
  std::istringstream lines(footer);
  bool paragraph = false;
  bool example = false;
  for (std::string line; std::getline(lines, line);) {
    const bool indented = line.starts_with("  ");
    if (indented != example) {
      out << (indented ? ".PP\n.RS 4\n.nf\n" : ".fi\n.RE\n");
      paragraph = false;
    }
    example = indented;
    if (indented) {
      out << commandLine(line.substr(2));
    } else if (!line.empty()) {
      out << (paragraph ? "" : ".PP\n") << prose(line) << '\n';
    }
    paragraph = !indented && !line.empty();
  }
  if (example) out << ".fi\n.RE\n";
}

void writeCommand(std::ostream& out, const CommandEntry& command, const CommandEntry& program) {
  out << ".SS " << command.name << '\n'
      << prose(command.purpose) << "\n.PP\n"
      << bold(program.name + ' ' + command.name);
  if (command.isGroup) out << ' ' << italic("COMMAND") << " ...";
  out << " [" << italic("OPTIONS") << ']';
  for (const OptionEntry& option : command.options) {
    if (option.required) out << ' ' << bold(option.names.back()) << ' ' << italic(option.value);
  }
  for (const OptionEntry& positional : command.positionals) {
    out << ' ' << italic(positional.names.front()) << (positional.repeatable ? " ..." : "");
  }
  out << '\n';
  for (const OptionEntry& positional : command.positionals) writePositional(out, positional);
  for (const OptionEntry& option : command.options) {
    // Those that every command has are described once.
    const bool common =
        std::any_of(program.options.begin(), program.options.end(),
                    [&](const OptionEntry& other) { return other.names == option.names; });
    if (!common) writeOption(out, option);
  }
  writeFooter(out, command.footer);
}

}  // namespace

std::string manualPage(const CLI::App& app) {
  const CommandEntry program = readCommand(app);
  std::string purpose = program.purpose;
  purpose.front() = static_cast<char>(std::tolower(purpose.front()));
  if (purpose.back() == '.') purpose.pop_back();

  const std::string kExitStatus = "Exit status: ";
  const std::size_t status = program.footer.find(kExitStatus);

  std::ostringstream out;
  out << ".\\\" Generated from the program's own --help.\n"
      << ".TH VELMAR\\-VIDEO 1 \"\" \"velmar\\-video " VELMAR_TOOL_VERSION "\" \"User Commands\"\n"
      << ".\\\" No stretched lines, no broken words.\n.ad l\n.nh\n"
      << ".SH NAME\n"
      << literal(program.name) << " \\- " << prose(purpose) << "\n.SH SYNOPSIS\n"
      << bold(program.name) << ' ' << italic("COMMAND") << " [" << italic("OPTIONS") << "] "
      << italic("ARGUMENTS") << "\n.br\n"
      << bold(program.name + " --version") << "\n.SH DESCRIPTION\n";
  writeFooter(out, program.footer.substr(0, status));
  out << ".SH COMMANDS\n";
  for (const CommandEntry& command : readCommands(app)) writeCommand(out, command, program);
  out << ".SH OPTIONS\nEvery command has these, but for \\-\\-version, which stands alone.\n";
  for (const OptionEntry& option : program.options) writeOption(out, option);
  if (status != std::string::npos) {
    out << ".SH EXIT STATUS\n" << prose(program.footer.substr(status + kExitStatus.size())) << '\n';
  }
  return out.str();
}
