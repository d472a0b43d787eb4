/// Frames from recordings into a new one, with their times and tags, never decoded.
#ifndef VELMAR_TOOLKIT_COPY_FRAMES_H
#define VELMAR_TOOLKIT_COPY_FRAMES_H

#include <string>
#include <vector>

#include "toolkit/base/Job.h"
#include "toolkit/copying/Rebase.h"
#include "toolkit/copying/Strip.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// Frames of a recording, in the order in which they are to be copied.
struct FrameRange {
  const Recording* recording;
  std::vector<unsigned int> frames;
  Rebase rebase = {};  ///< to the output's start position
};

std::vector<unsigned int> allFrames(const Recording& recording);

/// Of all frames; 0 if there are none.
std::uint64_t earliestSensorTime(const Recording& recording);

/// Says if the recording's device id cannot be written as it is.
void checkDeviceId(const Recording& recording, Job& job);

/// Writes `output`. Times and positions are checked before anything is written. Frames whose bytes
/// the file does not have are left out; `job` is told of those, of frames that are no pictures,
/// and, where it is asked to stop, of the rest. Throws Failure.
/// \param strip  is left out of the description and of the frames
void copyFrames(const std::vector<FrameRange>& ranges, const std::string& output,
                RecordingDescription description, Job& job, const Strip& strip = {});

}  // namespace velmar::toolkit

#endif
