// The rtv container behind the facade.
#include <gtest/gtest.h>

#include "SampleScene.h"
#include "container/rtv/RtvContainerCreater.h"
#include "container/rtv/RtvContainerReader.h"
#include "container/rtv/RtvFiles.h"
#include "support/Decoding.h"
#include "support/TestSupport.h"

namespace {

constexpr auto kSuccess = VELMAR_ERROR_CODE_SUCCESS_E;
constexpr auto kNotInit = VELMAR_ERROR_CODE_NOT_INIT_E;

TEST(RtvContainer, WritesVersion03InMilliseconds) {
  const TempFolder folder;
  RtvContainerCreater creater(folder / "a.rtv");
  ASSERT_EQ(creater.open(), kSuccess);
  EXPECT_EQ(creater.open(), VELMAR_ERROR_CODE_DUPLICATE_INIT_E);
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
  EXPECT_EQ(creater.open(), VELMAR_ERROR_CODE_DUPLICATE_INIT_E);

  RtvFile expected;
  expected.version = 3;
  expected.framesMax = 65535;
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
  const LogCapture log;
  const auto creater = makeVelmarVideoFileCreater(folder / "a.rtv");
  EXPECT_EQ(creater->close(), kNotInit);
  ASSERT_EQ(creater->open(), kSuccess);
  EXPECT_TRUE(creater->addFrame("abc", 0, 0));
  EXPECT_TRUE(creater->addFrame(nullptr, 1, 0, 0));
  EXPECT_EQ(creater->close(), VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  EXPECT_TRUE(exists(folder / "a.rtv"));

  const auto nowhere = makeVelmarVideoFileCreater(folder / "none/a.rtv");
  EXPECT_EQ(nowhere->open(), kSuccess);
  EXPECT_TRUE(nowhere->addFrame("abc", 0, 0));
  EXPECT_EQ(nowhere->close(), VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  EXPECT_FALSE(exists(folder / "none"));
}

TEST(RtvContainer, FinishesWhatIsDropped) {
  const TempFolder folder;
  makeVelmarVideoFileCreater(folder / "a.rtv")->addFrame("abc", 0, 0);
  EXPECT_EQ(readFile(folder / "a.rtv").size(), 72U + 65535 * 36 + 3);
}

TEST(RtvContainer, OnlyMadeItReplacesNothing) {
  const TempFolder folder;
  writeFile(folder / "a.rtv", "an old recording");
  makeVelmarVideoFileCreater(folder / "a.rtv");
  EXPECT_EQ(readFile(folder / "a.rtv"), "an old recording");
  EXPECT_FALSE(exists(folder / "a.rtv.tmp"));
}

class RtvReader : public testing::Test {
 protected:
  std::shared_ptr<VelmarVideoFileReader> opened(const RtvFile& file) {
    writeFile(path_, file.bytes());
    auto reader = makeVelmarVideoFileReader(path_);
    EXPECT_EQ(reader->open(), kSuccess);
    return reader;
  }

  TempFolder folder_;
  const std::string path_ = folder_ / "a.rtv";
};

TEST_F(RtvReader, AnswersInMicroseconds) {
  const struct {
    int version;
    unsigned long start;
    VELMAR_VERSION_E facade;
  } rows[] = {{2, 1420070400000000 + 5000000, VELMAR_VERSION_0_2_E},
              {3, 5000000, VELMAR_VERSION_0_3_E},
              {4, 5000000, VELMAR_VERSION_0_4_E}};
  for (const auto& row : rows) {
    RtvFile file;
    file.version = row.version;
    file.startTime = 5000;
    file.taggingFlags = 0x11;
    file.frames = {{"abc", -7}, {"de", 3000000}};
    const auto reader = opened(file);
    VELMAR_VERSION_E version{};
    EXPECT_EQ(reader->getVersion(version), kSuccess);
    EXPECT_EQ(version, row.facade);
    unsigned long time = 0;
    EXPECT_EQ(reader->getStartTime(time), kSuccess);
    EXPECT_EQ(time, row.start);
    for (const auto getter :
         {&VelmarVideoFileReader::getTimeStamp, &VelmarVideoFileReader::getArrivedTime,
          &VelmarVideoFileReader::getSensorTime}) {
      EXPECT_EQ((*reader.*getter)(65536, time), kSuccess);  // an index of 17 bits is cut to 0
      EXPECT_EQ(time, row.start + 7000);
      EXPECT_EQ((*reader.*getter)(2, time), VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
    }
    EXPECT_EQ(reader->getTimeFlag(0, time), kSuccess);
    EXPECT_EQ(static_cast<long>(time), -7000);
    EXPECT_EQ(reader->getTimeFlag(1, time), kSuccess);
    EXPECT_EQ(static_cast<long>(time), -1294967296);  // wraps in 32 bits
    unsigned int flags = 0;
    EXPECT_EQ(reader->getUndistortFlags(flags), kSuccess);
    EXPECT_EQ(flags, 1U);
    std::string bytes = "replaced";
    EXPECT_EQ(reader->getRawImage(1, bytes), kSuccess);
    EXPECT_EQ(bytes, "de");
  }
}

TEST_F(RtvReader, ConvertsTheEnumerations) {
  RtvFile file;
  file.format = RTV_FMT_UNKNOWN;
  file.codec = 77;
  file.taggingFlags = 1;
  file.frames = {{"abc"}};
  const auto reader = opened(file);
  VELMAR_FORMAT_E format{};
  VELMAR_CODEC_E codec{};
  unsigned int flags = 7;
  EXPECT_EQ(reader->getColorFormat(format), kSuccess);
  EXPECT_EQ(format, VELMAR_FORMAT_BGR_E);
  EXPECT_EQ(reader->getImageColorFormat(format), kSuccess);
  EXPECT_EQ(format, VELMAR_FORMAT_BGR_E);
  EXPECT_EQ(reader->getCodec(codec), kSuccess);
  EXPECT_EQ(codec, VELMAR_CODEC_MAX_E);
  EXPECT_EQ(reader->getUndistortFlags(flags), kSuccess);
  EXPECT_EQ(flags, 0U);
}

TEST_F(RtvReader, AnswersAnErrorOutsideItsLife) {
  const auto reader = makeVelmarVideoFileReader(path_);
  unsigned int count = 7;
  unsigned long time = 7;
  EXPECT_EQ(reader->open(), VELMAR_ERROR_CODE_FILE_NOT_EXIST_E);
  EXPECT_EQ(reader->getFramesCount(count), kNotInit);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(reader->getStartTime(time), kNotInit);
  EXPECT_EQ(reader->getSensorTime(0, time), kNotInit);
  EXPECT_EQ(time, 7U);
  EXPECT_EQ(reader->loadAllFromFile(), kNotInit);
  EXPECT_EQ(reader->getCameraParams() + reader->getMetaInfo() + reader->getExtendedInfo(),
            "{}{}{}");
  EXPECT_EQ(reader->close(), kSuccess);
}

TEST_F(RtvReader, DecodesExactlyAsTurboJpeg) {
  RtvFile file;
  file.width = 331;
  file.height = 203;
  file.frames = {{SampleScene(331, 203).jpeg(7)}};
  expectExactPixels(*opened(file), file.frames[0].bytes, 331, 203);
}

}  // namespace
