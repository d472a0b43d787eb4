#include "toolkit/video/ExportVideo.h"

#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "toolkit/base/Failure.h"
#include "toolkit/frames/FrameLosses.h"
#include "toolkit/tables/Track.h"
#include "toolkit/text/NumberText.h"

namespace velmar::toolkit {

namespace {

constexpr std::uint64_t kSecond = 1'000'000;

std::optional<FrameRate> fraction(std::uint64_t frames, std::uint64_t seconds) {
  const std::uint64_t divisor = std::gcd(frames, seconds);
  constexpr std::uint64_t kMost = std::numeric_limits<int>::max();
  if (divisor == 0 || frames / divisor > kMost || seconds / divisor > kMost) return std::nullopt;
  return FrameRate{static_cast<int>(frames / divisor), static_cast<int>(seconds / divisor)};
}

bool fits(const std::vector<std::uint64_t>& times, FrameRate rate, std::uint64_t tolerance) {
  for (std::size_t i = 0; i < times.size(); ++i) {
    // As FrameClock does it.
    const long double exact = static_cast<long double>(i) * kSecond * rate.seconds / rate.frames;
    const auto even = static_cast<std::uint64_t>(std::round(exact));
    const std::uint64_t time = times[i] - times[0];
    if (time > even + tolerance || time + tolerance < even) return false;
  }
  return true;
}

// Whole frames a second, those of television, and the interval in microseconds.
std::vector<FrameRate> likelyRates(const std::vector<std::uint64_t>& times) {
  const FrameRate average = averageRate(times);
  const double rate = static_cast<double>(average.frames) / average.seconds;
  const auto interval = std::llround(static_cast<double>(kSecond) / rate);
  std::vector<FrameRate> rates;
  for (const auto& [frames, seconds] : {std::pair<long long, long long>(std::llround(rate), 1),
                                        {std::llround(rate * 1.001) * 1000, 1001},
                                        {static_cast<long long>(kSecond), interval}}) {
    if (frames <= 0 || seconds <= 0) continue;
    if (const auto found =
            fraction(static_cast<std::uint64_t>(frames), static_cast<std::uint64_t>(seconds))) {
      rates.push_back(*found);
    }
  }
  rates.push_back(average);
  return rates;
}

// With its sign and so many digits before the point.
std::string signedDegrees(double degrees, std::size_t digits) {
  constexpr int kDecimals = 6;
  std::string text = fixedText(std::abs(degrees), kDecimals);
  text.insert(0, digits + 1 + kDecimals - text.size(), '0');
  return (degrees < 0 ? "-" : "+") + text;
}

// Of an rtv that has one, as ISO 6709 writes it.
std::string startPosition(const Recording& recording) {
  if (!recording.isRtv() || !hasStartPosition(recording.description())) return "";
  const Place start = Track(recording).start();
  std::string text = signedDegrees(start.lat, 2) + signedDegrees(start.lng, 3);
  if (start.alt != 0) text += (start.alt > 0 ? "+" : "") + fixedText(start.alt, 2);
  return text + "/";
}

class VideoExporter {
 public:
  VideoExporter(const Recording& recording, const std::vector<unsigned int>& frames,
                const VideoExport& video, Job& job)
      : recording_(recording),
        video_(video),
        container_(videoContainer(video.path)),
        job_(job),
        news_(recording.path(), job) {
    if (recording.description().codec != VELMAR_CODEC_JPG_E) {
      throw Failure(recording.path(), "its frames are no JPEGs",
                    VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E);
    }
    chooseFrames(frames);
    chooseRate();
    checkIntervals();
  }

  void run() {
    const auto stage = job_.begin(video_.path, frames_.size());
    std::unique_ptr<VideoWriter> writer;
    StoredFrames stored(recording_);
    std::string jpeg;
    std::size_t first = 0;  // that can be had: the video begins with it
    std::size_t done = 0;
    for (; done < frames_.size() && !stage->stopRequested(); stage->advance(++done)) {
      if (const FrameFlaw flaw = stored.read(frames_[done], jpeg)) {
        losses_.add(frames_[done], flaw);
        continue;
      }
      if (!writer) {
        first = done;
        writer = createVideo(description(times_[first]));
      }
      writer->add(jpeg, done - first, times_[done] - times_[first]);
    }
    losses_.report(recording_.path(), frames_.size(), job_);
    if (writer) writer->finish();
    if (done < frames_.size()) job_.loseRest(recording_.path(), done, frames_.size());
  }

