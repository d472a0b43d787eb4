#include "toolkit/copying/CopyFrames.h"

#include <algorithm>
#include <numeric>
#include <optional>

#include "toolkit/base/Failure.h"
#include "toolkit/frames/FrameLosses.h"
#include "toolkit/frames/StoredFrame.h"
#include "toolkit/writing/RecordFrames.h"

namespace velmar::toolkit {

namespace {

std::size_t countOf(const std::vector<FrameRange>& ranges) {
  return std::accumulate(
      ranges.begin(), ranges.end(), std::size_t{0},
      [](std::size_t sum, const FrameRange& range) { return sum + range.frames.size(); });
}

void checkTimes(const std::vector<FrameRange>& ranges, const std::string& output,
                const RecordingDescription& description) {
  std::vector<FrameTimes> times;
  for (const FrameRange& range : ranges) {
    for (const unsigned int index : range.frames) times.push_back(range.recording->times(index));
  }
  checkRtvTimes(output, description, times);
}

void checkPositions(const std::vector<FrameRange>& ranges, version_e version) {
  // What 24 and 32 bits hold of hundredths of a metre.
  const std::string limit = version == RTV_VER_02 ? "83 km" : "21474 km";
  for (const FrameRange& range : ranges) {
    if (range.rebase.changesNothing()) continue;
    for (const unsigned int index : range.frames) {
      if (range.rebase.apply(range.recording->tag(index))) continue;
      throw Failure(range.recording->path(),
                    "frame " + std::to_string(index) + " lies more than " + limit +
                        " from the start position of the output; its version holds no more",
                    VELMAR_ERROR_CODE_OUT_RANGE_E);
    }
  }
}

// Whether times relative to the start are held by the output and mean the same there.
bool keepsTimeFlags(const Recording& recording, const std::string& output,
                    const RecordingDescription& description) {
  return recording.isRtv() && isRtvPath(output) &&
         recording.description().startTime == description.startTime;
}

// Frames as they are stored. What is no picture is copied as well: nothing of a recording is lost
// that can be had.
class CopiedFrames final : public FrameSource {
 public:
  // All of them must outlive it.
  CopiedFrames(const std::vector<FrameRange>& ranges, const std::string& output,
               const RecordingDescription& description, const Strip& strip, Job& job)
      : count_(countOf(ranges)),
        output_(output),
        description_(description),
        strip_(strip),
        job_(job),
        range_(ranges.begin()) {
    enterRange();
  }

  std::size_t count() const override { return count_; }

  bool read(std::size_t /*at*/, NewFrame& frame) override {
    while (next_ == range_->frames.size()) {
      news_->finish();
      ++range_;
      enterRange();
    }
    const Recording& recording = *range_->recording;
    const unsigned int index = range_->frames[next_++];
    if (const FrameFlaw flaw = stored_->read(index, frame.jpeg)) {
      const char* const what = flaw.hasBytes ? "copied unchanged: " : "left out: ";
      news_->add(index, index, what + flaw.words);
      if (!flaw.hasBytes) return false;
    }
    frame.tag = range_->rebase.apply(recording.tag(index)).value();
    const int timeFlag = recording.timeFlag(index);
    if (keepsTimeFlags_) {
      frame.tag.timeFlag = timeFlag;
    } else if (isMisread(timeFlag)) {
      news_->add(index, index, std::string("copied with another time: it has ") + kMisreadTime);
    }
    frame.times = recording.times(index);
    if (!strip_.applyTo(frame)) {
      news_->add(index, index, "copied with what its JPEG may tell: it is damaged");
    }
    return true;
  }

  void finish(std::size_t /*done*/) override { news_->finish(); }

 private:
  void enterRange() {
    next_ = 0;
    keepsTimeFlags_ = keepsTimeFlags(*range_->recording, output_, description_);
    news_.emplace(range_->recording->path(), job_);
    stored_.emplace(*range_->recording);
  }

  const std::size_t count_;
  const std::string& output_;
  const RecordingDescription& description_;
  const Strip& strip_;
  Job& job_;
  std::vector<FrameRange>::const_iterator range_;
  std::size_t next_ = 0;  // of the range's frames
  bool keepsTimeFlags_ = false;
  std::optional<FrameNews> news_;
  std::optional<StoredFrames> stored_;
};

}  // namespace

std::vector<unsigned int> allFrames(const Recording& recording) {
  std::vector<unsigned int> frames(recording.framesCount());
  std::iota(frames.begin(), frames.end(), 0U);
  return frames;
}

void checkDeviceId(const Recording& recording, Job& job) {
  if (recording.hasPlainDeviceId()) return;
  job.lose(recording.path(),
           "its device id is not hexadecimal text as a recording is given it, and changes");
}

std::uint64_t earliestSensorTime(const Recording& recording) {
  const unsigned int count = recording.framesCount();
  std::uint64_t earliest = count > 0 ? recording.sensorTime(0) : 0;
  for (unsigned int i = 1; i < count; ++i) earliest = std::min(earliest, recording.sensorTime(i));
  return earliest;
}

void copyFrames(const std::vector<FrameRange>& ranges, const std::string& output,
                RecordingDescription description, Job& job, const Strip& strip) {
  strip.applyTo(description);
  CopiedFrames frames(ranges, output, description, strip, job);
  checkFramesCount(output, frames.count());
  checkTimes(ranges, output, description);
  checkPositions(ranges, description.version);
  const auto count = static_cast<unsigned int>(frames.count());
  recordFrames(frames, {output, description, count}, job);
}

}  // namespace velmar::toolkit
