/// When frames were captured and when they arrived.
#ifndef VELMAR_TOOLKIT_FRAME_TIMES_H
#define VELMAR_TOOLKIT_FRAME_TIMES_H

#include <cstdint>
#include <string_view>

namespace velmar::toolkit {

constexpr std::uint64_t kMillisecond = 1000;  ///< in microseconds

/// Microseconds since 1970-01-01 00:00:00 UTC.
struct FrameTimes {
  std::uint64_t sensor;
  std::uint64_t arrived;
};

/// Frames a second, a number or a fraction such as "30000/1001". Throws UsageError.
double parseFrameRate(std::string_view text);

/// Gives frames that come at an even rate their capture times.
class FrameClock {
 public:
  /// \param framesPerSecond  0.001 to 1000000; throws UsageError otherwise
  FrameClock(std::uint64_t start, double framesPerSecond);

  std::uint64_t at(std::uint64_t frame) const;

 private:
  std::uint64_t start_;
  double framesPerSecond_;
};

}  // namespace velmar::toolkit

#endif
