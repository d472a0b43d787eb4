#include "toolkit/writing/RecordFrames.h"

#include "toolkit/writing/RecordingWriter.h"

namespace velmar::toolkit {

unsigned int recordFrames(FrameSource& frames, const NewRecording& recording, Job& job) {
  const std::size_t count = frames.count();
  const auto stage = job.begin(recording.shownAs, count);
  RecordingWriter writer(recording.path, recording.description, recording.framesMax,
                         RecordingWriter::OnFailure::RemoveFrames, recording.shownAs);
  writer.syncEvery(recording.syncInterval);
  NewFrame frame;
  std::size_t done = 0;
  for (; done < count && !stage->stopRequested(); stage->advance(++done)) {
    if (frames.read(done, frame)) writer.add(frame.jpeg, frame.times, frame.tag);
  }
  frames.finish(done);
  writer.finish();
  if (done < count) job.loseRest(recording.shownAs, done, count);
  return writer.frames();
}

}  // namespace velmar::toolkit
