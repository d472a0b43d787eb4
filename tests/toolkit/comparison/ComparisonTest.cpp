#include "toolkit/comparison/Comparison.h"

#include <gtest/gtest.h>

#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "toolkit/TestJob.h"
#include "toolkit/text/JsonText.h"

using namespace velmar::toolkit;

namespace {

constexpr unsigned int kFrames = 6;
constexpr std::uint64_t kStart = 1700000000000000;

// What a recording is made of.
struct Drive {
  RecordingDescription description;
  std::vector<std::string> frames;
  std::vector<FrameTimes> times;
  std::vector<FrameTag> tags;
};

Drive plainDrive() {
  Drive drive;
  drive.description.setSize({32, 16});
  drive.description.startTime = kStart;
  drive.description.deviceId = "\x0a\xff";
  for (unsigned int i = 0; i < kFrames; ++i) {
    drive.frames.push_back(numberedJpeg(i));
    const std::uint64_t time = kStart + std::uint64_t{33000} * i;
    drive.times.push_back({time, time});
    drive.tags.emplace_back().x = static_cast<int>(i);
  }
  return drive;
}

void record(const std::string& path, const Drive& drive) {
  RecordingWriter writer(path, drive.description, kFrames,
                         RecordingWriter::OnFailure::RemoveFrames);
  for (unsigned int i = 0; i < drive.frames.size(); ++i) {
    writer.add(drive.frames[i], drive.times[i], drive.tags[i]);
  }
  writer.finish();
}

// "name[first-last]: a -> b", in order.
std::vector<std::string> differences(const std::string& a, const std::string& b) {
  TestJob job;
  const Comparison found = compareRecordings(Recording(a), Recording(b), job);
  std::vector<std::string> lines;
  for (const HeaderDifference& each : found.header) {
    lines.push_back(each.name + ": " + toJsonText(each.a) + " -> " + toJsonText(each.b));
  }
  for (const FrameDifference& each : found.frameDifferences) {
    lines.push_back(each.name + "[" + std::to_string(each.frames.a.first) + "-" +
                    std::to_string(each.frames.a.end() - 1) + "]: " + toJsonText(each.a) + " -> " +
                    toJsonText(each.b));
  }
  EXPECT_EQ(found.isSame(), lines.empty());
  return lines;
}

TEST(Comparison, TellsWhatDiffersAndNothingElse) {
  using Lines = std::vector<std::string>;
  const struct {
    const char* a;
    version_e versionOfA;
    const char* b;
    version_e versionOfB;
    void (*change)(Drive& drive);
    Lines lines;
  } cases[] = {
      {"a.img", {}, "b.img", {}, [](Drive&) {}, {}},
      {"a.rtv", RTV_VER_04, "b.rtv", RTV_VER_04, [](Drive&) {}, {}},
      // What only one of two containers or versions can hold is no difference.
      {"a.img", {}, "b.rtv", RTV_VER_04, [](Drive&) {}, {}},
      {"a.rtv",
       RTV_VER_02,
       "b.img",
       {},
       [](Drive& drive) {
         drive.times[3].sensor += 999;  // an rtv would cut that off
         drive.times[4].arrived += 5000;
         drive.description.cameraParams = "[1]";
         drive.description.undistorted = true;
       },
       {}},
      {"a.rtv",
       RTV_VER_02,
       "b.rtv",
       RTV_VER_04,
       [](Drive& drive) {
         drive.tags[2].z = 7;
         drive.tags[3].can.vehicle_speed = 5;
         drive.description.alt = 51900;
         drive.description.undistorted = true;
         drive.description.taggingFlags = 1;
       },
       {}},
      {"a.rtv",
       RTV_VER_03,
       "b.img",
       {},
       [](Drive& drive) { drive.times[3].sensor += 1000; },
       {"sensor_time_us[3-3]: 1700000000099000 -> 1700000000100000"}},
      {"a.img",
       {},
       "b.img",
       {},
       [](Drive& drive) {
         for (unsigned int i : {1, 2, 4}) ++drive.times[i].sensor;
         drive.times[5].arrived = 7;
       },
       {"sensor_time_us[1-2]: 1700000000033000 -> 1700000000033001",
        "sensor_time_us[4-4]: 1700000000132000 -> 1700000000132001",
        "arrived_time_us[5-5]: 1700000000165000 -> 7"}},
      {"a.img",
       {},
       "b.img",
       {},
       [](Drive& drive) {
         drive.description.setSize({96, 64});
         drive.description.format = VELMAR_FORMAT_RGB_E;
         drive.description.undistorted = true;
         drive.description.deviceId += '\0';
         drive.description.cameraParams = "[1]";
         drive.description.extendedInfo = "[2]";
       },
       {"width: 32 -> 96", "height: 16 -> 64", "frame_format: \"BGR\" -> \"RGB\"",
        "undistorted: false -> true", "device_id: \"0aff\" -> \"0aff00\"",
        "camera_params: {} -> [1]", "extended_info: {} -> [2]"}},
      // An rtv pads the id with zeros.
      {"a.rtv",
       RTV_VER_03,
       "b.img",
       {},
       [](Drive& drive) { drive.description.deviceId += '\0'; },
       {}},
      {"a.rtv",
       RTV_VER_04,
       "b.rtv",
       RTV_VER_04,
       [](Drive& drive) {
         drive.description.lat = 1 << 29;
         drive.description.alt = 150;
         drive.description.taggingFlags = 1;
         drive.tags[1].y = drive.tags[2].y = -25;
         drive.tags[5].relativeDistance = drive.tags[5].speed = 150;
         drive.tags[5].direction = 359;
         drive.tags[0].can.vehicle_speed = 0.1F;
         drive.tags[0].can.brake_active = 1;
       },
       {R"(start_position: "0.000000000,0.000000000,0.00" -> "0.000000000,45.000000000,1.50")",
        "tagging_flags: 0 -> 1", "y_m[1-2]: 0.0 -> -0.25", "distance_m[5-5]: 0.0 -> 1.5",
        "speed_m_s[5-5]: 0.0 -> 1.5", "direction[5-5]: 0.0 -> 359.0",
        "vehicle_speed[0-0]: null -> 0.10000000000000001", "brake_active[0-0]: null -> 1.0"}},
      {"a.img",
       {},
       "b.rtv",
       RTV_VER_04,
       [](Drive& drive) {
         drive.frames[2] = numberedJpeg(100);
         drive.frames[3] = "no picture";
       },
       {"picture[2-3]: null -> null"}},
      {"a.img",
       {},
       "b.img",
       {},
       [](Drive& drive) {
         drive.frames.erase(drive.frames.begin() + 2);
         drive.times.erase(drive.times.begin() + 2);
         drive.times[4].arrived = 7;
       },
       {"frames_count: 6 -> 5", "arrived_time_us[5-5]: 1700000000165000 -> 7"}},
  };
  const TempFolder folder;
  for (const auto& one : cases) {
    Drive drive = plainDrive();
    drive.description.version = one.versionOfA;
    record(folder / one.a, drive);
    drive.description.version = one.versionOfB;
    one.change(drive);
    record(folder / one.b, drive);
    EXPECT_EQ(differences(folder / one.a, folder / one.b), one.lines) << &one - cases;
  }
}

TEST(Comparison, NamesFramesThatCannotBeRead) {
  const TempFolder folder;
  record(folder / "a.img", plainDrive());
  std::string damaged = readFile(folder / "a.img");
  const auto recordOf = [](unsigned int frame) { return 8 + 28 * frame; };
  damaged[recordOf(2) + 24] = 1;  // the size
  damaged.replace(recordOf(4) + 16, 12, damaged, recordOf(1) + 16, 12);
  damaged[recordOf(4) + 7] ^= 1;
  writeFile(folder / "b.img", damaged);
  TestJob job;
  const Comparison found =
      compareRecordings(Recording(folder / "a.img"), Recording(folder / "b.img"), job);
  EXPECT_FALSE(found.isSame());
  EXPECT_TRUE(found.unreadOfA.empty());
  ASSERT_EQ(found.unreadOfB.size(), 2U);
  EXPECT_EQ(found.unreadOfB[0].frame, 2U);
  EXPECT_EQ(found.unreadOfB[1].text, "its bytes are those of other frames");
  ASSERT_EQ(found.frameDifferences.size(), 1U);  // their times are compared all the same
  EXPECT_EQ(found.frameDifferences[0].name, "sensor_time_us");
  EXPECT_EQ(found.frameDifferences[0].frames.a.first, 4U);
  TestJob stopped(5);
  const Recording a(folder / "a.img");
  EXPECT_FALSE(compareRecordings(a, a, stopped).isWhole);
  EXPECT_EQ(stopped.lines, std::vector<std::string>{"a.img 5 of 12"});
}

}  // namespace
