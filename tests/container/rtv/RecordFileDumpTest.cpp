#include <gtest/gtest.h>

#include "container/rtv/RtvFiles.h"
#include "support/TestSupport.h"
#include "velmar_video/rtv/TaggedVideoParser.h"

namespace {

// The lines that a version shows of this file, from a table of all.
std::vector<std::string> expectedLines(int version, const std::string& path) {
  std::vector<std::string> lines = {(version == 3 ? "v03 filename: " : "filename: ") + path,
                                    "magic_code: velmar.rtv"};
  if (version > 2) lines.push_back("flags: 0x00");
  lines.push_back("version: 0." + std::to_string(version));
  lines.push_back("device_id: ");
  for (int i = 0; i < 24; ++i) lines.push_back(i == 0 ? "0a" : "ff");
  lines.insert(
      lines.end(),
      {"\n", "start_time: 77",
       version == 2 ? "start_position: lng -1, lat 2" : "start_position: lng -1, lat 2, alt -3",
       "frames_count: 1", "frames_max: 5", "video_resolution: width 64, height 48",
       "frame_format: 3", "frame_codec: 2", "taggging_flags: 0x00000011\n", "frame_tag[0]: "});
  return lines;
}

TEST(RtvDump, ShowsEveryVersion) {
  const TempFolder folder;
  const std::string path = folder / "a.rtv";
  const struct {
    int version;
    std::string tag;
  } rows[] = {
      {2,
       " time_flag: -5, data_offset: 213, data_length: 3, relative_poistion: (x: -1, y: 8), "
       "relative_distance: -1, speed: 11, direction: 12"},
      {3,
       " time_flag: -5, data_offset: 252, data_length: 3, relative_poistion: (x: -1, y: 8, z: 9), "
       "relative_distance: 4294967295, speed: 11, direction: 12"},
      {4,
       " time_flag: -5, data_offset: 797, data_length: 3, relative_poistion: (x: -1, y: 8, z: 9), "
       "relative_distance: 4294967295, speed: 11, direction: 12, CAN: can_data_length: 6b, "},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.version);
    RtvFile file;
    file.version = row.version;
    file.deviceId = "\x0A" + std::string(23, '\xFF');
    file.startTime = 77;
    file.lng = -1;
    file.lat = 2;
    file.alt = -3;
    file.framesMax = 5;
    file.width = 64;
    file.height = 48;
    file.taggingFlags = 0x11;
    file.frames = {{"abc", -5, -1, 8, 9, 0xFFFFFFFF, 11, 12}};
    writeFile(path, file.bytes());
    TaggedVideoParser parser;
    ASSERT_EQ(parser.init(path.c_str()), RTV_ERR_SUCCESS);

    const LogCapture log;
    parser.dump();
    const std::string prefix = "1 RecordFile: ";
    auto lines = log.lines();
    const std::string last = lines.back();
    lines.pop_back();
    std::vector<std::string> expected;
    for (const auto& line : expectedLines(row.version, path)) expected.push_back(prefix + line);
    EXPECT_EQ(lines, expected);
    EXPECT_EQ(last.substr(0, prefix.size() + row.tag.size()), prefix + row.tag);
    if (row.version < 4) {
      EXPECT_EQ(last.size(), prefix.size() + row.tag.size());
    } else {
      EXPECT_NE(last.find(", pAbs_active: "), std::string::npos);
    }
  }
}

TEST(RtvDump, SaysThatNothingIsLoaded) {
  const LogCapture log;
  RecordFile("a.rtv").dump();
  EXPECT_EQ(log.lines(), std::vector<std::string>{"3 RecordFile: RTV Version Error: 3"});
}

TEST(RtvDump, ShowsNoTagsOfAnEarlierFile) {
  const TempFolder folder;
  TaggedVideoParser parser;
  RtvFile file;
  file.frames = {{"abc"}};
  for (const bool empty : {false, true}) {
    if (empty) file.frames.clear();
    writeFile(folder / "a.rtv", file.bytes());
    EXPECT_EQ(parser.init((folder / "a.rtv").c_str()) != RTV_ERR_SUCCESS, empty);
    const LogCapture log;
    parser.dump();
    EXPECT_EQ(log.has("1 RecordFile: frame_tag[0]: "), !empty);
    if (!empty) parser.clear();
  }
}

}  // namespace
