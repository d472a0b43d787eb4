#ifndef VELMAR_TOOLKIT_FRAME_SELECTION_H
#define VELMAR_TOOLKIT_FRAME_SELECTION_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// Which frames a command works on: all, or those of a range or a time, and of these perhaps only
/// every so manieth.
class FrameSelection {
 public:
  /// "A:B", frame numbers from 0, B not included. Throws UsageError.
  void setRange(std::string_view text);
  /// "A:B", capture times, B not included; each is microseconds, RFC 3339 or an offset such as
  /// "+1.5s" from frame 0. Throws UsageError.
  void setTime(std::string_view text);
  /// Of the others the first and each `step`-th after it.
  void setEvery(unsigned int step) { every_ = step; }

  bool isAll() const { return !range_ && !time_ && every_ == 1; }
  /// The selected frames, in order, at least one. Throws Failure.
  std::vector<unsigned int> frames(const Recording& recording) const;

 private:
  struct TimePoint {
    std::uint64_t micros;
    bool relative;
  };
  static std::optional<TimePoint> parsePoint(std::string_view text);

  std::optional<std::pair<std::uint64_t, std::uint64_t>> range_;
  std::optional<std::pair<TimePoint, TimePoint>> time_;
  unsigned int every_ = 1;

  friend class FramePicker;
};

/// Selects from frames that come one after the other and whose number nobody knows yet.
class FramePicker {
 public:
  /// The selection must outlive it.
  /// \param start  capture time of frame 0
  FramePicker(const FrameSelection& selection, std::uint64_t start);

  /// Each frame is asked for once, in order.
  bool picks(std::uint64_t number, std::uint64_t time);
  /// Whether neither this frame nor a later one is selected.
  bool isOver(std::uint64_t number) const;
  /// Throws Failure, which names `file`, if the selection goes beyond so many frames, or if none
  /// was selected.
  void check(const std::string& file, std::uint64_t count) const;

 private:
  const FrameSelection& selection_;
  std::uint64_t begin_ = 0;  // microseconds
  std::uint64_t end_ = 0;
  std::uint64_t matching_ = 0;  // frames of the range and the time so far
};

}  // namespace velmar::toolkit

#endif
