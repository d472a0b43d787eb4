#include "velmar_video/rtv/RtvContainerModifier.h"

#include <gtest/gtest.h>

#include "container/rtv/RtvFiles.h"
#include "scene/SampleScene.h"
#include "support/Pictures.h"
#include "support/TestSupport.h"

namespace {

RtvFile recording(int version) {
  RtvFile file = threeFrames(version);
  file.startTime = 1500000000000;
  file.taggingFlags = 0x01;
  file.frames[0].bytes = SampleScene(64, 48).jpeg(0);
  return file;
}

class RtvModifier : public testing::TestWithParam<int> {
 protected:
  TempFolder folder_;
  const std::string path_ = folder_ / "a.rtv";
  const RtvFile original_ = recording(GetParam());
};
INSTANTIATE_TEST_SUITE_P(Versions, RtvModifier, testing::Values(2, 3, 4));

const unsigned char* bytes(const std::string& text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

TEST_P(RtvModifier, ChangesItsFieldsAndNothingElse) {
  writeFile(path_, original_.bytes());
  const std::string longId = "NOPQRSTUVWXYZ<>()[]{}+-*/=%!";
  unsigned long start = 1500000001000999, time = 1500000000123956;
  RtvContainerModifier modifier(path_);
  ASSERT_EQ(modifier.open(), kSuccess);
  EXPECT_EQ(modifier.modifyCameraID(bytes(longId), 28), kSuccess);
  EXPECT_EQ(modifier.modifyCameraID(bytes("ABCDEFGH"), 8), kSuccess);
  EXPECT_EQ(modifier.modifyTimestamp(0, time), kSuccess);
  EXPECT_EQ(modifier.modifyStartTime(start), kSuccess);
  EXPECT_EQ(modifier.modifyTimestamp(1, time), kSuccess);
  EXPECT_EQ(modifier.modifyUndistorted(true), kSuccess);
  EXPECT_EQ(modifier.correctVideoResolution(), kSuccess);
  for (const auto code :
       {modifier.modifyCameraParams("x"), modifier.modifyExtendedInfo("x"),
        modifier.modifyFrameIndexDataChecksum("x"), modifier.modifyArrivalTime(0, time)}) {
    EXPECT_EQ(code, kSuccess);
  }
  RtvFile expected = original_;
  expected.frames[0].timeFlag = 123;
  expected.frames[1].timeFlag = -877;
  EXPECT_TRUE(readFile(path_) == expected.bytes());  // the header waits for close()
  EXPECT_EQ(modifier.close(), kSuccess);
  EXPECT_EQ(modifier.close(), kSuccess);
  expected.deviceId = "ABCDEFGH" + longId.substr(8, 16);
  expected.startTime = 1500000001000;
  expected.taggingFlags = GetParam() == 2 ? 0x01 : 0x11;
  expected.width = 64;
  expected.height = 48;
  EXPECT_TRUE(readFile(path_) == expected.bytes());

  RtvContainerModifier again(path_);
  ASSERT_EQ(again.open(), kSuccess);
  again.setTaggingFlags(0xFF);
  EXPECT_EQ(again.modifyUndistorted(false), kSuccess);
  EXPECT_EQ(again.close(), kSuccess);
  expected.taggingFlags = GetParam() == 2 ? 0x01 : 0xEF;
  EXPECT_TRUE(readFile(path_) == expected.bytes());
}

TEST_P(RtvModifier, RefusesWhatItCannotEdit) {
  const LogCapture log;
  const auto modifier = makeVelmarVideoFileModifier(path_);
  unsigned long time = 1;
  // Without a file the header in memory can be changed all the same, and nothing comes of it.
  const auto changesNothing = [&](VELMAR_ERROR_CODE_E timeCode) {
    EXPECT_EQ(modifier->modifyCameraID(bytes("x"), 1), kSuccess);
    EXPECT_EQ(modifier->modifyUndistorted(true), kSuccess);
    EXPECT_EQ(modifier->modifyStartTime(time), kSuccess);
    EXPECT_EQ(modifier->modifyTimestamp(0, time), timeCode);
    EXPECT_EQ(modifier->close(), kSuccess);
  };
  changesNothing(VELMAR_ERROR_CODE_OUT_RANGE_E);
  EXPECT_EQ(log.lines(), (std::vector<std::string>{
                             "2 RtvContainerModifier_TAG: Device id array size is 1, should be 24",
                             "1 RtvContainerModifier_TAG: set undistorted true",
                             "3 RtvContainerModifier_TAG: index out of range"}));
  EXPECT_EQ(modifier->open(), VELMAR_ERROR_CODE_FILE_NOT_EXIST_E);
  changesNothing(VELMAR_ERROR_CODE_OUT_RANGE_E);
  EXPECT_EQ(modifier->correctVideoResolution(), VELMAR_ERROR_CODE_OUT_RANGE_E);

  RtvFile noJpeg = original_;
  noJpeg.frames[0].bytes = tablesOf(original_.frames[0].bytes);
  writeFile(path_, noJpeg.bytes());
  ASSERT_EQ(modifier->open(), kSuccess);
  EXPECT_EQ(modifier->open(), VELMAR_ERROR_CODE_DUPLICATE_INIT_E);
  EXPECT_TRUE(
      log.has("3 RtvContainerModifier_TAG: TaggedVideoParser::init: Error: already inited by " +
              path_ + "\n"));
  EXPECT_EQ(modifier->modifyCameraID(nullptr, 24), VELMAR_ERROR_CODE_NULL_POINTER_E);
  EXPECT_EQ(modifier->modifyTimestamp(3, time), VELMAR_ERROR_CODE_OUT_RANGE_E);
  EXPECT_EQ(modifier->correctVideoResolution(), VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
  EXPECT_EQ(modifier->close(), kSuccess);
  changesNothing(VELMAR_ERROR_CODE_NOT_INIT_E);
  ASSERT_EQ(modifier->open(), kSuccess);
  EXPECT_EQ(modifier->close(), kSuccess);
  EXPECT_TRUE(readFile(path_) == noJpeg.bytes());
}

}  // namespace
