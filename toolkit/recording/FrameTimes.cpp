#include "toolkit/recording/FrameTimes.h"

#include <cmath>
#include <optional>

#include "toolkit/base/Failure.h"
#include "toolkit/text/NumberText.h"

namespace velmar::toolkit {

double parseFrameRate(std::string_view text) {
  const std::size_t slash = text.find('/');
  const auto frames = numberOf<double>(text.substr(0, slash));
  const auto seconds =
      slash == text.npos ? std::optional(1.0) : numberOf<double>(text.substr(slash + 1));
  if (frames && seconds) return *frames / *seconds;
  throw UsageError("--fps is a number of frames a second, such as 25 or 30000/1001");
}

FrameClock::FrameClock(std::uint64_t start, double framesPerSecond)
    : start_(start), framesPerSecond_(framesPerSecond) {
  if (!(framesPerSecond >= 0.001 && framesPerSecond <= 1e6)) {
    throw UsageError("--fps goes from 0.001 to 1000000");
  }
}

std::uint64_t FrameClock::at(std::uint64_t frame) const {
  // long double holds every product exactly, so that only the division rounds.
  const long double elapsed = static_cast<long double>(frame) * 1000000 / framesPerSecond_;
  return start_ + static_cast<std::uint64_t>(std::round(elapsed));
}

}  // namespace velmar::toolkit
