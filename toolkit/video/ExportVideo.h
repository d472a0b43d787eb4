#ifndef VELMAR_TOOLKIT_EXPORT_VIDEO_H
#define VELMAR_TOOLKIT_EXPORT_VIDEO_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/base/Job.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/video/VideoWriter.h"

namespace velmar::toolkit {

/// The rate of frames that come evenly, each no more than `tolerance` from its time by that rate;
/// nothing if they do not. All in microseconds; times ascend.
std::optional<FrameRate> constantRate(const std::vector<std::uint64_t>& times,
                                      std::uint64_t tolerance);
/// As many frames in as much time, if not one by one.
FrameRate averageRate(const std::vector<std::uint64_t>& times);

struct VideoExport {
  std::string path;
  bool constantRate = false;  ///< of an AVI: whether its frames may get other times
};

/// Writes frames of a recording as a video, the JPEGs as they are, with their capture times. The
/// job is told of those that are left out, and of the rest after the wish to stop. Throws Failure
/// and leaves nothing behind.
void exportVideo(const Recording& recording, const std::vector<unsigned int>& frames,
                 const VideoExport& video, Job& job);

}  // namespace velmar::toolkit

#endif
