#ifndef VELMAR_TOOLKIT_FOLLOW_RECORDING_H
#define VELMAR_TOOLKIT_FOLLOW_RECORDING_H

#include <functional>
#include <string>

#include "toolkit/base/Job.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// Takes frames `first` to `end`-1; each frame comes once, in order. The recording may be another
/// object once it is finished.
using Follower =
    std::function<void(const Recording& recording, unsigned int first, unsigned int end)>;

/// Reads a recording and goes on as its recorder adds frames, until that has finished it. The job
/// is told if it ends without doing so. Stops after the wish to stop. Throws Failure.
void followRecording(const std::string& path, const Follower& follower, Job& job);

}  // namespace velmar::toolkit

#endif
