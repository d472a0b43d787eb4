#include "program/InputOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <thread>

#include "toolkit/base/InputFile.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/text/FileNames.h"

namespace velmar::tool {

void InputOptions::addTo(CLI::App& command) {
  command.add_option("file", inputs, "Recordings, and folders of them (*.img, *.rtv)");
  command.add_flag("--recursive", recursive, "Also take recordings in the folders below a folder");
  auto* list = command.add_option("--files-from", listFile,
                                  "A file with the names of more recordings and folders, a line "
                                  "each; - is standard input");
  list->type_name("FILE");
  command
      .add_flag("-0,--null", isNulSeparated,
                "The names in --files-from end in a zero byte, as find -print0 writes them")
      ->needs(list);
}

void InputOptions::checkUsage(const std::string& command) const {
  if (inputs.empty() && listFile.empty()) {
    throw UsageError(command + ": file is required, or --files-from");
  }
}

std::vector<std::string> InputOptions::files(CommandJob& job) const {
  std::vector<std::string> given = inputs;
  if (!listFile.empty()) {
    const auto listed = splitNames(readFile(listFile), isNulSeparated ? '\0' : '\n');
    given.insert(given.end(), listed.begin(), listed.end());
  }
  const auto fail = [&job](const Failure& failure) { job.fail(failure); };
  std::vector<std::string> files;
  for (const std::string& input : given) {
    std::error_code error;
    if (!std::filesystem::is_directory(input, error)) {
      files.push_back(input);
      continue;
    }
    const auto found = listFolder(input, recursive, isRecordingName, fail);
    if (found.empty()) {
      fail({input,
            recursive ? "there is no recording in it"
                      : "there is no recording in it; "
                        "--recursive looks into the folders below it",
            VELMAR_ERROR_CODE_FILE_NOT_EXIST_E});
    }
    files.insert(files.end(), found.begin(), found.end());
  }
  return files;
}

void JobsOption::addTo(CLI::App& command, const std::string& of) {
  command
      .add_option("--jobs", given,
                  "How many " + of +
                      " to work on at a time, 1 to 256; one for each processor if "
                      "not given")
      ->type_name("N")
      ->check(CLI::Range(1U, 256U).description(""));
}

unsigned int JobsOption::count() const {
  return given != 0 ? given : std::max(1U, std::thread::hardware_concurrency());
}

}  // namespace velmar::tool
