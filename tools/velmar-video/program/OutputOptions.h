#ifndef VELMAR_TOOL_OUTPUT_OPTIONS_H
#define VELMAR_TOOL_OUTPUT_OPTIONS_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "program/CommandJob.h"
#include "program/InputOptions.h"
#include "program/Toolkit.h"
#include "toolkit/writing/OutputFolder.h"

namespace velmar::tool {

/// Something to make of a file.
struct OutputTask {
  std::string input;
  std::string output;
};

/// INPUT and OUTPUT, or with --output-dir many inputs, each of which gives an output in that
/// folder. This object has to outlive the parsing.
struct OutputOptions {
  /// \param help  of INPUT and OUTPUT
  void addTo(CLI::App& command, const std::string& help);
  /// Throws UsageError unless there is an INPUT with an OUTPUT, or an input for the folder.
  void checkUsage(const std::string& command) const;
  /// Whether there is an INPUT alone.
  bool lacksOutput() const { return folder.empty() && inputs.inputs.size() == 1; }
  /// Throws UsageError, also if two inputs gave the same output. What cannot be listed makes the
  /// job fail. \param what    the files to look for in folders, and what one of them is \param
  /// nameOf  what is made of a file of this name
  std::vector<OutputTask> tasks(CommandJob& job, bool (*isWanted)(const std::string& path),
                                const std::string& what,
                                const std::function<std::string(std::string)>& nameOf) const;

  /// The folder of a task's output, as far as that is made; nothing if it has to be there.
  std::unique_ptr<OutputFolder> makeFolder(const OutputTask& task) const;

  InputOptions inputs;  ///< with the OUTPUT behind its INPUT if there is no folder
  std::string folder;
};

/// Where each of several files has its output below `folder`: a task for each, in order. Throws
/// UsageError if two had the same.
std::vector<OutputTask> tasksInFolder(const std::vector<InputFile>& files,
                                      const std::string& folder,
                                      const std::function<std::string(std::string)>& nameOf);

}  // namespace velmar::tool

#endif