 private:
  bool keepsTimes() const { return !(container_ == VideoContainer::Avi && video_.constantRate); }

  // Times in a video ascend.
  void chooseFrames(const std::vector<unsigned int>& frames) {
    for (const unsigned int frame : frames) {
      const std::uint64_t time = recording_.sensorTime(frame);
      if (keepsTimes() && !times_.empty() && time <= times_.back()) {
        news_.add(frame, frame, "left out: in a video each frame comes later than the one before");
        continue;
      }
      frames_.push_back(frame);
      times_.push_back(time);
    }
    news_.finish();
  }

  void chooseRate() {
    const std::uint64_t tolerance = recording_.isRtv() ? kMillisecond : 1;
    if (keepsTimes()) rate_ = constantRate(times_, tolerance);
    if (container_ != VideoContainer::Avi) return;
    if (!keepsTimes()) {
      rate_ = averageRate(times_);
    } else if (!rate_) {
      refuse(
          "an AVI has no times of its own, and the rate of the frames varies; --constant-rate "
          "gives them even times, .mkv, .mp4 and .mov keep them",
          VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
    }
    constexpr int kHighestRate = 1000;  // libavformat's AVI
    if (rate_->frames / rate_->seconds >= kHighestRate && rate_->frames != kHighestRate) {
      refuse("an AVI holds 1000 frames a second at the most; .mkv, .mp4 and .mov hold more",
             VELMAR_ERROR_CODE_OUT_RANGE_E);
    }
  }

  [[noreturn]] void refuse(const std::string& words, VELMAR_ERROR_CODE_E code) const {
    throw Failure(video_.path, words, code);
  }

  void checkIntervals() const {
    if (container_ != VideoContainer::Mp4 && container_ != VideoContainer::Mov) return;
    for (std::size_t i = 1; i < times_.size(); ++i) {
      if (times_[i] - times_[i - 1] <= INT32_MAX) continue;
      refuse("an .mp4 or .mov holds no gap of more than 35 minutes, as before frame " +
                 std::to_string(frames_[i]) + "; an .mkv does",
             VELMAR_ERROR_CODE_OUT_RANGE_E);
    }
  }

  VideoDescription description(std::uint64_t startTime) const {
    return {video_.path,
            container_,
            recording_.description().size(),
            rate_,
            startTime,
            recording_.deviceId(),
            startPosition(recording_)};
  }

  const Recording& recording_;
  const VideoExport& video_;
  const VideoContainer container_;
  Job& job_;
  FrameNews news_;
  FrameLosses losses_;
  std::vector<unsigned int> frames_;
  std::vector<std::uint64_t> times_;  // theirs
  std::optional<FrameRate> rate_;
};

}  // namespace

FrameRate averageRate(const std::vector<std::uint64_t>& times) {
  constexpr FrameRate kOfSingleFrame{25, 1};
  if (times.size() < 2 || times.back() <= times.front()) return kOfSingleFrame;
  std::uint64_t frames = (times.size() - 1) * kSecond;
  std::uint64_t seconds = times.back() - times.front();
  // A fraction of 31 bits comes near enough to what has more.
  while (true) {
    if (const auto found = fraction(frames, seconds)) return *found;
    frames = (frames + 1) / 2;
    seconds = (seconds + 1) / 2;
  }
}

std::optional<FrameRate> constantRate(const std::vector<std::uint64_t>& times,
                                      std::uint64_t tolerance) {
  for (const FrameRate rate : likelyRates(times)) {
    if (fits(times, rate, tolerance)) return rate;
  }
  return std::nullopt;
}

void exportVideo(const Recording& recording, const std::vector<unsigned int>& frames,
                 const VideoExport& video, Job& job) {
  VideoExporter(recording, frames, video, job).run();
}

}  // namespace velmar::toolkit
