#include "toolkit/tables/TagsCsv.h"

#include <gtest/gtest.h>

#include <cmath>

#include "toolkit/base/Failure.h"

using namespace velmar::toolkit;

namespace {

const std::vector<std::string> kFiles = {"in/1.jpg", "in/2.jpg"};

std::vector<FrameTag> read(const std::string& text, version_e version = RTV_VER_04) {
  return readTags(CsvTable("t.csv", text), kFiles, version);
}

std::string failureOf(const std::string& text, version_e version) {
  try {
    read(text, version);
  } catch (const Failure& failure) {
    const std::string words = failure.what();
    return words.substr(0, words.rfind(" ("));
  }
  return "";
}

TEST(TagsCsv, FillsTagsByColumnName) {
  const auto tags = read(
      "vehicle_speed,index,z,x,abs_active,relative_distance,wheel_tick_left_rear\n"
      ",1,-3,2147483647,,4294967295,\n"
      "13.25,0,,-5,1,,4294967294\n");
  EXPECT_EQ(tags[0].x, -5);
  EXPECT_EQ(tags[0].can.vehicle_speed, 13.25F);
  EXPECT_EQ(tags[0].can.abs_active, 1);
  EXPECT_EQ(tags[0].can.wheel_tick_left_rear, 4294967294U);
  EXPECT_EQ(tags[1].x, 2147483647);
  EXPECT_EQ(tags[1].z, -3);
  EXPECT_EQ(tags[1].relativeDistance, 4294967295U);
  EXPECT_FALSE(tags[1].hasCan());
  EXPECT_EQ(tags[1].can.can_data_length, 107);
  const auto measured = read(
      "index;SPEED_kmh;x_cm;direction_rad;vehicle_speed [km/h];slip_angle\n"
      "0;36,9;-12,5;3,14159265;50,4;1,5\n1;;;;;\n");
  EXPECT_EQ(measured[0].speed, 1025);
  EXPECT_EQ(measured[0].x, -13);
  EXPECT_EQ(measured[0].direction, 180);
  EXPECT_EQ(measured[0].can.vehicle_speed, 14);
  EXPECT_EQ(measured[0].can.slip_angle, 1.5F);
  EXPECT_EQ(read("index,speed,speed_m_s\n0,7,1\n1,,\n")[0].speed, 7);  // of frames --csv
  EXPECT_EQ(read("file,x\n2.jpg,1\nin/1.jpg,2\n", RTV_VER_02)[0].x, 2);
}

TEST(TagsCsv, ChangesOnlyWhatTheTableHas) {
  FrameTag tag;
  tag.x = tag.y = tag.speed = 7;
  tag.can.vehicle_speed = tag.can.slip_angle = 7;
  const auto changed = [&tag](const std::string& text) {
    std::vector<FrameTag> tags(3, tag);
    changeTags(CsvTable("t.csv", text), RTV_VER_04, tags);
    return tags;
  };
  const auto tags = changed("x_m;index;vehicle_speed;speed\n1,5;2;;\n-1;0;3;9\n");
  EXPECT_EQ(tags[0].x, -100);
  EXPECT_EQ(tags[0].can.vehicle_speed, 3);
  EXPECT_EQ(tags[0].speed, 9);
  EXPECT_EQ(tags[2].x, 150);
  EXPECT_TRUE(std::isnan(tags[2].can.vehicle_speed));
  EXPECT_EQ(tags[2].speed, 0);
  for (const FrameTag& each : {tags[0], tags[2]}) {
    EXPECT_EQ(each.y, 7);
    EXPECT_EQ(each.can.slip_angle, 7);
  }
  EXPECT_EQ(tags[1].x, 7);
  EXPECT_EQ(tags[1].can.vehicle_speed, 7);
  const std::pair<const char*, const char*> refused[] = {
      {"index,x\n3,1\n", "t.csv: line 2: there is no frame 3, only 3 frames"},
      {"index,x\n-1,1\n", "t.csv: line 2: there is no frame -1, only 3 frames"},
      {"index,x\n1,1\n\n1,2\n", "t.csv: line 4: frame 1 is there twice"},
      {"index,speed\n0,65536\n", "t.csv: line 2: speed cannot be 65536"},
      {"file,x\n1.jpg,1\n", "t.csv: line 1: "},
      {"index,xx\n0,1\n", "t.csv: line 1: no column belongs to a tag"},
  };
  for (const auto& [text, words] : refused) {
    try {
      changed(text);
      ADD_FAILURE() << words;
    } catch (const Failure& failure) {
      EXPECT_TRUE(std::string(failure.what()).starts_with(words)) << failure.what();
    }
  }
}

TEST(TagsCsv, TellsWhatTheVersionHasNoFieldFor) {
  const auto full =
      read("index,z,abs_active,relative_distance\n0,0,,4294967295\n1,1,0,0\n", RTV_VER_02);
  EXPECT_EQ(static_cast<int>(full[0].relativeDistance), -1);
  const auto lost = [](const std::vector<FrameTag>& tags, version_e version) {
    TagContents contents;
    for (const FrameTag& tag : tags) contents.add(tag);
    return contents.lostBy(version);
  };
  EXPECT_EQ(lost(full, RTV_VER_02), "heights, CAN signals");
  EXPECT_EQ(lost(full, RTV_VER_03), "CAN signals");
  EXPECT_EQ(lost(full, RTV_VER_04), "");
  EXPECT_EQ(lost(read("index,z,abs_active\n0,0,\n1,,\n"), RTV_VER_02), "");
}

TEST(TagsCsv, NamesWhatDoesNotFit) {
  const struct {
    std::string text;
    version_e version;
    std::string failure;
  } cases[] = {
      {"index,x\n0,1\n1,x\n", RTV_VER_03, "line 3: x cannot be x"},
      {"index,x\n0,1\n1,8388608\n", RTV_VER_02, "line 3: x cannot be 8388608"},
      {"index,speed\n0,65536\n1,1\n", RTV_VER_03, "line 2: speed cannot be 65536"},
      {"index,abs_active\n0,255\n1,\n", RTV_VER_04, "line 2: abs_active cannot be 255"},
      {"index,slip_angle\n0,nan\n1,\n", RTV_VER_04, "line 2: slip_angle cannot be nan"},
      {"index,relative_distance\n0,4286578687\n1,0\n", RTV_VER_02,
       "line 2: relative_distance cannot be 4286578687"},
      {"index,speed_kmh,speed\n", RTV_VER_03,
       "line 1: both columns, speed and speed_kmh, are the speed; leave one out"},
      {"index,speed_kmh\n0,2400\n1,1\n", RTV_VER_03, "line 2: speed_kmh cannot be 2400"},
      {"index,lat_deg\n", RTV_VER_03,
       "line 1: no column belongs to a tag (x, y, z, relative_distance, speed, direction, or a CAN "
       "signal); "
       "there are index, lat_deg"},
      {"x\n1\n", RTV_VER_03, "line 1: there is no column file or index; there are x"},
      {"index,x,x\n", RTV_VER_03, "line 1: the column x is there twice"},
      {"index,x\n0,1\n2,1\n", RTV_VER_03, "line 3: there is no frame 2"},
      {"index,x\n0,1\n", RTV_VER_03, "it has no row for in/2.jpg"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(failureOf(row.text, row.version), "t.csv: " + row.failure);
}

}  // namespace
