#include <gtest/gtest.h>

#include "container/rtv/RtvFiles.h"
#include "support/TestSupport.h"
#include "velmar_video/rtv/TaggedVideoParser.h"

namespace {

TEST(RtvDump, ShowsEveryVersion) {
  const TempFolder folder;
  const std::string path = folder / "a.rtv";
  const struct {
    int version;
    std::string name, position, tag, can = {};
  } rows[] = {
      {2, "filename: ", "lng 1073741824, lat -536870912",
       "data_offset: 329, data_length: 3, relative_poistion: (x: -1, y: 8), relative_distance: -1"},
      {3, "v03 filename: ", "lng 1073741824, lat -536870912, alt 12345",
       "data_offset: 396, data_length: 3, relative_poistion: (x: -1, y: 8, z: 9), "
       "relative_distance: 4294967295"},
      {4, "filename: ", "lng 1073741824, lat -536870912, alt 12345",
       "data_offset: 1377, data_length: 3, relative_poistion: (x: -1, y: 8, z: 9), "
       "relative_distance: 4294967295",
       ", CAN: can_data_length: 6b, "},
  };
  for (const auto& [version, name, position, tag, can] : rows) {
    SCOPED_TRACE(version);
    RtvFile file = threeFrames(version);
    file.deviceId = "\x0A" + std::string(23, '\xFF');
    file.frames = {{"abc", -5, -1, 8, 9, 0xFFFFFFFF, 11, 12}};
    writeFile(path, file.bytes());
    TaggedVideoParser parser;
    ASSERT_EQ(parser.init(path.c_str()), RTV_ERR_SUCCESS);
    const LogCapture log;
    parser.dump();

    std::vector<std::string> expected = {name + path, "magic_code: velmar.rtv"};
    if (version > 2) expected.push_back("flags: 0x00");
    expected.insert(expected.end(), {"version: 0." + std::to_string(version), "device_id: ", "0a"});
    expected.insert(expected.end(), 23, "ff");
    expected.insert(expected.end(),
                    {"\n", "start_time: 1000000", "start_position: " + position, "frames_count: 1",
                     "frames_max: 9", "video_resolution: width 1280, height 800", "frame_format: 4",
                     "frame_codec: 1", "taggging_flags: 0x00000011\n", "frame_tag[0]: ",
                     " time_flag: -5, " + tag + ", speed: 11, direction: 12" + can});
    auto lines = log.lines();
    if (version == 4) {
      EXPECT_NE(lines.back().find(", pAbs_active: "), std::string::npos);
      lines.back().resize(std::string("1 RecordFile: ").size() + expected.back().size());
    }
    for (std::string& line : expected) line.insert(0, "1 RecordFile: ");
    EXPECT_EQ(lines, expected);
  }
}

TEST(RtvDump, ShowsNothingOfNoFileAndNoTagsOfAnEarlierOne) {
  {
    const LogCapture log;
    RecordFile("a.rtv").dump();
    EXPECT_EQ(log.lines(), std::vector<std::string>{"3 RecordFile: RTV Version Error: 3"});
  }
  const TempFolder folder;
  TaggedVideoParser parser;
  RtvFile file{.frames = {{"abc"}}};
  writeFile(folder / "a.rtv", file.bytes());
  EXPECT_EQ(parser.init((folder / "a.rtv").c_str()), RTV_ERR_SUCCESS);
  parser.clear();
  file.frames.clear();
  writeFile(folder / "a.rtv", file.bytes());
  EXPECT_NE(parser.init((folder / "a.rtv").c_str()), RTV_ERR_SUCCESS);
  const LogCapture log;
  parser.dump();
  EXPECT_FALSE(log.has("1 RecordFile: frame_tag[0]: "));
}

}  // namespace
