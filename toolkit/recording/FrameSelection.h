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

/// Which frames of a recording a command works on: all, or those of a range or a time.
class FrameSelection {
 public:
  /// "A:B", frame numbers from 0, B not included. Throws UsageError.
  void setRange(std::string_view text);
  /// "A:B", capture times, B not included; each is microseconds, RFC 3339 or an offset such as
  /// "+1.5s" from frame 0. Throws UsageError.
  void setTime(std::string_view text);

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
};

}  // namespace velmar::toolkit

#endif
