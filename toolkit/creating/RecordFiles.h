#ifndef VELMAR_TOOLKIT_RECORD_FILES_H
#define VELMAR_TOOLKIT_RECORD_FILES_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/base/Job.h"
#include "toolkit/writing/RecordFrames.h"

namespace velmar::toolkit {

/// Pictures to record, with the times and the tag of each.
struct FrameFiles {
  std::vector<std::string> paths;
  std::vector<FrameTimes> times;
  std::vector<FrameTag> tags;
  bool allowTruncated = false;             ///< takes JPEGs without an end marker, too
  int quality = 95;                        ///< of other pictures as JPEGs, 1 to 100
  std::optional<std::uint64_t> startTime;  ///< of an rtv; its earliest frame's if not given
};

/// JPEGs are recorded as they are, others (isOtherPicture()) as JPEGs.
/// All files are checked before anything is written; what has changed for the worse since then is
/// left out, and the job is told. `recording` lacks the size and the start. Throws Failure.
void recordFiles(const FrameFiles& files, NewRecording recording, Job& job);

}  // namespace velmar::toolkit

#endif
