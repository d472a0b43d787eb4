#include "program/InputOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <thread>
#include <utility>

#include "program/DescriptionOptions.h"
#include "toolkit/files/InputFile.h"
#include "toolkit/frames/RangesFile.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/text/FileNames.h"

namespace velmar::tool {

void InputOptions::addTo(CLI::App& command, const std::string& help, const std::string& name) {
  command.add_option(name, inputs, help);
  command.add_flag("--recursive", recursive, "Also take recordings in the folders below a folder");
  auto* list = command.add_option("--files-from", listFile,
                                  "A file with the names of more files and folders, a line each; "
                                  "- is standard input");
  list->type_name("FILE");
  command
      .add_flag("-0,--null", isNulSeparated,
                "The names in --files-from end in a zero byte, as find -print0 writes them")
      ->needs(list);
}

void InputOptions::addRangesTo(CLI::App& command, FrameSelection* selection) {
  addParsedOption(command, "--ranges-from", "FILE",
                  selection != nullptr
                      ? "Recordings and of each some frames, as catalog find lists them, in the "
                        "place of FILES; - is standard input"
                      : "Recordings as catalog find lists them, in the place of FILES; - is "
                        "standard input",
                  [this, selection](const std::string& file) {
                    rangesFile = file;
                    if (selection != nullptr) selection->setRanges(ranges_);
                  });
}

void InputOptions::checkUsage(const std::string& command) const {
  if (hasRanges()) {
    if (inputs.empty() && listFile.empty()) return;
    throw UsageError(command + ": --ranges-from names the recordings, and takes no others");
  }
  if (inputs.empty() && listFile.empty()) {
    throw UsageError(command + ": file is required, or --files-from");
  }
}

bool InputOptions::isOneFile() const {
  std::error_code error;
  return listFile.empty() && !hasRanges() && inputs.size() == 1 &&
         !std::filesystem::is_directory(inputs.front(), error);
}

std::vector<InputFile> InputOptions::find(CommandJob& job,
                                          bool (*isWanted)(const std::string& path),
                                          const std::string& what) const {
  namespace fs = std::filesystem;
  if (hasRanges()) return findInRanges();
  std::vector<std::string> given = inputs;
  if (!listFile.empty()) {
    const auto listed = splitNames(readFile(listFile), isNulSeparated ? '\0' : '\n');
    given.insert(given.end(), listed.begin(), listed.end());
  }
  const auto fail = [&job](const Failure& failure) { job.fail(failure); };
  std::vector<InputFile> files;
  for (const std::string& input : given) {
    std::error_code error;
    if (!fs::is_directory(input, error)) {
      files.push_back({input, fs::path(input).filename()});
      continue;
    }
    const auto found = listFolder(input, recursive, isWanted, fail);
    if (found.empty()) {
      fail({input,
            "there is no " + what + " in it" +
                (recursive ? "" : "; --recursive looks into the folders below it"),
            VELMAR_ERROR_CODE_FILE_NOT_EXIST_E});
    }
    for (const std::string& path : found) {
      files.push_back({path, fs::path(path).lexically_relative(input), input});
    }
  }
  return files;
}

// Their names are those below the folder that they have in common.
std::vector<InputFile> InputOptions::findInRanges() const {
  namespace fs = std::filesystem;
  NamedRanges named = readRanges(rangesFile);
  fs::path common;
  for (const std::string& file : named.files) {
    const fs::path folder = fs::path(file).parent_path();
    if (file == named.files.front()) common = folder;
    const auto [end, other] =
        std::mismatch(common.begin(), common.end(), folder.begin(), folder.end());
    fs::path shared;
    for (auto part = common.begin(); part != end; ++part) shared /= *part;
    common = shared;
  }
  std::vector<InputFile> files;
  for (const std::string& file : named.files) {
    const fs::path name =
        common.empty() ? fs::path(file) : fs::path(file).lexically_relative(common);
    files.push_back({file, name});
  }
  *ranges_ = std::move(named.ranges);
  return files;
}

std::vector<std::string> InputOptions::files(CommandJob& job) const {
  std::vector<std::string> paths;
  for (InputFile& file : find(job, isRecordingName, "recording")) {
    paths.push_back(std::move(file.path));
  }
  return paths;
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
