#include "toolkit/logs/DriveLog.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/TestSupport.h"
#include "toolkit/TestJob.h"
#include "toolkit/base/Failure.h"

using namespace velmar::toolkit;

namespace {

constexpr std::uint64_t kStart = 1700000000000000;  // 2023-11-14T22:13:20Z

class DriveLogTest : public testing::Test {
 protected:
  DriveLogTest() {
    ::setenv("TZ", "CET-1", 1);
    description_.version = RTV_VER_04;
  }
  ~DriveLogTest() override { ::unsetenv("TZ"); }

  void add(const std::string& name, const std::string& text) {
    writeFile(folder_ / name, text);
    request_.files.push_back(folder_ / name);
  }

  // The tags of frames at those milliseconds from the start.
  std::vector<FrameTag> read(const std::vector<std::uint64_t>& milliseconds) {
    std::vector<std::uint64_t> times;
    for (const std::uint64_t time : milliseconds) times.push_back(kStart + 1000 * time);
    std::vector<FrameTag> tags(times.size());
    DriveLog(request_, description_).fillAll(tags, times, "out.rtv", job_);
    return tags;
  }

  const TempFolder folder_;
  LogRequest request_;
  RecordingDescription description_;
  TestJob job_;
};

// A degree on the equator: 6378137 m * pi / 180 = 111319.491 m to the east and, since the meridian
// is 6335439.327 m * pi / 180, 110574.276 m to the north.
TEST_F(DriveLogTest, GivesTenFramesWhatWasCalculatedByHand) {
  add("log.csv",
      "\xEF\xBB\xBFZeit;Latitude;lng;Altitude;SPEED_KMH;Heading;\"SWA;1\";X\r\n"
      "14.11.2023 23:13:20,000;0,0000;45,0000;100,0;36,0;359;1,5;7\r\n"
      "14.11.2023 23:13:21,000;0,0001;45,0002;101,0;72,0;1;NaN;7\r\n"
      "14.11.2023 23:13:22,000;0,0001;45,0002;99,0;54,0;91;-3;7\r\n");
  request_.mappings = {parseLogMapping("time=Zeit:%d.%m.%Y %H:%M:%S"),
                       parseLogMapping("steering_wheel_angle=SWA;1:deg")};
  request_.offset = 500000;
  request_.maxAge = 600000;
  const struct {
    std::uint64_t milliseconds;
    int x, y, z;
    unsigned short speed, direction;
    float angle;  // 0 if there is none
  } frames[] = {
      {0, 0, 0, 0, 0, 0, 0},
      {500, 0, 0, 0, 1000, 359, 1.5},
      {750, 557, 276, 25, 1250, 0, 1.5},
      {1000, 1113, 553, 50, 1500, 0, 1.5},
      {1250, 1670, 829, 75, 1750, 1, 0},
      {1500, 2226, 1106, 100, 2000, 1, 0},
      {2000, 2226, 1106, 0, 1750, 46, 0},
      {2250, 2226, 1106, -50, 1625, 69, 0},
      {2500, 2226, 1106, -100, 1500, 91, -3},
      {2501, 0, 0, 0, 0, 0, 0},
  };
  std::vector<std::uint64_t> times;
  for (const auto& frame : frames) times.push_back(frame.milliseconds);
  const std::vector<FrameTag> tags = read(times);
  for (std::size_t i = 0; i < tags.size(); ++i) {
    SCOPED_TRACE(frames[i].milliseconds);
    EXPECT_EQ(tags[i].x, frames[i].x);
    EXPECT_EQ(tags[i].y, frames[i].y);
    EXPECT_EQ(tags[i].z, frames[i].z);
    EXPECT_EQ(tags[i].speed, frames[i].speed);
    EXPECT_EQ(tags[i].direction, frames[i].direction);
    EXPECT_EQ(tags[i].hasCan(), frames[i].angle != 0);
    if (frames[i].angle == 0) continue;
    EXPECT_EQ(tags[i].can.steering_wheel_steering_angle, frames[i].angle);
  }
  EXPECT_EQ(description_.lng, 1 << 29);  // 45 degrees
  EXPECT_EQ(description_.lat, 0);
  EXPECT_EQ(description_.alt, 10000);
  const std::vector<std::string> lines = {
      "log.csv time from Zeit (%d.%m.%Y %H:%M:%S), steering_wheel_steering_angle from SWA;1 (deg), "
      "lat from Latitude (deg), lng from lng (deg), alt from Altitude (m), speed from SPEED_KMH "
      "(km/h), direction from Heading (deg)",
      "log.csv columns that are not read: X (without a unit)",
      "log.csv frames without a value, of 10: x 2, y 2, z 2, steering_wheel_steering_angle 6, "
      "speed 2, direction 2"};
  EXPECT_EQ(job_.lines, lines);
}

TEST_F(DriveLogTest, ReadsOtherShapes) {
  const struct {
    const char* text;
    const char* mapping;
    unsigned short speed;
  } cases[] = {
      {"time,speed_m_s\n2023-11-14T23:13:19+01:00,3\n2023-11-14T22:13:21Z,5\n", "", 400},
      {"speed[mph]|TIME_NS\n10|1700000000000000000\n", "", 447},
      {"speed (km/h)\tts:1\n\"36,0\"\t1700000000000,0\n", "time=TS:1:ms", 1000},
      {"timestamp_s,v,speed_kmh\n1700000000,+7.5,1\n", "speed=v:m/s", 750},
      {"t,speed_mps\n1700000000,1\n1700000000,2\n", "time=t:s", 200},
      {"t,speed_mps\n2023-11-15 00:13:20.000 +0200,6\n", "time=t:%Y-%m-%d %H:%M:%S.%f %z", 600},
      {"t,speed_mps\n10:13:20 PM 2023-11-14Z,8\n", "time=t:%I:%M:%S %p %Y-%m-%dZ", 800},
      {"<gpx><trk><trkseg><trkpt lat='1' lon='2'><time>2023-11-14T22:13:20Z</time><extensions>"
       "<a:b><a:speed>9</a:speed></a:b></extensions></trkpt></trkseg></trk></gpx>",
       "", 900},
      {"<g:gpx><g:trk><g:trkseg><g:trkpt lat='1' lon='2'><g:time>2023-11-14T22:13:20Z</g:time>"
       "<g:speed>7</g:speed></g:trkpt></g:trkseg></g:trk></g:gpx>",
       "", 700},
      {"time_s,heading_rad,speed_kmh\n1700000000,6.28318531,9\n", "", 250},
  };
  for (const auto& one : cases) {
    request_ = {};
    add("log", one.text);
    if (*one.mapping != 0) request_.mappings = {parseLogMapping(one.mapping)};
    EXPECT_EQ(read({0})[0].speed, one.speed) << one.text;
  }
}

TEST_F(DriveLogTest, ReadsTracksThatAreOneLine) {
  add("a.gpx",
      "<?xml version='1.0'?><gpx><trk><trkseg><trkpt lat='0' lon='45'><time>2023-11-14T22:13:20Z"
      "</time></trkpt><trkpt lat='0.0001' lon='45.0002'><ele>7</ele><time>2023-11-14T22:13:22Z"
      "</time></trkpt></trkseg></trk></gpx>");
  const FrameTag tag = read({1000})[0];
  EXPECT_EQ(tag.x, 1113);
  EXPECT_EQ(tag.y, 553);
  EXPECT_EQ(description_.alt, 700);
}

TEST_F(DriveLogTest, TakesEachFieldFromTheLogThatHasIt) {
  add("a.csv", "time_us,x_m,abs_active\n1700000000000000,1.005,1\n1700000001000000,2,\n");
  add("b.csv", "t,distance_ft\n1700000000,100\n1700000002,100\n");
  request_.mappings = {parseLogMapping("time=t:s")};
  const auto tags = read({0, 1500});
  EXPECT_EQ(tags[0].x, 100);  // 1.005 is stored as a little less
  EXPECT_EQ(tags[0].can.abs_active, 1);
  EXPECT_EQ(tags[0].relativeDistance, 3048U);
  EXPECT_EQ(tags[1].x, 0);
  EXPECT_FALSE(tags[1].hasCan());
  EXPECT_EQ(tags[1].relativeDistance, 3048U);
  add("c.csv", "time_us,x_m\n1700000001000001,1\n1700000002000000,1\n");
  EXPECT_EQ(read({0, 1500})[1].x, 100);
  add("d.csv", "time_us,x_m\n1700000002000000,1\n");
  EXPECT_THROW(read({0, 2000}), Failure);
}

TEST_F(DriveLogTest, LeavesWhatItHasNoValueFor) {
  add("a.csv", "time_s,speed_kmh\n1700000000,36\n1700000001,36\n");
  std::vector<FrameTag> tags(2);
  for (FrameTag& tag : tags) tag.speed = tag.x = 7;
  DriveLog(request_, description_).fillAll(tags, {kStart, kStart + 1000001}, "out.rtv", job_);
  EXPECT_EQ(tags[0].speed, 1000);
  EXPECT_EQ(tags[0].x, 7);
  EXPECT_EQ(tags[1].speed, 7);
}

TEST_F(DriveLogTest, TakesNoStartFromAReceiverWithoutAFix) {
  add("a.csv", "time_s,lat,lng\n1700000000,0,0\n1700000001,0,45\n1700000002,0.0001,45\n");
  const auto tags = read({0, 1000, 2000});
  EXPECT_EQ(tags[0].x, 0);
  EXPECT_EQ(tags[1].x, 0);
  EXPECT_EQ(tags[2].y, 1106);
  EXPECT_EQ(description_.lng, 1 << 29);
  EXPECT_NE(job_.lines[0].find("; 1 rows at 0, 0"), std::string::npos);
}

TEST_F(DriveLogTest, NamesTheLineThatDoesNotFit) {
  const std::string time = "time_s,speed_kmh\n1700000000,1\n";
  const struct {
    std::string text;
    const char* mapping;
    const char* failure;
  } cases[] = {
      {time + "1700000001,2400\n", "", "line 3: speed_kmh cannot be 2400 km/h"},
      {time + "1700000001,-1\n", "", "line 3: speed_kmh cannot be -1 km/h"},
      {time + "1699999999.9,1\n", "", "line 3: the time goes backwards: 1699999999.9"},
      {time + ",1\n", "", "line 3: time_s cannot be empty; it is read as s, unless"},
      {time + "1e9,1\n", "", "line 3: time_s cannot be 1e9; it is read as s, unless"},
      {time + "1700000001,1,5\n", "",
       "line 3: it has 3 fields, the header 2; numbers with a decimal comma need"},
      {"time_s;speed_kmh\n1;1.5\n2;1,5\n", "",
       "line 3: speed_kmh is 1,5, but line 2 has the other decimal sign"},
      {"time_s;speed_kmh\n1;1.234,5\n", "", "line 2: speed_kmh cannot be 1.234,5"},
      {"time_s,lat,lng\n1700000000,90.1,0\n", "", "line 2: lat cannot be 90.1 deg"},
      {"time_s,heading\n1700000000,361\n", "", "line 2: heading cannot be 361"},
      {"time_s,lat\n1700000000,1\n", "", "line 1: it has lat, but no lng"},
      {"time,lat,lng\n1700000000,1,2\n", "", "line 2: time cannot be 1700000000; it is read"},
      {"time_s,time_ms,speed_kmh\n", "", "line 1: both columns, time_s and time_ms, are the time"},
      {"speed_kmh\n1\n", "", "line 1: no column is the time; --log-map time=COLUMN:UNIT names it"},
      {"time_s,v\n1,1\n", "", "line 1: no column with values is a field; --log-map"},
      {"time_s,v\n1,1\n", "speed=v", "line 1: --log-map speed=v: a unit is missing"},
      {"time_s,v\n1,1\n", "speed=v:kmph",
       "line 1: --log-map speed=v:kmph: kmph is no unit of a speed; did you mean km/h?"},
      {"time_s,v\n1,1\n", "yaw_rate=v:deg", "line 1: --log-map yaw_rate=v:deg: the yaw_rate is"},
      {"time_s,vel\n1,1\n", "speed=vell:m/s",
       "line 1: --log-map speed=vell:m/s: there is no column vell; did you mean vel?"},
      {"t,speed_kmh\n31.02.2023,1\n", "time=t:%d.%m.%Y", "line 2: t cannot be 31.02.2023"},
      {"time_s,speed_kmh\n1600000000,1\n", "",
       "it goes from 2020-09-13T12:26:40.000000Z to 2020-09-13T12:26:40.000000Z, the frames from "},
      {"time_s,speed_kmh\n1700000001,1\n", "", "it goes from 2023-11-14T22:13:21.000000Z"},
      {"time_s,speed_kmh\n", "", "line 1: there is no row behind the header"},
      {"", "", "line 1: it is empty"},
      {"\xFF\xFEt", "", "line 1: it is UTF-16; save it as UTF-8"},
      {"<gpx>\n<trk>", "", "line 2: it is no XML: "},
      {"<gpx/>", "", "line 1: it has no track points"},
      {"<kml/>", "", "line 1: it is XML, but no GPX"},
      {"<gpx><trk><trkseg>\n<trkpt lat='1' lon='2'/></trkseg></trk></gpx>", "",
       "line 2: time cannot be empty"},
  };
  for (const auto& one : cases) {
    request_ = {};
    add("log", one.text);
    if (*one.mapping != 0) request_.mappings = {parseLogMapping(one.mapping)};
    std::string words;
    try {
      read({0});
    } catch (const Failure& failure) {
      words = failure.words();
    }
    EXPECT_EQ(words.substr(0, std::string(one.failure).size()), one.failure) << one.text;
  }
  description_.version = RTV_VER_02;
  request_ = {};
  add("far", "time_s,lat,lng\n1700000000,1,2\n1700000001,1,2.8\n");
  EXPECT_THROW(read({0}), Failure);  // 89 km; 24 bits hold 83
  request_.mappings = {parseLogMapping("lat=lat"), parseLogMapping("lat=lng")};
  EXPECT_THROW(read({0}), Failure);
  EXPECT_THROW(parseLogMapping("spede=x"), UsageError);
  EXPECT_THROW(parseLogMapping("speed"), UsageError);
}

}  // namespace
