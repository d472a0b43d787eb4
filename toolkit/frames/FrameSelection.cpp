#include "toolkit/frames/FrameSelection.h"

#include <algorithm>
#include <tuple>

#include "toolkit/base/Failure.h"
#include "toolkit/text/TimeText.h"

namespace velmar::toolkit {

void sortRanges(FrameSpans& ranges) {
  std::sort(ranges.begin(), ranges.end(),
            [](const FrameSpan& one, const FrameSpan& other) { return one.first < other.first; });
  FrameSpans joined;
  for (const FrameSpan& range : ranges) {
    if (!joined.empty() && range.first <= joined.back().behind) {
      joined.back().behind = std::max(joined.back().behind, range.behind);
    } else {
      joined.push_back(range);
    }
  }
  ranges = std::move(joined);
}

void FrameSelection::setRange(std::string_view text) {
  const std::size_t colon = text.find(':');
  const auto begin = parseNumber(text.substr(0, colon));
  const auto end = colon == text.npos ? std::nullopt : parseNumber(text.substr(colon + 1));
  if (!begin || !end) throw UsageError("--range is A:B with two frame numbers");
  if (*begin >= *end) throw UsageError("--range " + std::string(text) + " holds no frame");
  range_.emplace(*begin, *end);
}

std::optional<FrameSelection::TimePoint> FrameSelection::parsePoint(std::string_view text) {
  if (text.starts_with('+')) {
    const auto offset = parseDuration(text);
    if (!offset) return std::nullopt;
    return TimePoint{static_cast<std::uint64_t>(*offset), true, false};
  }
  const auto time = parseUtcTime(text);
  if (!time) return std::nullopt;
  return TimePoint{*time, false, parseNumber(text).has_value()};
}

void FrameSelection::setTime(std::string_view text) {
  // RFC 3339 has colons of its own; only one of all splits the text into two times.
  for (std::size_t colon = text.find(':'); colon != text.npos; colon = text.find(':', colon + 1)) {
    const auto begin = parsePoint(text.substr(0, colon));
    const auto end = parsePoint(text.substr(colon + 1));
    if (!begin || !end) continue;
    if (begin->relative == end->relative && begin->micros >= end->micros) {
      throw UsageError("--time " + std::string(text) + " holds no time");
    }
    time_.emplace(*begin, *end);
    return;
  }
  throw UsageError(
      "--time is A:B, each a time such as 2023-11-14T22:13:20.5Z, a day such as 2023-11-14, "
      "microseconds since 1970, or from frame 0 on +10s, +500ms, +2h");
}

void FrameSelection::setEvery(std::string_view text) {
  constexpr std::uint64_t kMost = 1000000;
  const auto frames = parseNumber(text);
  const auto interval = frames ? std::nullopt : parseDuration(text);
  if (frames && *frames > 0 && *frames <= kMost) {
    every_ = static_cast<unsigned int>(*frames);
  } else if (interval && *interval > 0) {
    interval_ = interval;
  } else {
    throw UsageError("--every is a number of frames from 1 to 1000000, or a time such as 1s");
  }
}

void FrameSelection::setCondition(const SharedCondition::Make& make) {
  condition_ = std::make_shared<SharedCondition>(make);
}

std::pair<std::uint64_t, std::uint64_t> FrameSelection::timeSpan(std::uint64_t start) const {
  const auto absolute = [start](TimePoint point) {
    return point.relative ? start + point.micros : point.micros;
  };
  return {absolute(time_->first), absolute(time_->second)};
}

std::optional<std::pair<std::uint64_t, std::uint64_t>> FrameSelection::fixedTimeSpan() const {
  if (!time_ || time_->first.relative || time_->second.relative) return std::nullopt;
  return timeSpan(0);
}

std::string FrameSelection::emptyWords() const {
  if (condition_) return "none of the frames fulfils --where";
  if (ranges_) return "--ranges-from has none of its frames";
  if (!time_) return "it holds no frame";
  const bool isBare = time_->first.bare || time_->second.bare;
  return std::string("no frame was captured in that time") +
         (isBare ? "; a number without a unit is microseconds since 1970, +10s counts from frame 0"
                 : "");
}

std::vector<unsigned int> FrameSelection::find(const Recording& recording) const {
  const FrameSpans ranges = rangesOf(recording);
  if (!condition_) return find(recording, nullptr, ranges);
  auto condition = condition_->take();
  condition->begin(recording);
  std::vector<unsigned int> selected = find(recording, condition.get(), ranges);
  const std::string lack = selected.empty() ? condition->lack() : "";
  condition_->giveBack(std::move(condition));
  if (lack.empty()) return selected;
  throw Failure(recording.path(), "--where: " + lack, VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

std::vector<unsigned int> FrameSelection::find(const Recording& recording,
                                               const FrameSpans& among) const {
  if (!condition_) return find(recording, nullptr, among);
  auto condition = condition_->take();
  condition->begin(recording);
  std::vector<unsigned int> selected = find(recording, condition.get(), among);
  condition_->giveBack(std::move(condition));
  return selected;
}

FrameSpans FrameSelection::rangesOf(const Recording& recording) const {
  if (!ranges_) return {{0, recording.framesCount()}};
  const auto found = ranges_->find(recording.path());
  return found == ranges_->end() ? FrameSpans() : found->second;
}

std::vector<unsigned int> FrameSelection::find(const Recording& recording,
                                               FrameCondition* condition,
                                               const FrameSpans& among) const {
  const unsigned int count = recording.framesCount();
  FramePicker picker(*this, time_ && count > 0 ? recording.sensorTime(0) : 0, condition);
  picker.checkRange(recording.path(), count);
  std::vector<unsigned int> selected;
  const std::uint64_t begin = range_ ? range_->first : 0;
  for (const FrameSpan& range : among) {
    const auto first =
        static_cast<unsigned int>(std::min<std::uint64_t>(std::max(begin, range.first), count));
    // Capture times need not ascend, so every frame is asked.
    for (unsigned int index = first;
         index < std::min<std::uint64_t>(range.behind, count) && !picker.isOver(index); ++index) {
      if (picker.picks(index, needsTimes() ? recording.sensorTime(index) : 0)) {
        selected.push_back(index);
      }
    }
  }
  return selected;
}

std::vector<unsigned int> FrameSelection::frames(const Recording& recording) const {
  std::vector<unsigned int> selected = find(recording);
  if (!selected.empty()) return selected;
  throw Failure(recording.path(), emptyWords(), VELMAR_ERROR_CODE_OUT_RANGE_E);
}

FramePicker::FramePicker(const FrameSelection& selection, std::uint64_t start,
                         FrameCondition* condition)
    : selection_(selection), condition_(condition) {
  if (selection.time_) std::tie(begin_, end_) = selection.timeSpan(start);
}

bool FramePicker::picks(std::uint64_t number, std::uint64_t time) {
  const auto& range = selection_.range_;
  if (range && (number < range->first || number >= range->second)) return false;
  if (selection_.time_ && (time < begin_ || time >= end_)) return false;
  if (condition_ != nullptr && !condition_->holds(static_cast<unsigned int>(number))) return false;
  if (matching_++ == 0) first_ = time;
  return selection_.interval_ ? isDue(time) : (matching_ - 1) % selection_.every_ == 0;
}

// Whether it is the first frame of its interval. Intervals are counted from the first frame, so
// that they do not drift by what frames come late.
bool FramePicker::isDue(std::uint64_t time) {
  const std::int64_t length = *selection_.interval_;
  const auto elapsed = static_cast<std::int64_t>(time - first_);
  // Rounded down, for a clock that was set back.
  const std::int64_t interval = elapsed / length - (elapsed % length < 0 ? 1 : 0);
  if (matching_ > 1 && interval == lastInterval_) return false;
  lastInterval_ = interval;
  return true;
}

bool FramePicker::isOver(std::uint64_t number) const {
  return selection_.range_ && number >= selection_.range_->second;
}

void FramePicker::checkRange(const std::string& file, std::uint64_t count) const {
  if (!selection_.range_ || selection_.range_->second <= count) return;
  throw Failure(file, "--range goes beyond its " + std::to_string(count) + " frames",
                VELMAR_ERROR_CODE_OUT_RANGE_E);
}

void FramePicker::check(const std::string& file, std::uint64_t count) const {
  checkRange(file, count);
  if (matching_ == 0) throw Failure(file, selection_.emptyWords(), VELMAR_ERROR_CODE_OUT_RANGE_E);
}

}  // namespace velmar::toolkit
