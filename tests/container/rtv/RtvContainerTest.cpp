// The rtv container behind the facade.
#include <gtest/gtest.h>

#include "container/rtv/RtvContainerCreater.h"
#include "container/rtv/RtvContainerReader.h"
#include "container/rtv/RtvFiles.h"
#include "support/TestSupport.h"

namespace {

constexpr auto kNotInit = VELMAR_ERROR_CODE_NOT_INIT_E;

using Reader = VelmarVideoFileReader;

TEST(RtvContainer, WritesVersion03InMilliseconds) {
  const TempFolder folder;
  RtvContainerCreater creater(folder / "a.rtv");
  ASSERT_EQ(creater.open(), kSuccess);
  EXPECT_EQ(creater.open(), kSuccess);
  creater.setTaggingFlags(1);
  creater.setUndistortFlags();
  creater.setDeviceId(reinterpret_cast<const unsigned char*>("camera"), 6);
  creater.setStartTime(1500000000123999);
  creater.setVideoResolution(64, 48);
  creater.setFrameFormat(VELMAR_FORMAT_GRAY_E);
  creater.setFrameCodec(VELMAR_CODEC_JPG_E);
  creater.setCameraParams("no trace");
  creater.setExtendedInfo("no trace");
  EXPECT_TRUE(creater.addFrame("abc", 1500000000223456, 99));
  const unsigned char data[] = "defg";
  EXPECT_TRUE(creater.addFrame(data, 4, 1500000000000000, 99));
  ASSERT_EQ(creater.close(), kSuccess);
  EXPECT_EQ(creater.close(), kNotInit);
  EXPECT_EQ(creater.open(), kSuccess);

  RtvFile expected{.version = 3, .framesMax = 65535};
  expected.deviceId.replace(0, 6, "camera");
  expected.startTime = 1500000000123;
  expected.width = 64;
  expected.height = 48;
  expected.format = RTV_FMT_GRAY;
  expected.taggingFlags = 0x11;
  expected.frames = {{"abc", 100}, {"defg", -123}};
  EXPECT_TRUE(readFile(folder / "a.rtv") == expected.bytes());
}

TEST(RtvContainer, TellsRefusedFramesAndFailuresAtClose) {
  const TempFolder folder;
  const auto creater = makeVelmarVideoFileCreater(folder / "a.rtv");
  EXPECT_TRUE(creater->addFrame("abc", 0, 0));
  EXPECT_TRUE(creater->addFrame(nullptr, 1, 0, 0));
  EXPECT_EQ(creater->close(), VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  EXPECT_EQ(got(*openedReader(folder / "a.rtv"), &Reader::getFramesCount), 1U);

  const auto nowhere = makeVelmarVideoFileCreater(folder / "none/a.rtv");
  EXPECT_EQ(nowhere->open(), kSuccess);
  EXPECT_TRUE(nowhere->addFrame("abc", 0, 0));
  EXPECT_EQ(nowhere->close(), VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
}

TEST(RtvContainer, DroppedItFinishesAndOnlyMadeItReplacesNothing) {
  const TempFolder folder;
  writeFile(folder / "a.rtv", "an old recording");
  makeVelmarVideoFileCreater(folder / "a.rtv")->setUndistortFlags();
  EXPECT_EQ(readFile(folder / "a.rtv"), "an old recording");
  EXPECT_FALSE(exists(folder / "a.rtv.tmp"));
  makeVelmarVideoFileCreater(folder / "a.rtv")->addFrame("abc", 0, 0);
  EXPECT_EQ(readFile(folder / "a.rtv").size(), 72U + 65535 * 36 + 3);
  EXPECT_EQ(makeVelmarVideoFileCreater(folder / "a.rtv")->close(), kSuccess);
  EXPECT_EQ(readFile(folder / "a.rtv").size(), 72U + 65535 * 36);
}

TEST(RtvReader, AnswersInMicrosecondsAndItsEnumerations) {
  const TempFolder folder;
  const struct {
    int version;
    unsigned long start;
    VELMAR_VERSION_E facade;
    unsigned int taggingFlags, undistorted;
  } rows[] = {{2, 1420070400000000 + 5000000, VELMAR_VERSION_0_2_E, 0x0F, 0},
              {3, 5000000, VELMAR_VERSION_0_3_E, 0x11, 1},
              {4, 5000000, VELMAR_VERSION_0_4_E, 0x10, 1}};
  for (const auto& row : rows) {
    const RtvFile file{.version = row.version,
                       .startTime = 5000,
                       .format = RTV_FMT_UNKNOWN,
                       .codec = 77,
                       .taggingFlags = row.taggingFlags,
                       .frames = {{"abc", -7}, {"de", 3000000}}};
    writeFile(folder / "a.rtv", file.bytes());
    const auto reader = openedReader(folder / "a.rtv");
    EXPECT_EQ(got(*reader, &Reader::getVersion), row.facade);
    EXPECT_EQ(got(*reader, &Reader::getStartTime), row.start);
    EXPECT_EQ(got(*reader, &Reader::getColorFormat), VELMAR_FORMAT_BGR_E);
    EXPECT_EQ(got(*reader, &Reader::getImageColorFormat), VELMAR_FORMAT_BGR_E);
    EXPECT_EQ(got(*reader, &Reader::getCodec), VELMAR_CODEC_MAX_E);
    EXPECT_EQ(got(*reader, &Reader::getUndistortFlags), row.undistorted);
    for (const auto getter :
         {&Reader::getTimeStamp, &Reader::getArrivedTime, &Reader::getSensorTime}) {
      EXPECT_EQ(got(*reader, getter, 65536), row.start + 7000);  // cut to 16 bits
    }
    EXPECT_EQ(static_cast<long>(got(*reader, &Reader::getTimeFlag, 0)), -7000);
    EXPECT_EQ(static_cast<long>(got(*reader, &Reader::getTimeFlag, 1)), -1294967296);  // wraps
  }
}

TEST(RtvReader, AnswersAnErrorBeforeItIsOpened) {
  const auto reader = makeVelmarVideoFileReader("none.rtv");
  unsigned int count = 7;
  unsigned long time = 7;
  EXPECT_EQ(reader->getFramesCount(count), kNotInit);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(reader->getStartTime(time), kNotInit);
  EXPECT_EQ(time, 7U);
  EXPECT_EQ(reader->getCameraParams() + reader->getMetaInfo() + reader->getExtendedInfo(),
            "{}{}{}");
}

}  // namespace
