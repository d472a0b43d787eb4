#include "program/UsageHints.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace velmar::tool {

namespace {

// Letters to insert, to leave out, to replace or to swap with their neighbour.
std::size_t distance(const std::string& one, const std::string& other) {
  std::vector<std::size_t> twoBefore;
  std::vector<std::size_t> before(other.size() + 1);
  std::iota(before.begin(), before.end(), std::size_t{0});
  for (std::size_t i = 1; i <= one.size(); ++i) {
    std::vector<std::size_t> row = {i};
    for (std::size_t j = 1; j <= other.size(); ++j) {
      const std::size_t replaced = before[j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1);
      row.push_back(std::min({replaced, before[j] + 1, row[j - 1] + 1}));
      if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
        row[j] = std::min(row[j], twoBefore[j - 2] + 1);
      }
    }
    twoBefore = std::exchange(before, row);
  }
  return before.back();
}

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

// "; did you mean info?" for the candidate that differs from the word in few letters, if there is
// one.
std::string suggestion(const std::string& word, const std::vector<std::string>& candidates) {
  const std::string* nearest = nullptr;
  std::size_t least = std::max<std::size_t>(word.size() / 3, 1) + 1;
  for (const std::string& candidate : candidates) {
    const std::size_t letters = distance(word, candidate);
    if (letters >= least) continue;
    least = letters;
    nearest = &candidate;
  }
  return nearest == nullptr ? "" : "; did you mean " + *nearest + "?";
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

}  // namespace velmar::tool
