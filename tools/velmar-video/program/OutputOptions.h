#ifndef VELMAR_TOOL_OUTPUT_OPTIONS_H
#define VELMAR_TOOL_OUTPUT_OPTIONS_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "program/CommandJob.h"
#include "program/InputOptions.h"
#include "program/Toolkit.h"
#include "toolkit/writing/OutputFolders.h"

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
  /// Whether there may be many.
  bool areMany() const { return folder.has_value(); }
  /// Whether there is an INPUT alone.
  bool lacksOutput() const { return !areMany() && inputs.inputs.size() == 1; }
  /// What cannot be listed makes the job fail; see also tasksInFolder().
  /// \param isWanted  says which of the files in a folder are meant
  /// \param what      names one of them
  /// \param nameOf    gives what is made of a file its name
  std::vector<OutputTask> tasks(CommandJob& job, bool (*isWanted)(const std::string& path),
                                const std::string& what,
                                const std::function<std::string(std::string)>& nameOf) const;
  /// The folder of a task's output, if there may be many. Otherwise it has to be there.
  void makeFolder(const OutputTask& task, OutputFolders& folders) const;

  InputOptions inputs;  ///< with the OUTPUT behind its INPUT if there is no folder
  std::optional<std::string> folder;
};

/// Where each of several files has its output below `folder`: a task for each, in order. A file
/// that is there twice has one; that of two that had the same fails.
std::vector<OutputTask> tasksInFolder(const std::vector<InputFile>& files,
                                      const std::string& folder,
                                      const std::function<std::string(std::string)>& nameOf,
                                      CommandJob& job);

/// The files that the tasks read.
std::vector<std::string> inputsOf(const std::vector<OutputTask>& tasks);

}  // namespace velmar::tool

#endif
