#include "toolkit/video/RecordVideo.h"

#include <algorithm>
#include <memory>

#include "toolkit/base/Failure.h"
#include "toolkit/frames/FrameLosses.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/video/VideoSource.h"
#include "toolkit/writing/RecordingWriter.h"

namespace velmar::toolkit {

namespace {

class VideoRecorder {
 public:
  VideoRecorder(const VideoInput& video, const NewRecording& recording, DriveLog* log, Job& job)
      : video_(video),
        recording_(recording),
        log_(log),
        job_(job),
        opening_{video.path, video.quality, [this](int fd) { return waitReadable(fd); }},
        news_(opening_.name(), job) {
    // The stage before what it waits for; but only the video knows how many frames there are.
    if (isStream()) stage_ = job.begin(recording.path, 0);
    source_ = openVideo(opening_, job);
    if (!stage_) {
      stage_ =
          job.begin(recording.path, video.selection.isAll() ? source_->facts().framesCount : 0);
    }
    if (!source_->facts().hasTimes && !video.framesPerSecond) refuseWithoutTimes();
    if (video.selection.isAll()) checkFramesCount(recording.path, source_->facts().framesCount);
    setStart();
  }

  void run() {
    try {
      readVideo();
    } catch (const Failure&) {
      news_.finish();
      throw;
    }
    news_.finish();
    reportRest();
    if (!writer_) {
      throw Failure(opening_.name(), "there was no frame to record",
                    VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
    }
    if (log_ != nullptr) log_->finish(recording_.path, job_);
    writer_->finish();
  }

 private:
  bool waitReadable(int fd) {
    stopped_ = stopped_ || (stage_ && !stage_->waitReadable(fd));
    return !stopped_;
  }

  [[noreturn]] void refuseWithoutTimes() const {
    throw Failure(opening_.name(), "it has no times of its own; --fps gives the frames times",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }

  bool isStream() const { return video_.path == "-"; }

  void setStart() {
    const auto given = video_.startTime ? video_.startTime : source_->facts().creationTime;
    start_ = given.value_or(0);
    if (!given) {
      job_.note(opening_.name(),
                "it does not say when it was made: its first frame is at 0, 1970-01-01; "
                "--start-time says otherwise");
    }
    if (video_.framesPerSecond) clock_.emplace(start_, *video_.framesPerSecond);
  }

  void readVideo() {
    while (!full_ && !isOver()) {
      stopped_ = stopped_ || stage_->stopRequested();
      if (stopped_ || !source_->next()) return;
      takeFrame();
    }
  }

  bool isOver() const { return picker_ && picker_->isOver(number_); }

  void takeFrame() {
    const std::uint64_t number = number_++;
    const auto time = captureTime(number);
    if (!time) return news_.add(number, number, "skipped: it has no time");
    if (*time < 0) return news_.add(number, number, "skipped: its time is before 1970");
    const auto captured = static_cast<std::uint64_t>(*time);
    if (!picker_) picker_.emplace(video_.selection, captured);
    if (!picker_->picks(number, captured)) return;
    source_->readJpeg(frame_.jpeg);
    frame_.times = {captured, captured};
    if (!isFit(number)) return;
    if (!writer_) openWriter();
    full_ = isBeyondRtv();
    if (full_ || !hasRtvTime(number)) return;
    tellOddities(number);
    if (log_ != nullptr) log_->fill(frame_.tag, captured);
    writer_->add(frame_.jpeg, frame_.times, frame_.tag);
    last_ = captured;
    stage_->advance(writer_->frames());
  }

  // The first frame is at the start, whatever its time in the video.
  std::optional<std::int64_t> captureTime(std::uint64_t number) {
    if (clock_) return static_cast<std::int64_t>(clock_->at(number));
    const auto time = source_->time();
    if (!time) return std::nullopt;
    if (!first_) first_ = time;
    std::int64_t distance = 0;
    std::int64_t captured = 0;
    const bool fits =
        !__builtin_sub_overflow(*time, *first_, &distance) &&
        !__builtin_add_overflow(static_cast<std::int64_t>(start_), distance, &captured);
    return fits ? std::optional(captured) : std::nullopt;
  }

  bool isFit(std::uint64_t number) {
    const auto size = inspector_.size(frame_.jpeg);
    if (size && !size_) size_ = size;
    if (size && *size == *size_) return true;
    news_.add(number, number,
              "skipped: " + (size ? differenceText(*size, *size_) : "it is not a JPEG picture"));
    return false;
  }

  // An rtv has its place for so many frames from the start.
  unsigned int framesMax() const {
    const VideoFacts& facts = source_->facts();
    const bool isKnown = facts.isCountExact && facts.framesCount > 0;
    return isKnown ? static_cast<unsigned int>(
                         std::min<std::uint64_t>(facts.framesCount, recording_.framesMax))
                   : recording_.framesMax;
  }

  void openWriter() {
    RecordingDescription description = recording_.description;
    description.setSize(*size_);
    description.startTime = frame_.times.sensor;
    checkRtvTimes(recording_.path, description, {frame_.times});
    rtvStart_ = description;
    writer_ =
        std::make_unique<RecordingWriter>(recording_.path, description, framesMax(),
                                          isStream() ? RecordingWriter::OnFailure::KeepFrames
                                                     : RecordingWriter::OnFailure::RemoveFrames);
    writer_->syncEvery(recording_.syncInterval);
  }

  bool isBeyondRtv() const {
    if (!isRtvPath(recording_.path)) return false;
    const std::uint64_t start = rtvStart_.startTime / kMillisecond;
    const std::uint64_t time = frame_.times.sensor / kMillisecond;
    return writer_->frames() == kRtvFramesMax || (time > start && time - start > INT32_MAX);
  }

  bool hasRtvTime(std::uint64_t number) {
    if (!isRtvPath(recording_.path) || rtvTimeFlag(rtvStart_, frame_.times.sensor)) return true;
    news_.add(number, number, "skipped: its time is before the first one's, which no rtv holds");
    return false;
  }

  // What is recorded all the same.
  void tellOddities(std::uint64_t number) {
    const std::string flaw = source_->flaw();
    if (!flaw.empty()) news_.add(number, number, "recorded, but " + flaw);
    if (!last_ || frame_.times.sensor > *last_) return;
    news_.add(number, number,
              frame_.times.sensor == *last_
                  ? "recorded with the time that the frame before has"
                  : "recorded with a time before that of the frame before");
  }

  void reportRest() {
    if (full_) {
      job_.lose(recording_.path,
                "an rtv holds 65535 frames and 24 days at the most; the rest is left out");
    } else if (stopped_ && !isStream()) {
      job_.lose(opening_.name(),
                "stopped by a signal after " + std::to_string(number_) + " frames");
    } else if (picker_ && !stopped_) {
      picker_->check(opening_.name(), number_);
    }
  }

  const VideoInput& video_;
  const NewRecording& recording_;
  DriveLog* log_;
  Job& job_;
  const VideoOpening opening_;
  FrameNews news_;
  std::unique_ptr<Job::Stage> stage_;
  std::unique_ptr<VideoSource> source_;
  std::unique_ptr<RecordingWriter> writer_;
  RecordingDescription rtvStart_;
  std::uint64_t start_ = 0;
  std::optional<FrameClock> clock_;
  std::optional<std::int64_t> first_;  // time in the video
  std::optional<std::uint64_t> last_;  // time in the recording
  std::optional<FramePicker> picker_;
  NewFrame frame_;
  JpegInspector inspector_;
  std::optional<detail::JpegSize> size_;
  std::uint64_t number_ = 0;
  bool full_ = false;
  bool stopped_ = false;
};

}  // namespace

void recordVideo(const VideoInput& video, const NewRecording& recording, DriveLog* log, Job& job) {
  if (log != nullptr) log->tell(job);
  VideoRecorder(video, recording, log, job).run();
}

}  // namespace velmar::toolkit
