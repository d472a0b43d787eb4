#include "toolkit/recording/FrameSelection.h"

#include <numeric>

#include "toolkit/base/Failure.h"
#include "toolkit/text/TimeText.h"

namespace velmar::toolkit {

void FrameSelection::setRange(std::string_view text) {
  const std::size_t colon = text.find(':');
  const auto begin = parseNumber(text.substr(0, colon));
  const auto end = colon == text.npos ? std::nullopt : parseNumber(text.substr(colon + 1));
  if (!begin || !end) throw UsageError("--range is A:B with two frame numbers");
  if (*begin >= *end) throw UsageError("--range " + std::string(text) + " holds no frame");
  range_.emplace(*begin, *end);
}

std::optional<FrameSelection::TimePoint> FrameSelection::parsePoint(std::string_view text) {
  if (const auto offset = parseOffset(text)) return TimePoint{*offset, true};
  if (const auto time = parseTime(text)) return TimePoint{*time, false};
  return std::nullopt;
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
  throw UsageError("--time is A:B, each microseconds, RFC 3339 or +SECONDSs");
}

std::vector<unsigned int> FrameSelection::frames(const Recording& recording) const {
  const unsigned int count = recording.framesCount();
  std::pair<std::uint64_t, std::uint64_t> range = range_.value_or(std::pair(0, count));
  if (range.second > count) {
    throw Failure(recording.path(), "--range goes beyond its " + std::to_string(count) + " frames",
                  VELMAR_ERROR_CODE_OUT_RANGE_E);
  }
  std::vector<unsigned int> selected(range.second - range.first);
  std::iota(selected.begin(), selected.end(), static_cast<unsigned int>(range.first));
  if (time_ && count > 0) {
    const std::uint64_t start = recording.sensorTime(0);
    const auto absolute = [start](TimePoint point) {
      return point.relative ? start + point.micros : point.micros;
    };
    // Capture times need not ascend, so every frame is asked.
    std::erase_if(selected, [&, begin = absolute(time_->first),
                             end = absolute(time_->second)](unsigned int index) {
      const std::uint64_t time = recording.sensorTime(index);
      return time < begin || time >= end;
    });
  }
  if (selected.empty()) {
    throw Failure(recording.path(),
                  time_ ? "no frame was captured in that time" : "it holds no frame",
                  VELMAR_ERROR_CODE_OUT_RANGE_E);
  }
  return selected;
}

}  // namespace velmar::toolkit
