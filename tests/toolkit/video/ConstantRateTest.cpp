#include <gtest/gtest.h>

#include <cmath>

#include "toolkit/video/ExportVideo.h"

using namespace velmar::toolkit;

namespace {

using Times = std::vector<std::uint64_t>;

// `count` frames from the `first` on, each at the microsecond nearest to its time.
Times evenTimes(double frames, double seconds, int first, int count) {
  Times times;
  for (int i = first; i < first + count; ++i) {
    times.push_back(1'700'000'000'000'000 + std::llround(i * 1e6L * seconds / frames));
  }
  return times;
}

TEST(ConstantRate, IsFoundBehindRoundedTimes) {
  struct {
    FrameRate rate;
    int first;
  } const cases[] = {{{30, 1}, 0},    {{30, 1}, 7},         {{30000, 1001}, 5}, {{24000, 1001}, 1},
                     {{25, 1}, 0},    {{1, 1}, 0},          {{10, 3}, 2},       {{60000, 1001}, 0},
                     {{240, 1}, 100}, {{1000000, 41667}, 3}};
  for (const auto& [rate, first] : cases) {
    SCOPED_TRACE(std::to_string(rate.frames) + "/" + std::to_string(rate.seconds));
    const auto found = constantRate(evenTimes(rate.frames, rate.seconds, first, 5000), 1);
    ASSERT_TRUE(found);
    EXPECT_EQ(static_cast<double>(found->frames) / found->seconds,
              static_cast<double>(rate.frames) / rate.seconds);
  }
}

TEST(ConstantRate, IsNotFoundWhereOneFrameIsOff) {
  Times times = evenTimes(30, 1, 0, 300);
  times[150] += 2;
  EXPECT_FALSE(constantRate(times, 1));
  EXPECT_TRUE(constantRate(times, 1000));
  times[150] += 33333;  // one frame is missing
  EXPECT_FALSE(constantRate(times, 1000));
}

TEST(ConstantRate, AverageIsAFraction) {
  EXPECT_EQ(averageRate({5, 5}).frames, 25);  // no time at all
  const FrameRate rate = averageRate({0, 7'000'001, 3'000'000'000'001});
  EXPECT_NEAR(static_cast<double>(rate.frames) / rate.seconds, 2e6 / 3'000'000'000'001, 1e-9);
}

}  // namespace
