#include "toolkit/tables/FrameLine.h"

#include <gtest/gtest.h>

#include "support/TestSupport.h"
#include "toolkit/TestJob.h"
#include "toolkit/base/Failure.h"

using namespace velmar::toolkit;

namespace {

TEST(ContentHash, IsThatOfItsDefinition) {
  EXPECT_EQ(contentHash(HashKind::Sha256, "abc"),
            "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(contentHash(HashKind::Xxh3, ""), "99aa06d3014798d86001c324468d497f");
}

TEST(FrameTable, RefusesNamesThatItDoesNotKnow) {
  const std::pair<const char*, const char*> cases[] = {
      {"index,lat", "--columns: lat needs a unit: lat_deg or lat_rad"},
      {"capturd", "--columns: there is no capturd; did you mean captured?"},
      {"speed,speed_m_s,speed", "--columns: speed is there twice"},
      {"index,", "--columns: a name is missing"},
      {"", "--columns: a name is missing"}};
  for (const auto& [names, words] : cases) {
    try {
      namedColumns(names);
      ADD_FAILURE() << names;
    } catch (const UsageError& error) {
      EXPECT_STREQ(error.what(), words);
    }
  }
}

// The same columns of an rtv and of an img, which has few of them, in each form.
TEST(FrameLine, ShowsTheColumnsOfATable) {
  const TempFolder folder;
  const std::string frame(100, 'x');
  RecordingDescription description;
  description.version = RTV_VER_04;
  for (const char* name : {"a,b.rtv", "a.img"}) {
    RecordingWriter writer(folder / name, description, 1, RecordingWriter::OnFailure::RemoveFrames);
    FrameTag tag;
    tag.x = -150;
    tag.speed = 2000;
    tag.can.vehicle_speed = 19.5F;
    writer.add(frame, {18000, 18000}, tag);
    writer.finish();
  }
  const FrameTable table = namedColumns(
      "sensor_time_us,x,x_m,speed_m_s,speed_km_h,vehicle_speed,brake_active,captured,sha256");
  const std::string hash = contentHash(HashKind::Sha256, frame);
  const std::string captured = "1970-01-01T00:00:00.018000Z";
  const Recording rtv(folder / "a,b.rtv");
  const Recording img(folder / "a.img");
  EXPECT_EQ(FrameLine(rtv, table).csv(0),
            "18000,-150,-1.5,20.00,72,19.5,," + captured + "," + hash + "\n");
  EXPECT_EQ(FrameLine(img, table).csv(0), "18000,,,,,,," + captured + "," + hash + "\n");
  EXPECT_EQ(FrameLine(rtv, table).json(0),
            R"({"sensor_time_us":18000,"x":-150,"x_m":-1.5,"speed_m_s":20.00,"speed_km_h":72,)"
            R"("can":{"vehicle_speed":19.5},"captured":")" +
                captured + R"(","sha256":")" + hash + "\"}\n");
  EXPECT_EQ(FrameLine(img, table).json(0), R"({"sensor_time_us":18000,"captured":")" + captured +
                                               R"(","sha256":")" + hash + "\"}\n");
  const FrameTable people = namedColumns("index,speed_km_h");
  EXPECT_EQ(FrameLine::textHeader(people), "     index    speed_km_h\n");
  EXPECT_EQ(FrameLine(rtv, people).text(0), "         0            72\n");
  EXPECT_EQ(FrameLine(img, people).text(0), "         0              \n");
  const FrameTable file = namedColumns("file,index");
  EXPECT_EQ(FrameLine(rtv, file).csv(0), "\"" + rtv.path() + "\",0\n");
}

TEST(FrameLine, SaysWhichFramesHaveNoBytesToHash) {
  const TempFolder folder;
  const std::string one(100, '1');
  const std::string three(200, '3');
  recordFrames(folder / "a.img", {one, std::string(100, '2'), three});
  std::string bytes = readFile(folder / "a.img");
  // Frame 1 says that it begins where frame 0 does.
  constexpr std::size_t kIndexAt = 8;
  constexpr std::size_t kRecord = 28;
  bytes.replace(kIndexAt + kRecord + 16, 8, bytes.substr(kIndexAt + 16, 8));
  writeFile(folder / "a.img", bytes);
  const Recording recording(folder / "a.img");
  TestJob job;
  FrameNews news(recording.path(), job);
  const FrameTable table = {hashColumn(HashKind::Xxh3)};
  FrameLine line(recording, table, &news);
  EXPECT_EQ(line.csv(0), contentHash(HashKind::Xxh3, one) + "\n");
  EXPECT_EQ(line.csv(1), "\n");
  EXPECT_EQ(line.csv(2), contentHash(HashKind::Xxh3, three) + "\n");
  news.finish();
  ASSERT_EQ(job.lines.size(), 1U);
  EXPECT_TRUE(job.lines[0].starts_with("a.img frame 1 is without a hash: its bytes are those of"))
      << job.lines[0];
}

}  // namespace
