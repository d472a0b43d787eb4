#include "container/img/ImgContainerCreater.h"

#include <gtest/gtest.h>

#include "container/img/ImgFiles.h"
#include "support/TestSupport.h"

namespace {

constexpr auto kNotComplete = VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
const std::string kTag = "3 ImgContainerCreater_TAG: ";

// Looks up the frames by the records of an index or a journal, without the library.
void expectFrames(const std::string& file, const std::string& records,
                  const std::vector<TestFrame>& frames) {
  ASSERT_EQ(records.size(), 28 * frames.size());
  for (std::size_t i = 0; i < frames.size(); ++i) {
    EXPECT_EQ(bigEndian(records, 28 * i, 8), frames[i].sensorTime);
    EXPECT_EQ(bigEndian(records, 28 * i + 8, 8), frames[i].arrivedTime);
    EXPECT_EQ(file.substr(bigEndian(records, 28 * i + 16, 8), bigEndian(records, 28 * i + 24, 4)),
              frames[i].bytes);
  }
}

// A recording that is not finished.
void expectJournal(const std::string& path, const std::vector<TestFrame>& frames) {
  const std::string journal = readFile(path + ".tmp.index");
  std::string records;
  for (std::size_t at = 12; at < journal.size(); at += 36) records += journal.substr(at, 28);
  expectFrames(readFile(path + ".tmp"), records, frames);
}

TEST(ImgCreater, PutsTheIndexInThePlaceOfTheFirstFrames) {
  const struct {
    std::vector<std::size_t> sizes, offsets;
    std::size_t metaDataOffset;
  } rows[] = {
      {{5000}, {5008}, 10008},
      {{2000, 3000, 4000}, {9008, 2008, 5008}, 11008},
      {{30, 30, 5000}, {5068, 5098, 5128}, 10128},
      {{0, 100, 0, 2000}, {2108, 2108, 2208, 2208}, 4208},
      {{29}, {37}, 66},
  };
  const TempFolder folder;
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.sizes));
    const auto frames = lettered(row.sizes);
    ASSERT_EQ(record(folder / "a.img", frames), kSuccess);
    const std::string file = readFile(folder / "a.img");
    EXPECT_EQ(bigEndian(file, 0, 8), row.metaDataOffset);
    expectFrames(file, file.substr(8, 28 * frames.size()), frames);
    for (std::size_t i = 0; i < frames.size(); ++i) {
      EXPECT_EQ(bigEndian(file, 8 + 28 * i + 16, 8), row.offsets[i]);
    }
    EXPECT_EQ(
        file.substr(row.metaDataOffset),
        "{\n   \"camera_id\" : \"\",\n   \"camera_params\" : {},\n   \"extendedInfo\" : {},\n"
        "   \"frame_codec\" : \"JPG\",\n   \"frame_format\" : \"BGR\",\n   \"frames_count\" : " +
            std::to_string(frames.size()) +
            ",\n   \"height\" : 800,\n   \"undistorted\" : false,\n"
            "   \"version\" : \"1.0\",\n   \"width\" : 1280\n}\n");
    EXPECT_FALSE(exists(folder / "a.img.tmp"));
    EXPECT_FALSE(exists(folder / "a.img.tmp.index"));
  }
}

TEST(ImgCreater, WritesWhatTheSettersSay) {
  const TempFolder folder;
  ImgContainerCreater creater(folder / "a.img");
  const unsigned char id[] = {0x0A, 0xFF, 0x00};
  creater.setDeviceId(id, sizeof id);
  creater.setDeviceId(nullptr, 5);
  ASSERT_EQ(creater.open(), kSuccess);
  ASSERT_TRUE(creater.addFrame(std::string(100, 'x'), 1, 2));
  creater.setStartTime(77);
  creater.setVideoResolution(65535, 1);
  creater.setFrameFormat(VELMAR_FORMAT_GRAY_E);
  creater.setFrameCodec(VELMAR_CODEC_H264_E);
  creater.setUndistortFlags();
  creater.setCameraParams(R"({"k": [1, 2.5]})");
  creater.setExtendedInfo("\"text\"");
  ASSERT_EQ(creater.close(), kSuccess);
  const std::string file = readFile(folder / "a.img");
  EXPECT_EQ(file.substr(bigEndian(file, 0, 8)),
            "{\n   \"camera_id\" : \"0aff00\",\n   \"camera_params\" : {\n"
            "      \"k\" : [ 1, 2.5 ]\n   },\n"
            "   \"extendedInfo\" : \"text\",\n   \"frame_codec\" : \"H264\",\n"
            "   \"frame_format\" : \"GRAY\",\n   \"frames_count\" : 1,\n   \"height\" : 1,\n"
            "   \"undistorted\" : true,\n   \"version\" : \"1.0\",\n   \"width\" : 65535\n}\n");
}

