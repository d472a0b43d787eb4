#include "toolkit/creating/RecordStream.h"

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>
#include <vector>

#include "toolkit/frames/FrameLosses.h"
#include "toolkit/jpeg/FrameInput.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/jpeg/JpegStreamSplitter.h"
#include "toolkit/writing/RecordingWriter.h"

namespace velmar::toolkit {

namespace {

class StreamRecorder {
 public:
  StreamRecorder(const JpegStream& stream, const FrameClock& clock, const NewRecording& recording,
                 Job& job)
      : stream_(stream),
        clock_(clock),
        output_(recording.path),
        job_(job),
        news_(stream.name, job),
        stage_(job.begin(recording.path, 0)),
        writer_(recording.path, recording.description, recording.framesMax,
                RecordingWriter::OnFailure::KeepFrames),
        splitter_(kMaxFrameSize) {
    writer_.syncEvery(recording.syncInterval);
  }

  void run() {
    try {
      readStream();
    } catch (const Failure&) {
      news_.finish();
      throw;
    }
    news_.finish();
    writer_.finish();
    reportRest();
  }

 private:
  void readStream() {
    std::vector<char> piece(std::size_t{1} << 20);
    while (!full_ && stage_->waitReadable(stream_.fd)) {
      const ssize_t count = ::read(stream_.fd, piece.data(), piece.size());
      if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
      if (count < 0)
        job_.lose(stream_.name, std::string("cannot read on: ") + std::strerror(errno));
      ended_ = count == 0;
      if (count <= 0) return;
      take({piece.data(), static_cast<std::size_t>(count)});
    }
  }

  void take(std::string_view piece) {
    splitter_.feed(piece);
    while (const auto frame = splitter_.next()) {
      // Frames that are left out keep their place in time.
      const std::uint64_t number = number_++;
      if (!isFit(*frame, number)) continue;
      full_ = isRtvPath(output_) && isBeyondRtv(number);
      if (full_) return;
      writer_.add(*frame, {clock_.at(number), clock_.at(number)});
      stage_->advance(writer_.frames());
    }
  }

  bool isFit(const std::string& frame, std::uint64_t number) {
    const auto size = inspector_.size(frame);
    if (size && !size_) {
      size_ = size;
      writer_.setSize(static_cast<unsigned short>(size->width),
                      static_cast<unsigned short>(size->height));
    }
    if (size && *size == *size_) return true;
    news_.add(number, number,
              "skipped: " + (size ? differenceText(*size, *size_) : "it is not a JPEG picture"));
    return false;
  }

  bool isBeyondRtv(std::uint64_t number) const {
    const std::uint64_t milliseconds =
        clock_.at(number) / kMillisecond - clock_.at(0) / kMillisecond;
    return writer_.frames() == kRtvFramesMax || milliseconds > INT32_MAX;
  }

  void reportRest() {
    if (full_) {
      job_.lose(output_, "an rtv holds 65535 frames and 24 days at the most; the rest is left out");
    }
    if (splitter_.skippedBytes() > 0) {
      job_.lose(stream_.name, std::to_string(splitter_.skippedBytes()) +
                                  " bytes skipped that belong to no whole frame");
    }
    if (ended_ && splitter_.isInsideFrame()) job_.lose(stream_.name, "it ends inside a frame");
  }

  const JpegStream& stream_;
  const FrameClock& clock_;
  const std::string& output_;
  Job& job_;
  FrameNews news_;
  const std::unique_ptr<Job::Stage> stage_;
  RecordingWriter writer_;
  JpegStreamSplitter splitter_;
  JpegInspector inspector_;
  std::optional<detail::JpegSize> size_;
  std::uint64_t number_ = 0;
  bool full_ = false;
  bool ended_ = false;  // the stream
};

}  // namespace

void recordStream(const JpegStream& stream, const FrameClock& clock, const NewRecording& recording,
                  Job& job) {
  StreamRecorder(stream, clock, recording, job).run();
}

}  // namespace velmar::toolkit
