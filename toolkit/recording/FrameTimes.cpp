#include "toolkit/recording/FrameTimes.h"

#include <cmath>

#include "toolkit/base/Failure.h"

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
