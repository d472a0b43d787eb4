#ifndef VELMAR_TOOLKIT_RECOVERY_H
#define VELMAR_TOOLKIT_RECOVERY_H

#include <functional>
#include <optional>
#include <string>

#include "toolkit/base/Job.h"
#include "toolkit/rescue/Leftover.h"

namespace velmar::toolkit {

/// A recording to make of an interrupted or damaged one. What is given goes before what the file
/// says itself, but changes a header that is whole only if it is to.
struct RecoveryRequest {
  std::string input;
  std::string output;
  LeftoverTimes times = {};               ///< img
  std::optional<version_e> version = {};  ///< rtv
  std::optional<std::uint64_t> startTime = {};
  std::optional<detail::JpegSize> size = {};  ///< the first frame's if neither says it
  bool keepDamaged = false;  ///< pictures that are cut short or have a hole as well
  std::function<void(RecordingDescription&)> describe = {};  ///< changes the rest
  bool changesHeader = false;
};

struct Recovered {
  unsigned int frames = 0;
  std::uint64_t framesCount = 0;  ///< of the recording, the lost ones included
};

/// The job is told of what is lost. Throws Failure and leaves nothing behind, also if no frame can
/// be had.
Recovered recoverRecording(const RecoveryRequest& request, Job& job);

/// Throws Failure if the leftover's name, with or without the ending of temporary files, is that of
/// another container than the output's.
void checkLeftoverName(const std::string& input, const std::string& output);

}  // namespace velmar::toolkit

#endif
