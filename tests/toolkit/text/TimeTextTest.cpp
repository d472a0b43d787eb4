#include "toolkit/text/TimeText.h"

#include <gtest/gtest.h>

#include <cmath>

#include "toolkit/base/Failure.h"
#include "toolkit/recording/FrameTimes.h"

using namespace velmar::toolkit;

namespace {

constexpr std::uint64_t kNoon = 1700000000000000;  // 2023-11-14T22:13:20Z

TEST(TimeText, ParsesMicrosecondsAndRfc3339) {
  const std::pair<const char*, std::uint64_t> cases[] = {
      {"0", 0},
      {"1700000000000000", kNoon},
      {"18446744073709551615", UINT64_MAX},
      {"2023-11-14T22:13:20Z", kNoon},
      {"2023-11-14 22:13:20z", kNoon},
      {"2023-11-14T22:13:20.5Z", kNoon + 500000},
      {"2023-11-14T22:13:20.0000019Z", kNoon + 1},
      {"2023-11-14T23:43:20+01:30", kNoon},
      {"2023-11-14T21:13:20-01:00", kNoon},
      {"1970-01-01T00:00:00Z", 0},
      {"2024-02-29T00:00:00Z", 1709164800000000},
      {"2016-12-31T23:59:60Z", 1483228800000000}};
  for (const auto& [text, micros] : cases) EXPECT_EQ(parseTime(text), micros) << text;
  for (const char* wrong :
       {"18446744073709551616", "1970-01-01T00:30:00+01:00", "2023-02-29T00:00:00Z",
        "2023-11-14T24:00:00Z", "2023-11-14T22:60:20Z", "2023-11-14T22:13:61Z",
        "2023-11-14T22:13:20", "2023-11-14T22:13:20.Z", "2023-11-14T22:13:20+0100",
        "2023-11-14T22:13:20Z ", "-1", "+1", "1.5", ""}) {
    EXPECT_FALSE(parseTime(wrong)) << wrong;
  }
}

TEST(TimeText, ParsesDurations) {
  const std::pair<const char*, std::int64_t> cases[] = {
      {"+0s", 0},         {"1.5s", 1500000},      {"+12.000001s", 12000001}, {"-1h", -3600000000},
      {"+100ms", 100000}, {"2min", 120000000},    {"1.5d", 129600000000},    {"7us", 7},
      {"0.5ms", 500},     {"1.0000019s", 1000001}};
  for (const auto& [text, micros] : cases) EXPECT_EQ(parseDuration(text), micros) << text;
  for (const char* wrong : {"1", "+1.5", "+s", "+.5s", "+1.s", "+-1s", "--1s", "+1e3s", "1 s", "1m",
                            "1.2.3s", "1s ", "", "+99999999999999999s", "99999999999d"}) {
    EXPECT_FALSE(parseDuration(wrong)) << wrong;
  }
}

TEST(TimeText, TakesTimesWithoutAZoneForUtc) {
  EXPECT_EQ(parseUtcTime("2023-11-14T22:13:20"), kNoon);
  EXPECT_EQ(parseUtcTime("2023-11-14 23:13:20.5+01:00"), kNoon + 500000);
  EXPECT_EQ(parseUtcTime("2023-11-14"), 1699920000000000U);
  EXPECT_EQ(parseUtcTime("17"), 17U);
  for (const char* wrong : {"", "2023-11", "2023-11-31", "22:13:20", "2023-11-14T22:13"}) {
    EXPECT_FALSE(parseUtcTime(wrong)) << wrong;
  }
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
