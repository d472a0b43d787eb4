#ifndef VELMAR_TOOLKIT_RECORD_VIDEO_H
#define VELMAR_TOOLKIT_RECORD_VIDEO_H

#include <cstdint>
#include <optional>
#include <string>

#include "toolkit/base/Job.h"
#include "toolkit/frames/FrameSelection.h"
#include "toolkit/logs/DriveLog.h"
#include "toolkit/writing/RecordFrames.h"

namespace velmar::toolkit {

/// A video to record.
struct VideoInput {
  std::string path;  ///< "-" is standard input
  FrameSelection selection;
  int quality = 95;                        ///< of frames that have to be encoded, 1 to 100
  std::optional<std::uint64_t> startTime;  ///< of its first frame; else when it was made
  std::optional<double> framesPerSecond;   ///< instead of its own times
};

/// Records the video's frames with their times, JPEGs as they are and others as JPEGs. `recording`
/// lacks size and start. `log`, if there is one, fills the frames' tags. Whatever of the video
/// cannot be recorded as it is, is told to the job. Throws Failure and leaves nothing behind,
/// unless the video comes from standard input.
void recordVideo(const VideoInput& video, const NewRecording& recording, DriveLog* log, Job& job);

}  // namespace velmar::toolkit

#endif
