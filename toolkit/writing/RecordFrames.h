#ifndef VELMAR_TOOLKIT_RECORD_FRAMES_H
#define VELMAR_TOOLKIT_RECORD_FRAMES_H

#include <cstddef>
#include <string>

#include "toolkit/base/Job.h"
#include "toolkit/recording/FrameTag.h"
#include "toolkit/recording/FrameTimes.h"
#include "toolkit/recording/RecordingDescription.h"

namespace velmar::toolkit {

/// A frame as it is recorded.
struct NewFrame {
  std::string jpeg;
  FrameTimes times{};
  FrameTag tag;
};

/// Where the frames of a new recording come from.
class FrameSource {
 public:
  virtual ~FrameSource() = default;
  virtual std::size_t count() const = 0;
  /// Each frame once, in order. False if it is left out, which the source tells whom it wants.
  virtual bool read(std::size_t at, NewFrame& frame) = 0;
  /// So many were asked for, and no more will be.
  virtual void finish(std::size_t /*done*/) {}
};

struct NewRecording {
  std::string path;
  RecordingDescription description;
  unsigned int framesMax = 0;     ///< see makeRecordingBackend()
  unsigned int syncInterval = 0;  ///< see RecordingWriter::syncEvery()
  std::string shownAs = path;     ///< the name in messages
};

/// Records frames that can be had again, all of them or up to the wish to stop. Throws Failure and
/// leaves nothing behind.
/// \return the number of recorded frames
unsigned int recordFrames(FrameSource& frames, const NewRecording& recording, Job& job);

}  // namespace velmar::toolkit

#endif
