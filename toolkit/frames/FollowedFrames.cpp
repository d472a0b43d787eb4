#include "toolkit/frames/FollowedFrames.h"
#include "toolkit/files/RecorderFiles.h"

#include <unistd.h>

#include <algorithm>

#include "toolkit/base/Failure.h"
#include "toolkit/files/LockHolder.h"

namespace velmar::toolkit {

namespace {

std::string followedPath(const std::string& path) {
  const bool isThere = ::access(path.c_str(), F_OK) == 0;
  const std::string temporary = temporaryPath(path);
  return isThere && lockHolder(temporary) ? temporary : path;
}

}  // namespace

FollowedFrames::FollowedFrames(const std::string& path, const FrameSelection& selection,
                               bool neighbours, Job& job)
    : job_(job),
      selection_(selection),
      recording_(followedPath(path), Accept::Running),
      condition_(selection.condition_ ? selection.condition_->take() : nullptr),
      neighbours_(neighbours || (condition_ && condition_->needsNeighbours())) {
  if (condition_) condition_->begin(recording_);
  if (!recording_.isFinished()) watch_.emplace(recording_.file().path());
  update();
  // Of one that has ended, the job is told at the end.
  if (recorder_.state != Recorder::State::Ended) noteState(recording_, job);
  stage_ = job.begin(path, 0);
}

FollowedFrames::~FollowedFrames() = default;

void FollowedFrames::update() {
  if (watch_) watch_->clear();
  recorder_ = recorderOf(recording_);
  if (recorder_.state != Recorder::State::Ended || !recording_.isReplaced()) recording_.update();
  ready_ = recording_.framesCount();
  if (neighbours_ && ready_ > 0 && recorder_.state == Recorder::State::AtWork) --ready_;
}

std::vector<unsigned int> FollowedFrames::next() {
  while (!isEnded_ && !stage_->stopRequested()) {
    if (done_ < ready_) {
      std::vector<unsigned int> selected = pick();
      if (!selected.empty()) return selected;
    } else if (recorder_.state != Recorder::State::AtWork) {
      end();
    } else if (stage_->waitReadable(watch_->descriptor())) {
      update();
    }
  }
  return {};
}

// From some of those that are ready, so that their lines come while others are looked at.
std::vector<unsigned int> FollowedFrames::pick() {
  constexpr unsigned int kAtOnce = 64;
  if (!picker_) picker_.emplace(selection_, recording_.sensorTime(0), condition_.get());
  std::vector<unsigned int> selected;
  for (const unsigned int end = done_ + std::min(ready_ - done_, kAtOnce); done_ < end; ++done_) {
    if (picker_->picks(done_, recording_.sensorTime(done_))) selected.push_back(done_);
  }
  stage_->advance(done_);
  isEnded_ = picker_->isOver(done_);
  return selected;
}

void FollowedFrames::end() {
  isEnded_ = true;
  const std::string& path = recording_.path();
  if (recorder_.state == Recorder::State::Ended) job_.lose(path, recorder_.words);
  if (!recording_.isFinished() && recorder_.state == Recorder::State::Done) reportRest();
  if (!picker_) picker_.emplace(selection_, 0, condition_.get());
  const std::string lack = condition_ && !picker_->hasPicked() ? condition_->lack() : "";
  if (!lack.empty()) {
    throw Failure(path, "--where: " + lack, VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  picker_->check(path, done_);
}

// A recorder whose disk is full may give up its journal, or at last the whole recording.
void FollowedFrames::reportRest() {
  const std::string path = finalPath(recording_.path());
  if (!recording_.file().isAt(path)) {
    return job_.lose(recording_.path(), "its recorder has given it up");
  }
  const unsigned int count = Recording(path).framesCount();
  if (count <= done_) return;
  job_.lose(path, "frames " + std::to_string(done_) + " to " + std::to_string(count - 1) +
                      " could not be followed, but are in the recording");
}

}  // namespace velmar::toolkit
