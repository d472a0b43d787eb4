#include "velmar_video/rtv/RtvContainerModifier.h"

#include <gtest/gtest.h>

#include "SampleScene.h"
#include "container/rtv/RtvFiles.h"
#include "support/TestSupport.h"

namespace {

constexpr auto kSuccess = VELMAR_ERROR_CODE_SUCCESS_E;

RtvFile recording(int version) {
  RtvFile file{.version = version,
               .deviceId = "0123456789abcdefghijklmn",
               .startTime = 1500000000000,
               .width = 1920,
               .height = 1080,
               .taggingFlags = 0x01,
               .frames = {{SampleScene(64, 48).jpeg(0), 1, 2, 3, 4, 5, 6, 7}, {"second", 9}}};
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
  using Edit = std::function<VELMAR_ERROR_CODE_E(RtvContainerModifier&)>;
  using Expect = std::function<void(RtvFile&)>;
  const bool is02 = GetParam() == 2;
  const std::string longId = "NOPQRSTUVWXYZ<>()[]{}+-*/=%!";
  const struct {
    Edit edit;
    Expect expect;
  } rows[] = {
      {[](auto&) { return kSuccess; }, [](auto&) {}},
      {[&](auto& m) { return m.modifyCameraID(bytes("ABCDEFGH"), 8); },
       [](auto& f) { f.deviceId.replace(0, 8, "ABCDEFGH"); }},
      {[&](auto& m) { return m.modifyCameraID(bytes(longId), 28); },
       [&](auto& f) { f.deviceId = longId.substr(0, 24); }},
      {[](auto& m) { return m.modifyUndistorted(true); },
       [&](auto& f) { f.taggingFlags = is02 ? 0x01 : 0x11; }},
      {[](auto& m) { return m.modifyUndistorted(false); }, [](auto&) {}},
      {[](auto& m) {
         m.setTaggingFlags(0xFF);
         return kSuccess;
       },
       [&](auto& f) { f.taggingFlags = is02 ? 0x01 : 0xFF; }},
      {[](auto& m) {
         unsigned long start = 1600000000999999;
         return m.modifyStartTime(start);
       },
       [](auto& f) { f.startTime = 1600000000999; }},
      {[](auto& m) {
         unsigned long start = 1500000001000000;
         unsigned long time = 1500000000123456;
         m.modifyStartTime(start);
         return m.modifyTimestamp(1, time);
       },
       [](auto& f) {
         f.startTime = 1500000001000;
         f.frames[1].timeFlag = -877;
       }},
      {[](auto& m) { return m.correctVideoResolution(); },
       [](auto& f) {
         f.width = 64;
         f.height = 48;
       }},
      {[](auto& m) {
         unsigned long time = 1;
         EXPECT_EQ(m.modifyCameraParams("x"), kSuccess);
         EXPECT_EQ(m.modifyExtendedInfo("x"), kSuccess);
         EXPECT_EQ(m.modifyFrameIndexDataChecksum("x"), kSuccess);
         return m.modifyArrivalTime(0, time);
       },
       [](auto&) {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    writeFile(path_, original_.bytes());
    RtvFile expected = original_;
    row.expect(expected);
    RtvContainerModifier modifier(path_);
    ASSERT_EQ(modifier.open(), kSuccess);
    EXPECT_EQ(row.edit(modifier), kSuccess);
    EXPECT_EQ(modifier.close(), kSuccess);
    EXPECT_EQ(modifier.close(), kSuccess);
    EXPECT_TRUE(readFile(path_) == expected.bytes());
  }
}

TEST_P(RtvModifier, OnlyTimesReachTheFileWithoutClose) {
  writeFile(path_, original_.bytes());
  {
    const auto modifier = makeVelmarVideoFileModifier(path_);
    ASSERT_EQ(modifier->open(), kSuccess);
    unsigned long time = 1500000000123456;
    EXPECT_EQ(modifier->modifyTimestamp(0, time), kSuccess);
    EXPECT_EQ(modifier->modifyStartTime(time), kSuccess);
  }
  RtvFile expected = original_;
  expected.frames[0].timeFlag = 123;
  EXPECT_TRUE(readFile(path_) == expected.bytes());
}

TEST_P(RtvModifier, RefusesWhatItCannotEdit) {
  const LogCapture log;
  const auto modifier = makeVelmarVideoFileModifier(path_);
  unsigned long time = 1;
  const auto refuses = [&](VELMAR_ERROR_CODE_E code, VELMAR_ERROR_CODE_E timeCode) {
    EXPECT_EQ(modifier->modifyCameraID(bytes("x"), 1), code);
    EXPECT_EQ(modifier->modifyUndistorted(true), code);
    EXPECT_EQ(modifier->modifyTimestamp(0, time), timeCode);
  };
  EXPECT_EQ(modifier->open(), VELMAR_ERROR_CODE_FILE_NOT_EXIST_E);
  EXPECT_EQ(modifier->close(), kSuccess);
  refuses(VELMAR_ERROR_CODE_NOT_INIT_E, VELMAR_ERROR_CODE_OUT_RANGE_E);
  EXPECT_EQ(modifier->correctVideoResolution(), VELMAR_ERROR_CODE_OUT_RANGE_E);
  EXPECT_TRUE(log.has("3 RtvContainerModifier_TAG: index out of range"));

  RtvFile noJpeg = original_;
  noJpeg.frames[0].bytes = "no JPEG";
  writeFile(path_, noJpeg.bytes());
  ASSERT_EQ(modifier->open(), kSuccess);
  EXPECT_EQ(modifier->open(), VELMAR_ERROR_CODE_DUPLICATE_INIT_E);
  EXPECT_TRUE(
      log.has("3 RtvContainerModifier_TAG: TaggedVideoParser::init: Error: already inited by " +
              path_ + "\n"));
  EXPECT_EQ(modifier->modifyCameraID(nullptr, 24), VELMAR_ERROR_CODE_NULL_POINTER_E);
  EXPECT_EQ(modifier->modifyTimestamp(2, time), VELMAR_ERROR_CODE_OUT_RANGE_E);
  EXPECT_EQ(modifier->correctVideoResolution(), VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
  EXPECT_EQ(modifier->close(), kSuccess);
  refuses(VELMAR_ERROR_CODE_NOT_INIT_E, VELMAR_ERROR_CODE_NOT_INIT_E);
  EXPECT_TRUE(readFile(path_) == noJpeg.bytes());
}

}  // namespace
