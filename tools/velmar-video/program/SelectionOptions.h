#ifndef VELMAR_TOOL_SELECTION_OPTIONS_H
#define VELMAR_TOOL_SELECTION_OPTIONS_H

#include <CLI/CLI.hpp>
#include <atomic>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "program/CommandJob.h"
#include "program/Toolkit.h"
#include "toolkit/copying/Scenes.h"
#include "toolkit/copying/Strip.h"
#include "toolkit/frames/FrameSelection.h"

namespace velmar::tool {

/// --range, --time and --every, which set `selection`; that has to outlive the parsing.
std::vector<const CLI::Option*> addSelectionOptions(CLI::App& command, FrameSelection& selection);

/// The same for frames of recordings, of which more is known: and --where.
/// \return that one
CLI::Option* addRecordingSelectionOptions(CLI::App& command, FrameSelection& selection);

/// --time alone, whose text `take` gets.
CLI::Option* addTimeOption(CLI::App& command, const std::function<void(const std::string&)>& take);
/// --where, the same.
CLI::Option* addWhereOption(CLI::App& command, const std::function<void(const std::string&)>& take);

/// --join and --pad, which set `form`; that has to outlive the parsing.
/// \param needed  an option without which they mean nothing, or null
void addSceneFormOptions(CLI::App& command, SceneForm& form, CLI::Option* needed);

/// How the names of several outputs are made.
constexpr char kNumberedNames[] =
    "drive-0001.img, or %04d in it is the number, and %Y %m %d %H %M %S are the capture of the "
    "first "
    "frame in UTC";

/// --strip, which sets `strip`; that has to outlive the parsing.
void addStripOption(CLI::App& command, Strip& strip);

/// The frames that are selected of a recording or of several.
class SelectedFrames {
 public:
  /// The selection must outlive it.
  SelectedFrames(const FrameSelection& selection, std::size_t recordings)
      : selection_(selection), recordings_(recordings) {}

  /// Perhaps none, if there are several recordings. Throws Failure. Thread-safe.
  std::vector<unsigned int> of(const Recording& recording);
  /// Throws Failure if no recording has any, unless the job has failed.
  void check(const CommandJob& job) const;

 private:
  const FrameSelection& selection_;
  std::size_t recordings_;
  std::atomic<bool> areThere_ = false;
};

}  // namespace velmar::tool

#endif