TEST(ImgCreater, LeavesTheTemporaryFileWhereItCannotFinish) {
  const TempFolder folder;
  const std::string noRoom = "adjustmentFrameAndIndex error";
  const struct {
    std::vector<std::size_t> sizes;
    std::string cameraParams;
    VELMAR_ERROR_CODE_E code;
    std::string line;
  } rows[] = {
      {{}, "{}", kNotComplete, noRoom},
      {{10, 10, 10}, "{}", kNotComplete, noRoom},
      {{28}, "{}", kNotComplete, noRoom},
      {{500}, "no JSON", VELMAR_ERROR_CODE_INVALID_PARAMETER_E, "reader.parse error"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.sizes));
    const LogCapture log;
    const std::string path = folder / "a.img";
    ImgContainerCreater creater(path);
    ASSERT_EQ(creater.open(), kSuccess);
    EXPECT_EQ(readFile(path + ".tmp"), std::string(8, '\0'));
    for (const auto& frame : lettered(row.sizes)) {
      creater.addFrame(frame.bytes, frame.sensorTime, frame.arrivedTime);
    }
    creater.setCameraParams(row.cameraParams);
    EXPECT_EQ(creater.close(), row.code);
    EXPECT_TRUE(log.has(kTag + row.line));
    EXPECT_FALSE(exists(path));
    EXPECT_TRUE(exists(path + ".tmp"));
    EXPECT_EQ(exists(path + ".tmp.index"), !row.sizes.empty());
    if (!row.sizes.empty()) expectJournal(path, lettered(row.sizes));
  }
}

TEST(ImgCreater, RefusesCallsOutOfTurnAndLosesNothing) {
  const TempFolder folder;
  const LogCapture log;
  ImgContainerCreater creater(folder / "a.img");
  EXPECT_EQ(creater.close(), VELMAR_ERROR_CODE_NOT_INIT_E);
  EXPECT_FALSE(creater.addFrame("too early", 0, 0));
  EXPECT_FALSE(creater.addFrame("", 0, 0));
  ASSERT_EQ(creater.open(), kSuccess);
  EXPECT_FALSE(creater.addFrame(nullptr, 1, 0, 0));
  ASSERT_TRUE(creater.addFrame(nullptr, 0, 0, 0));
  ASSERT_TRUE(creater.addFrame(std::string(100, 'x'), 0, 0));
  EXPECT_EQ(creater.open(), VELMAR_ERROR_CODE_DUPLICATE_INIT_E);
  ASSERT_EQ(creater.close(), kSuccess);
  EXPECT_EQ(creater.close(), VELMAR_ERROR_CODE_NOT_INIT_E);
  EXPECT_EQ(creater.open(), VELMAR_ERROR_CODE_DUPLICATE_INIT_E);
  EXPECT_FALSE(creater.addFrame("too late", 0, 0));
  EXPECT_FALSE(creater.addFrame("", 0, 0));
  EXPECT_EQ(bigEndian(readFile(folder / "a.img"), 0, 8), 208U);
}

TEST(ImgCreater, TellsWhatItCannotOpen) {
  const TempFolder folder;
  const std::string nowhere = folder / "none/a.img";
  const LogCapture log;
  EXPECT_EQ(ImgContainerCreater("").open(), VELMAR_ERROR_CODE_INVALID_FILE_NAME_E);
  EXPECT_TRUE(log.has(kTag + "filePath_ is empty"));
  EXPECT_EQ(ImgContainerCreater(nowhere).open(), VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E);
  EXPECT_TRUE(log.has(kTag + "open filePath_ = " + nowhere + " error"));
}

TEST(ImgCreater, RecordsWithoutAJournalThatCannotBeWritten) {
  const TempFolder folder;
  const LogCapture log;
  const std::string path = folder / "a.img";
  std::filesystem::create_directory(path + ".tmp.index");
  EXPECT_EQ(record(path, lettered({500})), kSuccess);
  EXPECT_TRUE(exists(path));
  EXPECT_TRUE(log.errors().empty());
}

}  // namespace
