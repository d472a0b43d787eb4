#ifndef VELMAR_TOOLKIT_FRAME_SELECTION_H
#define VELMAR_TOOLKIT_FRAME_SELECTION_H

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/frames/FrameCondition.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

class FramePicker;

/// Neighbouring frames.
struct FrameSpan {
  std::uint64_t first;
  std::uint64_t behind;  ///< the last

  bool operator==(const FrameSpan&) const = default;
};

/// Of one recording, in order and apart from each other.
using FrameSpans = std::vector<FrameSpan>;
/// The same of many, by their paths.
using SpansOfFiles = std::map<std::string, FrameSpans>;

/// Puts them in order, and joins those that touch.
void sortRanges(FrameSpans& ranges);

/// Which frames a command works on: all, or those of a range, a time or a condition, and of these
/// perhaps only every N-th, or the first in each interval. Once it is set, several threads may use
/// it.
class FrameSelection {
 public:
  /// "A:B", frame numbers from 0, B not included. Throws UsageError.
  void setRange(std::string_view text);
  /// "A:B", capture times, B not included; each is RFC 3339, a day, microseconds, or a duration
  /// such as "+1.5s" from frame 0. Throws UsageError.
  void setTime(std::string_view text);
  /// "N": of the others the first and each N-th after it. Or a duration such as "1s": the first,
  /// and then the first in each further second. Throws UsageError.
  void setEvery(std::string_view text);
  /// Copies of the selection share it. Throws what `make` throws.
  void setCondition(const SharedCondition::Make& make);

  /// Of each recording only these; of others none.
  void setRanges(std::shared_ptr<const SpansOfFiles> ranges) { ranges_ = std::move(ranges); }

  bool isAll() const {
    return !range_ && !time_ && !condition_ && !interval_ && !ranges_ && every_ == 1;
  }
  bool hasCondition() const { return condition_ != nullptr; }
  bool hasTime() const { return time_.has_value(); }
  /// The capture times that it takes of a recording that starts then: from the first to before the
  /// second.
  std::pair<std::uint64_t, std::uint64_t> timeSpan(std::uint64_t start) const;
  /// The same if it is so for all recordings.
  std::optional<std::pair<std::uint64_t, std::uint64_t>> fixedTimeSpan() const;
  /// The selected frames, in order, at least one. Throws Failure.
  std::vector<unsigned int> frames(const Recording& recording) const;
  /// The same, but perhaps none. Throws Failure if the recording does not have the range, or
  /// nothing of what the condition is about.
  std::vector<unsigned int> find(const Recording& recording) const;
  /// The same among these frames. That there is nothing of what the condition is about is no
  /// failure.
  std::vector<unsigned int> find(const Recording& recording, const FrameSpans& among) const;
  /// Why it selects nothing of what it could.
  std::string emptyWords() const;

 private:
  struct TimePoint {
    std::uint64_t micros;
    bool relative;
    bool bare;  ///< it was a number without a unit
  };
  static std::optional<TimePoint> parsePoint(std::string_view text);
  FrameSpans rangesOf(const Recording& recording) const;
  std::vector<unsigned int> find(const Recording& recording, FrameCondition* condition,
                                 const FrameSpans& among) const;
  bool needsTimes() const { return time_ || interval_; }

  std::optional<std::pair<std::uint64_t, std::uint64_t>> range_;
  std::optional<std::pair<TimePoint, TimePoint>> time_;
  std::shared_ptr<SharedCondition> condition_;
  std::shared_ptr<const SpansOfFiles> ranges_;
  unsigned int every_ = 1;
  std::optional<std::int64_t> interval_;  ///< microseconds

  friend class FramePicker;
  friend class FollowedFrames;
};

/// Selects from frames that come one after the other and whose number nobody knows yet.
class FramePicker {
 public:
  /// Both must outlive it.
  /// \param start      capture time of frame 0
  /// \param condition  the selection's, if it has one; it has begun
  FramePicker(const FrameSelection& selection, std::uint64_t start,
              FrameCondition* condition = nullptr);

  /// Each frame is asked for once, in order.
  bool picks(std::uint64_t number, std::uint64_t time);
  /// Whether neither this frame nor a later one is selected.
  bool isOver(std::uint64_t number) const;
  /// Throws Failure, which names `file`, if the selection goes beyond so many frames.
  void checkRange(const std::string& file, std::uint64_t count) const;
  bool hasPicked() const { return matching_ > 0; }
  /// The same, also if none was selected.
  void check(const std::string& file, std::uint64_t count) const;

 private:
  bool isDue(std::uint64_t time);

  const FrameSelection& selection_;
  FrameCondition* condition_;
  std::uint64_t begin_ = 0;  // microseconds
  std::uint64_t end_ = 0;
  std::uint64_t matching_ = 0;  // frames of the range, the time and the condition so far
  std::uint64_t first_ = 0;     // capture time of the first of them
  std::int64_t lastInterval_ = -1;
};

}  // namespace velmar::toolkit

#endif
