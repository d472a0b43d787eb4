#include "program/OutputOptions.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <map>

#include "toolkit/base/Failure.h"

namespace velmar::tool {

void OutputOptions::addTo(CLI::App& command, const std::string& help) {
  inputs.addTo(command, help, "input");
  command
      .add_option("--output-dir", folder,
                  "Work on many: all that is given are files and folders to read. Outputs go into "
                  "this folder, which is made if it is not there, under the names of their inputs")
      ->type_name("DIR");
}

void OutputOptions::checkUsage(const std::string& command) const {
  if (areMany()) {
    if (folder->empty()) throw UsageError(command + ": --output-dir names no folder");
    return inputs.checkUsage(command);
  }
  if (inputs.hasRanges()) throw UsageError(command + ": --ranges-from needs --output-dir");
  if (!inputs.listFile.empty()) throw UsageError(command + ": --files-from needs --output-dir");
  if (inputs.recursive) throw UsageError(command + ": --recursive needs --output-dir");
  if (inputs.inputs.empty()) throw UsageError(command + ": INPUT and OUTPUT are missing");
  if (inputs.inputs.size() == 1) {
    throw UsageError(command + ": OUTPUT is missing, the file to make; or --output-dir");
  }
  if (inputs.inputs.size() > 2) {
    throw UsageError(command + ": one INPUT and one OUTPUT; several inputs need --output-dir");
  }
}

std::vector<OutputTask> OutputOptions::tasks(
    CommandJob& job, bool (*isWanted)(const std::string& path), const std::string& what,
    const std::function<std::string(std::string)>& nameOf) const {
  if (!areMany()) return {{inputs.inputs.at(0), inputs.inputs.at(1)}};
  return tasksInFolder(inputs.find(job, isWanted, what), *folder, nameOf, job);
}

void OutputOptions::makeFolder(const OutputTask& task, OutputFolders& folders) const {
  if (areMany()) folders.make(std::filesystem::path(task.output).parent_path());
}

std::vector<OutputTask> tasksInFolder(const std::vector<InputFile>& files,
                                      const std::string& folder,
                                      const std::function<std::string(std::string)>& nameOf,
                                      CommandJob& job) {
  namespace fs = std::filesystem;
  std::vector<OutputTask> tasks;
  std::map<std::string, std::string> inputOf;
  for (const InputFile& file : files) {
    const std::string output = fs::path(folder) / nameOf(file.name);
    const auto [other, isNew] = inputOf.emplace(output, file.path);
    std::error_code error;
    if (isNew) {
      tasks.push_back({file.path, output});
    } else if (!fs::equivalent(other->second, file.path, error)) {
      job.fail({file.path, output + " is made of " + other->second + " already",
                VELMAR_ERROR_CODE_INVALID_PARAMETER_E});
    }
  }
  return tasks;
}

std::vector<std::string> inputsOf(const std::vector<OutputTask>& tasks) {
  std::vector<std::string> inputs;
  inputs.reserve(tasks.size());
  for (const OutputTask& task : tasks) inputs.push_back(task.input);
  return inputs;
}

}  // namespace velmar::tool
