#ifndef VELMAR_TOOL_INPUT_OPTIONS_H
#define VELMAR_TOOL_INPUT_OPTIONS_H

#include <functional>
#include <string>
#include <vector>

#include "program/CommandJob.h"
#include "program/Toolkit.h"

namespace CLI {
class App;
}  // namespace CLI

namespace velmar::tool {

/// The recordings that a command works on: files, folders, lists of them. This object has to
/// outlive the parsing.
struct InputOptions {
  void addTo(CLI::App& command);
  /// Throws UsageError if there is none.
  void checkUsage(const std::string& command) const;
  /// Their names, those in a folder in natural order. What cannot be listed makes the job fail.
  std::vector<std::string> files(CommandJob& job) const;

  std::vector<std::string> inputs;
  std::string listFile;  ///< of more inputs; "-" is standard input
  bool recursive = false;
  bool isNulSeparated = false;
};

/// --jobs: how much to work on at a time.
struct JobsOption {
  /// \param of  what is worked on, such as "recordings"
  void addTo(CLI::App& command, const std::string& of);
  unsigned int count() const;

  unsigned int given = 0;
};

}  // namespace velmar::tool

#endif
