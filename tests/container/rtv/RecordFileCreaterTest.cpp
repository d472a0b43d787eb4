#include "velmar_video/rtv/RecordFileCreater.h"

#include <gtest/gtest.h>

#include <cstring>

#include "container/rtv/RtvFiles.h"
#include "support/TestSupport.h"

namespace {

using FramesMax = unsigned short;

bool add(RecordFileCreater& creater, const RtvFrame& frame) {
  can_data_io can;
  std::memcpy(&can, frame.can.data(), sizeof can);
  return creater.addFrame(frame.timeFlag, frame.bytes, frame.x, frame.y, frame.z,
                          frame.relativeDistance, static_cast<unsigned short>(frame.speed),
                          static_cast<unsigned short>(frame.direction), &can);
}

TEST(RtvCreater, WritesTheBytesOfEachVersion) {
  const TempFolder folder;
  for (const version_e version : {RTV_VER_02, RTV_VER_03, RTV_VER_04}) {
    SCOPED_TRACE(version);
    RtvFile expected = threeFrames(version + 2);
    expected.deviceId = std::string("\x01\x02", 2) + std::string(21, '\0') + "\xFF";
    expected.startTime = 0x0102030405060708;
    expected.taggingFlags = version == RTV_VER_02 ? 0 : 0xA0B0C011;
    expected.frames[1].bytes = "";
    expected.frames[2] = {"third", 2147483647, -8388608, 0x01234567, -9, 0x89ABCDEF, 65535, 3};

    unsigned int size = 0;
    RecordFileCreater creater(folder / "a.rtv", FramesMax{9}, version, &size);
    EXPECT_EQ(size, expected.headerSize() + 9 * expected.tagSize());
    creater.setDeviceId(reinterpret_cast<const unsigned char*>(expected.deviceId.data()), 24);
    creater.setStartTime(expected.startTime);
    creater.setStartPosition(expected.lng, expected.lat, expected.alt);
    creater.setVideoResolution(1280, 800);
    creater.setFrameFormat(RTV_FMT_GRAY);
    creater.setFrameCodec(RTV_CODEC_H264);
    creater.setTaggingFlags(0xA0B0C011);
    for (const RtvFrame& frame : expected.frames) EXPECT_TRUE(add(creater, frame));
    // What a recorder that is killed leaves.
    EXPECT_EQ(readFile(folder / "a.rtv.tmp"), std::string(expected.headerSize(), '\0') +
                                                  expected.bytes().substr(expected.headerSize()));
    EXPECT_TRUE(creater.close());
    EXPECT_FALSE(creater.close());
    const LogCapture log;
    EXPECT_FALSE(add(creater, expected.frames[0]));
    EXPECT_TRUE(log.has("3 RecordFileCreater: Error: ftruncate fail " + folder / "a.rtv.tmp" +
                        ", Bad file descriptor"));
    EXPECT_EQ(readFile(folder / "a.rtv"), expected.bytes());
    EXPECT_FALSE(exists(folder / "a.rtv.tmp"));
  }
}

TEST(RtvCreater, RefusesFramesBeyondItsCapacityAndNull) {
  const TempFolder folder;
  RecordFileCreater creater(folder / "a.rtv", FramesMax{2}, RTV_VER_04, nullptr);
  EXPECT_FALSE(creater.addFrame(0, nullptr, 5, 0, 0, 0, 0, 0, 0, nullptr));
  EXPECT_TRUE(creater.addFrame(0, nullptr, 0, 0, 0, 0, 0, 0, 0, nullptr));
  EXPECT_TRUE(creater.addFrame(0, "abc", 0, 0, 0, 0, 0, 0, nullptr));
  EXPECT_FALSE(creater.addFrame(0, "beyond", 0, 0, 0, 0, 0, 0, nullptr));
  ASSERT_TRUE(creater.close());
  const std::string file = readFile(folder / "a.rtv");
  EXPECT_EQ(file.size(), 72U + 2 * 145 + 3);
  EXPECT_EQ(file.substr(72 + 36, 109), RtvFrame().can);  // no signals
}

TEST(RtvCreater, TurnsADurationIntoSlots) {
  const TempFolder folder;
  const struct { unsigned int duration, slots; } rows[] = {{0, 65535}, {1, 60}, {1200, 6464}};
  for (const auto& [duration, slots] : rows) {
    unsigned int size = 0;
    const RecordFileCreater creater(folder / "a.rtv", duration, RTV_VER_02, &size);
    EXPECT_EQ(size, 68 + slots * 29);
  }
}

TEST(RtvCreater, WarnsOfIdentifiersOfAnotherSize) {
  const TempFolder folder;
  const LogCapture log;
  {
    RecordFileCreater creater(folder / "a.rtv", FramesMax{0}, RTV_VER_03, nullptr);
    const std::string id(30, 'i');
    creater.setDeviceId(reinterpret_cast<const unsigned char*>(id.data()), 30);
    creater.setDeviceId(reinterpret_cast<const unsigned char*>("SHORT"), 5);
  }
  EXPECT_TRUE(log.has("2 RecordFileCreater: Device id array size is 30, should be 24"));
  EXPECT_TRUE(log.has("2 RecordFileCreater: Device id array size is 5, should be 24"));
  const std::string file = readFile(folder / "a.rtv");
  EXPECT_EQ(file.size(), 72U);
  EXPECT_EQ(file.substr(14, 24), "SHORT" + std::string(19, 'i'));
}

}  // namespace
