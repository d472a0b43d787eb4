#include "toolkit/recording/FrameSelection.h"

#include <algorithm>

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
  FramePicker picker(*this, time_ && count > 0 ? recording.sensorTime(0) : 0);
  std::vector<unsigned int> selected;
  const unsigned int first =
      range_ ? static_cast<unsigned int>(std::min<std::uint64_t>(range_->first, count)) : 0;
  // Capture times need not ascend, so every frame is asked.
  for (unsigned int index = first; index < count && !picker.isOver(index); ++index) {
    if (picker.picks(index, time_ ? recording.sensorTime(index) : 0)) selected.push_back(index);
  }
  picker.check(recording.path(), count);
  return selected;
}

FramePicker::FramePicker(const FrameSelection& selection, std::uint64_t start)
    : selection_(selection) {
  if (!selection.time_) return;
  const auto absolute = [start](FrameSelection::TimePoint point) {
    return point.relative ? start + point.micros : point.micros;
  };
  begin_ = absolute(selection.time_->first);
  end_ = absolute(selection.time_->second);
}

bool FramePicker::picks(std::uint64_t number, std::uint64_t time) {
  const auto& range = selection_.range_;
  if (range && (number < range->first || number >= range->second)) return false;
  if (selection_.time_ && (time < begin_ || time >= end_)) return false;
  return matching_++ % selection_.every_ == 0;
}

bool FramePicker::isOver(std::uint64_t number) const {
  return selection_.range_ && number >= selection_.range_->second;
}

void FramePicker::check(const std::string& file, std::uint64_t count) const {
  if (selection_.range_ && selection_.range_->second > count) {
    throw Failure(file, "--range goes beyond its " + std::to_string(count) + " frames",
                  VELMAR_ERROR_CODE_OUT_RANGE_E);
  }
  if (matching_ > 0) return;
  throw Failure(file, selection_.time_ ? "no frame was captured in that time" : "it holds no frame",
                VELMAR_ERROR_CODE_OUT_RANGE_E);
}

}  // namespace velmar::toolkit
