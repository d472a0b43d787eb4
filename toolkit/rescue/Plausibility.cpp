#include "toolkit/rescue/Plausibility.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <vector>

#include "toolkit/text/NumberText.h"

namespace velmar::toolkit {

namespace {

constexpr std::uint64_t kSecond = 1'000'000;  // microseconds
constexpr std::uint64_t kYear2000 = 946'684'800'000'000;
constexpr std::uint64_t kShortestDistance = 1'000;  // microseconds: 1,000 frames a second
constexpr std::uint64_t kUsualDistances = 3;        // a longer one is a gap
constexpr double kHighestSpeed = 150;               // m/s
constexpr unsigned short kFullCircle = 360;         // degrees

// A day from now: clocks may differ.
std::uint64_t future() {
  using std::chrono::microseconds;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<microseconds>(now + std::chrono::days(1)).count());
}

// The median of the distances of frames that follow each other; 0 if there are none.
std::uint64_t usualDistance(const std::vector<FrameTimes>& times) {
  std::vector<std::uint64_t> distances;
  for (std::size_t i = 1; i < times.size(); ++i) {
    if (times[i].sensor > times[i - 1].sensor) {
      distances.push_back(times[i].sensor - times[i - 1].sensor);
    }
  }
  if (distances.empty()) return 0;
  const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
  std::nth_element(distances.begin(), middle, distances.end());
  return *middle;
}

std::string secondsText(std::uint64_t microseconds) {
  return fixedText(static_cast<double>(microseconds) / kSecond, 3) + " s";
}

class Checker {
 public:
  Checker(const Recording& recording, FindingMerger& findings)
      : recording_(recording), findings_(findings) {
    for (unsigned int i = 0; i < recording.framesCount(); ++i) {
      times_.push_back(recording.times(i));
    }
    usual_ = usualDistance(times_);
  }

  void run() {
    for (unsigned int i = 0; i < times_.size(); ++i) {
      checkTime(i);
      if (i > 0) checkDistance(i);
      if (recording_.isRtv()) checkTag(i);
    }
  }

 private:
  void warn(unsigned int index, const std::string& words) {
    findings_.add({Finding::Severity::Warning, index, recording_.places()[index].offset, words});
  }

  void checkTime(unsigned int index) {
    if (recording_.isRtv() && !recording_.isFinished()) return;  // nobody knows the start
    if (times_[index].sensor < kYear2000) {
      warn(index, "was captured before the year 2000");
    } else if (times_[index].sensor > future_) {
      warn(index, "was captured in the future");
    }
  }

  void checkDistance(unsigned int index) {
    const FrameTimes& before = times_[index - 1];
    const FrameTimes& times = times_[index];
    if (times.sensor < before.sensor) {
      warn(index, "was captured before the frame before it");
    } else if (times.sensor == before.sensor) {
      warn(index, "was captured at the same time as the frame before it");
    } else if (times.sensor - before.sensor < kShortestDistance) {
      warn(index, "was captured less than a millisecond after the frame before it");
    } else if ((times.sensor - before.sensor) / kUsualDistances > usual_) {
      warn(index, "was captured " + secondsText(times.sensor - before.sensor) +
                      " after the frame before it; " + secondsText(usual_) + " is usual");
    }
    if (!recording_.isRtv() && times.arrived < before.arrived) {
      warn(index, "arrived before the frame before it");
    }
  }

  // A position of 0, 0 is none, except that the drive starts there.
  void checkTag(unsigned int index) {
    const FrameTag tag = recording_.tag(index);
    if (tag.direction > kFullCircle) warn(index, "has a heading of more than 360 degrees");
    const bool hasPosition = tag.x != 0 || tag.y != 0;
    if (hasPosition && hadPosition_ && times_[index].sensor > times_[index - 1].sensor) {
      constexpr double kPerMetre = 100;
      const double way = std::hypot(double{1} * tag.x - before_.x, double{1} * tag.y - before_.y);
      const double seconds =
          static_cast<double>(times_[index].sensor - times_[index - 1].sensor) / kSecond;
      if (way / kPerMetre > kHighestSpeed * seconds) {
        warn(index, "lies too far from the frame before it for 150 m/s");
      }
    }
    hadPosition_ = hasPosition;
    before_ = tag;
  }

  const Recording& recording_;
  FindingMerger& findings_;
  std::vector<FrameTimes> times_;
  std::uint64_t usual_;
  const std::uint64_t future_ = future();
  FrameTag before_;
  bool hadPosition_ = false;
};

}  // namespace

void checkPlausibility(const Recording& recording, FindingMerger& findings) {
  Checker(recording, findings).run();
}

}  // namespace velmar::toolkit
