#ifndef VELMAR_TOOLKIT_FOLLOWED_FRAMES_H
#define VELMAR_TOOLKIT_FOLLOWED_FRAMES_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/base/Job.h"
#include "toolkit/frames/FrameSelection.h"
#include "toolkit/recording/RecorderWatch.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// The selected frames of a recording, which come as its recorder adds them.
class FollowedFrames {
 public:
  /// Tells the job about the state of the recording. Of a recording and a new one that is being
  /// recorded under its name, the latter is followed. Throws Failure.
  /// \param selection  must outlive it
  /// \param neighbours  a frame comes when the next one is there
  FollowedFrames(const std::string& path, const FrameSelection& selection, bool neighbours,
                 Job& job);
  FollowedFrames(const FollowedFrames&) = delete;
  FollowedFrames& operator=(const FollowedFrames&) = delete;
  ~FollowedFrames();

  const Recording& recording() const { return recording_; }

  /// Waits for the next frames. None at the end: when the recorder has finished the recording, when
  /// no more can be selected, and after the wish to stop. The job is told if the recorder has ended
  /// otherwise. Throws Failure, also if none was selected at all.
  std::vector<unsigned int> next();

 private:
  void update();
  std::vector<unsigned int> pick();
  void end();
  void reportRest();

  Job& job_;
  const FrameSelection& selection_;
  Recording recording_;
  std::unique_ptr<FrameCondition> condition_;
  std::optional<FramePicker> picker_;   ///< once there is a frame
  std::optional<RecorderWatch> watch_;  ///< of a recording that is not finished
  std::unique_ptr<Job::Stage> stage_;
  const bool neighbours_;
  Recorder recorder_;
  unsigned int ready_ = 0;  ///< frames that can be told
  unsigned int done_ = 0;   ///< frames
  bool isEnded_ = false;
};

}  // namespace velmar::toolkit

#endif
