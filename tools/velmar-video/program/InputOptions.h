#ifndef VELMAR_TOOL_INPUT_OPTIONS_H
#define VELMAR_TOOL_INPUT_OPTIONS_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "program/CommandJob.h"
#include "program/Toolkit.h"
#include "toolkit/frames/FrameSelection.h"

namespace CLI {
class App;
}  // namespace CLI

namespace velmar::tool {

/// A file that a command works on.
struct InputFile {
  std::string path;
  std::string name;         ///< below the folder that was given, or its own
  std::string folder = {};  ///< that one, if it was found there
};

/// The files that a command works on: files, folders, lists of them. This object has to outlive the
/// parsing.
struct InputOptions {
  /// Of a command that reads recordings in progress, too.
  static constexpr char kWithRunning[] =
      "Recordings, also in progress (drive.img, or drive.img.tmp), and folders of finished ones "
      "(*.img, *.rtv)";

  /// \param help  of what is given
  void addTo(CLI::App& command,
             const std::string& help = "Recordings, and folders of them (*.img, *.rtv)",
             const std::string& name = "file");
  /// --ranges-from: the recordings of a list in the place of those that are given. Of each,
  /// `selection` takes the frames of the list only; without one, the list's ranges are not used.
  void addRangesTo(CLI::App& command, FrameSelection* selection);
  bool hasRanges() const { return !rangesFile.empty(); }
  /// Throws UsageError if there is none.
  void checkUsage(const std::string& command) const;
  /// Whether it is one name, and not that of a folder.
  bool isOneFile() const;
  /// Those in a folder in natural order. What cannot be listed makes the job fail.
  /// \param isWanted  says which of the files in a folder are meant
  /// \param what      names one of them
  std::vector<InputFile> find(CommandJob& job, bool (*isWanted)(const std::string& path),
                              const std::string& what) const;
  /// The paths of recordings.
  std::vector<std::string> files(CommandJob& job) const;

  std::vector<std::string> inputs;
  std::string listFile;  ///< of more inputs; "-" is standard input
  std::string rangesFile;
  bool recursive = false;
  bool isNulSeparated = false;

 private:
  std::vector<InputFile> findInRanges() const;

  std::shared_ptr<SpansOfFiles> ranges_ = std::make_shared<SpansOfFiles>();
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
