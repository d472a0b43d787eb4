#include "container/img/ImgContainerModifier.h"

#include <gtest/gtest.h>

#include "container/img/ImgFiles.h"
#include "scene/SampleScene.h"
#include "support/Pictures.h"
#include "support/TestSupport.h"

namespace {

constexpr auto kOpenFail = VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E;
const std::string kTag = "3 ImgContainerModifier_Tag: ";
const unsigned char kId[] = {0xAB, 0xCD, 0xEF};

class ImgModifier : public testing::Test {
 protected:
  ImgModifier() { writeFile(path_, original_); }

  // Opens, edits, closes; what close() answers.
  VELMAR_ERROR_CODE_E edit(const std::function<VELMAR_ERROR_CODE_E(VelmarVideoFileModifier&)>& by) {
    const auto modifier = makeVelmarVideoFileModifier(path_);
    EXPECT_EQ(modifier->open(), kSuccess);
    EXPECT_EQ(by(*modifier), kSuccess);
    return modifier->close();
  }
  TempFolder folder_;
  const std::string path_ = folder_ / "a.img";
  const std::string jpeg_ = SampleScene(64, 48).jpeg(0);
  const std::string original_ = handMadeImg({{jpeg_, 1, 2}, {"second", 3, 4}}, "", 1280, 800);
  const std::size_t metaDataAt_ = bigEndian(original_, 0, 8);
};

// They do not wait for close(), as the metadata does.
TEST_F(ImgModifier, ChangesTimesAndNothingElse) {
  {
    const auto modifier = makeVelmarVideoFileModifier(path_);
    ASSERT_EQ(modifier->open(), kSuccess);
    unsigned long sensor = 0x0102030405060708;
    unsigned long arrived = 0x1112131415161718;
    EXPECT_EQ(modifier->modifyTimestamp(1, sensor), kSuccess);
    EXPECT_EQ(modifier->modifyArrivalTime(0, arrived), kSuccess);
    EXPECT_EQ(modifier->modifyStartTime(sensor), kSuccess);
    EXPECT_EQ(modifier->modifyTimestamp(2, sensor), VELMAR_ERROR_CODE_OUT_RANGE_E);
    EXPECT_EQ(modifier->modifyArrivalTime(3, sensor), VELMAR_ERROR_CODE_OUT_RANGE_E);
    EXPECT_EQ(modifier->modifyUndistorted(false), kSuccess);
  }
  std::string expected = patched(original_, 8 + 28, bigEndianBytes(0x0102030405060708, 8));
  expected = patched(expected, 8 + 8, bigEndianBytes(0x1112131415161718, 8));
  EXPECT_TRUE(readFile(path_) == expected);
}

TEST_F(ImgModifier, RewritesTheMetaDataShorterOrLonger) {
  const std::pair<std::string, const char*> rows[] = {
      {std::string(5000, ' ') + "[\"" + std::string(3000, 'x') + "\"]", "xxx"},
      {"0", "\"camera_params\" : 0,"}};
  for (const auto& [params, expected] : rows) {
    EXPECT_EQ(edit([&params = params](auto& modifier) {
                EXPECT_EQ(modifier.modifyCameraID(kId, sizeof kId), kSuccess);
                EXPECT_EQ(modifier.modifyUndistorted(false), kSuccess);
                EXPECT_EQ(modifier.modifyExtendedInfo("{\"new\":1}"), kSuccess);
                EXPECT_EQ(modifier.modifyFrameIndexDataChecksum("not written"), kSuccess);
                return modifier.modifyCameraParams(params);
              }),
              kSuccess);
    const std::string file = readFile(path_);
    EXPECT_TRUE(file.substr(0, metaDataAt_) == original_.substr(0, metaDataAt_));
    EXPECT_EQ(file.substr(metaDataAt_), openedReader(path_)->getMetaInfo());
    for (const char* text :
         {expected, "\"camera_id\" : \"abcdef\"", "\"new\" : 1", "\"undistorted\" : false"}) {
      EXPECT_NE(file.find(text, metaDataAt_), std::string::npos) << text;
    }
    EXPECT_EQ(file.find("not written"), std::string::npos);
  }
}

TEST_F(ImgModifier, CorrectsTheResolutionOnlyIfItDiffers) {
  EXPECT_EQ(edit([](auto& modifier) { return modifier.correctVideoResolution(); }), kSuccess);
  const std::string corrected = readFile(path_);
  EXPECT_NE(corrected.find("\"width\" : 64", metaDataAt_), std::string::npos);
  EXPECT_NE(corrected.find("\"height\" : 48", metaDataAt_), std::string::npos);

  const std::string fitting = handMadeImg({{jpeg_}}, "", 64, 48);
  const std::pair<std::string, VELMAR_ERROR_CODE_E> rows[] = {
      {fitting, kSuccess},
      {handMadeImg({}), VELMAR_ERROR_CODE_OUT_RANGE_E},
      {handMadeImg({{"no JPEG"}}), VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E},
      {handMadeImg({{tablesOf(jpeg_)}}), VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E},
      {patched(fitting, 8 + 24, "\xFF\xFF\xFF\xFF"), VELMAR_ERROR_CODE_STATUS_FILE_CANNOT_READ_E},
  };
  for (const auto& [file, code] : rows) {
    writeFile(path_, file);
    const auto modifier = makeVelmarVideoFileModifier(path_);
    ASSERT_EQ(modifier->open(), kSuccess);
    EXPECT_EQ(modifier->correctVideoResolution(), code);
    EXPECT_EQ(modifier->close(), kSuccess);
    EXPECT_TRUE(readFile(path_) == file);
  }
}

TEST_F(ImgModifier, KeepsTheOldMetaDataWhereItCannotFinish) {
  const std::string otherFile = "oen file error = " + path_;
  const struct {
    std::function<void()> trouble;
    std::string params;
    VELMAR_ERROR_CODE_E code;
    std::string line;
  } rows[] = {
      {[] {}, "no JSON", VELMAR_ERROR_CODE_INVALID_PARAMETER_E, "reader.parse error"},
      {[this] { std::filesystem::rename(path_, path_ + ".away"); }, "1", kOpenFail, otherFile},
      {[this] { writeFile(path_, "another"); }, "1", kOpenFail, otherFile},
      {[this] {
         writeFile(path_ + ".tmp", std::string(original_.size(), 'a'));
         std::filesystem::rename(path_ + ".tmp", path_);
       },
       "1", kOpenFail, otherFile},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    writeFile(path_, original_);
    const LogCapture log;
    const auto modifier = makeVelmarVideoFileModifier(path_);
    ASSERT_EQ(modifier->open(), kSuccess);
    ASSERT_EQ(modifier->modifyCameraParams(row.params), kSuccess);
    row.trouble();
    const std::string before = readFile(path_);
    EXPECT_EQ(modifier->close(), row.code);
    EXPECT_TRUE(log.has(kTag + row.line));
    EXPECT_TRUE(readFile(path_) == before);
    EXPECT_EQ(modifier->close(), VELMAR_ERROR_CODE_NOT_INIT_E);
  }
}

TEST_F(ImgModifier, AnswersAnErrorOutsideItsLife) {
  const LogCapture log;
  ImgContainerModifier modifier(path_);
  const auto refuses = [&] {
    unsigned long time = 1;
    unsigned char buffer[10];
    for (const auto code :
         {modifier.modifyCameraID(kId, 3), modifier.modifyUndistorted(true),
          modifier.modifyCameraParams("1"), modifier.modifyFrameIndexDataChecksum("1"),
          modifier.modifyTimestamp(0, time), modifier.modifyArrivalTime(0, time),
          modifier.modifyStartTime(time), modifier.modifyExtendedInfo("1"),
          modifier.getRawImage(0, 10, buffer)}) {
      EXPECT_EQ(code, VELMAR_ERROR_CODE_NOT_INIT_E);
    }
    EXPECT_NE(modifier.correctVideoResolution(), kSuccess);
  };
  refuses();
  EXPECT_EQ(modifier.close(), VELMAR_ERROR_CODE_NOT_INIT_E);
  ASSERT_EQ(modifier.open(), kSuccess);
  EXPECT_EQ(modifier.open(), VELMAR_ERROR_CODE_DUPLICATE_INIT_E);
  EXPECT_EQ(modifier.modifyCameraID(nullptr, 1), VELMAR_ERROR_CODE_NULL_POINTER_E);
  unsigned char buffer[10] = {};
  EXPECT_EQ(modifier.getRawImage(1, 10, buffer), kSuccess);
  EXPECT_EQ(std::string(buffer, buffer + 6), "second");
  EXPECT_EQ(modifier.close(), kSuccess);
  refuses();
  EXPECT_TRUE(readFile(path_) == original_);
  EXPECT_TRUE(log.has("1 ImgContainerModifier_Tag:  modifyTimestamp usec = 1"));
  writeFile(path_, original_.substr(0, 50));
  EXPECT_EQ(modifier.open(), VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  EXPECT_TRUE(log.has(kTag + "readMetaDataOffset error"));
  refuses();
  writeFile(path_, original_);
  ASSERT_EQ(modifier.open(), kSuccess);
  EXPECT_EQ(modifier.modifyUndistorted(false), kSuccess);
  EXPECT_EQ(modifier.close(), kSuccess);
  EXPECT_EQ(got(*openedReader(path_), &VelmarVideoFileReader::getUndistortFlags), 0U);
}

}  // namespace
