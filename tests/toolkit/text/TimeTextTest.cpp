#include "toolkit/text/TimeText.h"

#include <gtest/gtest.h>

#include <cmath>

#include "toolkit/base/Failure.h"
#include "toolkit/recording/FrameTimes.h"

using namespace velmar::toolkit;

namespace {

constexpr std::uint64_t kNoon = 1700000000000000;  // 2023-11-14T22:13:20Z
constexpr auto kNone = std::nullopt;

TEST(TimeText, ParsesMicrosecondsAndRfc3339) {
  const struct {
    const char* text;
    std::optional<std::uint64_t> time;
  } cases[] = {
      {"0", 0},
      {"1700000000000000", kNoon},
      {"18446744073709551615", UINT64_MAX},
      {"18446744073709551616", kNone},
      {"2023-11-14T22:13:20Z", kNoon},
      {"2023-11-14 22:13:20z", kNoon},
      {"2023-11-14T22:13:20.5Z", kNoon + 500000},
      {"2023-11-14T22:13:20.0000019Z", kNoon + 1},
      {"2023-11-14T23:43:20+01:30", kNoon},
      {"2023-11-14T21:13:20-01:00", kNoon},
      {"1970-01-01T00:00:00Z", 0},
      {"1970-01-01T00:30:00+01:00", kNone},
      {"2024-02-29T00:00:00Z", 1709164800000000},
      {"2023-02-29T00:00:00Z", kNone},
      {"2016-12-31T23:59:60Z", 1483228800000000},
      {"2023-11-14T24:00:00Z", kNone},
      {"2023-11-14T22:60:20Z", kNone},
      {"2023-11-14T22:13:61Z", kNone},
      {"2023-11-14T22:13:20", kNone},
      {"2023-11-14T22:13:20.Z", kNone},
      {"2023-11-14T22:13:20+0100", kNone},
      {"2023-11-14T22:13:20Z ", kNone},
      {"-1", kNone},
      {"+1", kNone},
      {"1.5", kNone},
      {"", kNone},
  };
  for (const auto& [text, time] : cases) EXPECT_EQ(parseTime(text), time) << text;
}

TEST(TimeText, ParsesOffsets) {
  const struct {
    const char* text;
    std::optional<std::uint64_t> micros;
  } cases[] = {
      {"+0s", 0},
      {"+1.5s", 1500000},
      {"+12.000001s", 12000001},
      {"+3600s", 3600000000},
      {"1.5s", kNone},
      {"+1.5", kNone},
      {"+s", kNone},
      {"+.5s", kNone},
      {"+1.s", kNone},
      {"+-1s", kNone},
      {"+1e3s", kNone},
      {"+99999999999999999s", kNone},
  };
  for (const auto& [text, micros] : cases) EXPECT_EQ(parseOffset(text), micros) << text;
}

TEST(TimeText, FormatsAsItParses) {
  EXPECT_EQ(formatTime(kNoon + 7), "2023-11-14T22:13:20.000007Z");
  EXPECT_EQ(formatTime(kLastFormattedTime), "9999-12-31T23:59:59.999999Z");
  EXPECT_EQ(formatTime(kLastFormattedTime + 1), "253402300800000000us");
  for (const std::uint64_t time : {std::uint64_t{0}, kNoon + 123456, kLastFormattedTime}) {
    EXPECT_EQ(parseTime(formatTime(time)), time);
  }
}

TEST(FrameClock, RoundsEachTimeByItself) {
  const FrameClock clock(1000, 30);
  EXPECT_EQ(clock.at(0), 1000U);
  EXPECT_EQ(clock.at(1), 1000U + 33333);
  EXPECT_EQ(clock.at(2), 1000U + 66667);
  EXPECT_EQ(clock.at(3000000), 1000U + 100000000000);
  EXPECT_EQ(FrameClock(0, 29.97).at(2997), 100000000U);
  EXPECT_EQ(FrameClock(0, parseFrameRate("30000/1001")).at(30000000), 1001000000000U);
  for (const char* wrong : {"", "x", "30/", "/1", "30/1/1", "30 "}) {
    EXPECT_THROW(parseFrameRate(wrong), UsageError) << wrong;
  }
  for (const double wrong : {0.0, -1.0, 1e7, 1e-4, double(INFINITY), double(NAN)}) {
    EXPECT_THROW(FrameClock(0, wrong), UsageError) << wrong;
  }
}

}  // namespace
