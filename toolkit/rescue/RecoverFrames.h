#ifndef VELMAR_TOOLKIT_RECOVER_FRAMES_H
#define VELMAR_TOOLKIT_RECOVER_FRAMES_H

#include <optional>
#include <string>

#include "toolkit/base/Job.h"
#include "toolkit/rescue/Leftover.h"

namespace velmar::toolkit {

/// What is to be recovered. All of it must outlive its use.
struct Rescue {
  const FileBytes& file;
  const Leftover& leftover;
  bool keepDamaged;  ///< pictures that are cut short or have a hole as well
};

/// Of the first frame that can be had.
std::optional<detail::JpegSize> firstSize(const Rescue& rescue);

/// Makes a recording of the frames that can be had; the job is told of the others. Until it is
/// complete it is at recoveringPath(output), since the output's temporary file may be the very one
/// that is read. Throws Failure.
/// \return the number of frames
unsigned int recoverFrames(const Rescue& rescue, const std::string& output,
                           const RecordingDescription& description, Job& job);

/// Beside the output, so that the two are on one file system.
std::string recoveringPath(const std::string& output);

}  // namespace velmar::toolkit

#endif
