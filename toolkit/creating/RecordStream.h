#ifndef VELMAR_TOOLKIT_RECORD_STREAM_H
#define VELMAR_TOOLKIT_RECORD_STREAM_H

#include <string>

#include "toolkit/base/Job.h"
#include "toolkit/recording/FrameTimes.h"
#include "toolkit/writing/RecordFrames.h"

namespace velmar::toolkit {

struct JpegStream {
  int fd;
  std::string name;  ///< for messages
};

/// Records a stream of JPEGs, which are checked as they come: what does not fit is left out, and
/// the job is told. The size comes from the first frame. Goes on until the stream ends, the wish to
/// stop comes or the recording is full; then it is finished. Throws Failure.
void recordStream(const JpegStream& stream, const FrameClock& clock, const NewRecording& recording,
                  Job& job);

}  // namespace velmar::toolkit

#endif
