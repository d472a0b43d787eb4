#include "container/img/ImgMetaData.h"

#include <gtest/gtest.h>

#include "container/img/JsonText.h"
#include "support/TestSupport.h"

namespace {

std::string textOf(const ImgMetaData& metaData) {
  Json::Value root;
  EXPECT_TRUE(metaData.toJson(root));
  return styledText(root);
}

TEST(ImgMetaData, WritesStyledTextWithThreeSpaces) {
  ImgMetaData metaData;
  metaData.cameraId = "0aff";
  metaData.framesCount = 3;
  metaData.frameIndexDataChecksum = "not written";
  metaData.cameraParams = R"({"k": [1, 2.5], "inner": {"model": "pin"}})";
  EXPECT_EQ(
      textOf(metaData),
      "{\n   \"camera_id\" : \"0aff\",\n   \"camera_params\" : \n   {\n      \"inner\" : \n      "
      "{\n"
      "         \"model\" : \"pin\"\n      },\n      \"k\" : \n      [\n         1,\n         2.5\n"
      "      ]\n   },\n   \"extendedInfo\" : {},\n   \"frame_codec\" : \"JPG\",\n"
      "   \"frame_format\" : \"BGR\",\n   \"frames_count\" : 3,\n   \"height\" : 800,\n"
      "   \"undistorted\" : false,\n   \"version\" : \"1.0\",\n   \"width\" : 1280\n}\n");
}

TEST(ImgMetaData, ReadsWhatItHasWrittenAndDropsTheChecksum) {
  ImgMetaData read;
  ASSERT_TRUE(read.jsonTo(
      R"({"version":"0.3","camera_id":"00","frames_count":7,"width":70000,"height":2,
          "frame_codec":"H264","frame_format":"GRAY","undistorted":true,
          "camera_params":{"a":1},"frame_index_data_checksum":"abc","extendedInfo":[1]})"));
  EXPECT_EQ(read.version, VELMAR_VERSION_0_3_E);
  EXPECT_EQ(read.framesCount, 7U);
  EXPECT_EQ(read.width, 70000 % 65536);
  EXPECT_EQ(read.codec, VELMAR_CODEC_H264_E);
  EXPECT_EQ(read.format, VELMAR_FORMAT_GRAY_E);
  EXPECT_TRUE(read.undistorted);
  EXPECT_EQ(read.cameraParams, "{\n   \"a\" : 1\n}\n");
  EXPECT_EQ(read.frameIndexDataChecksum, "abc");

  ImgMetaData again;
  ASSERT_TRUE(again.jsonTo(textOf(read).c_str()));
  EXPECT_EQ(again.frameIndexDataChecksum, "");
  EXPECT_EQ(textOf(again), textOf(read));

  ImgMetaData absent;
  ASSERT_TRUE(absent.jsonTo("{}"));
  EXPECT_EQ(absent.version, VELMAR_VERSION_MAX_E);
  EXPECT_EQ(absent.framesCount, 0U);
  EXPECT_EQ(absent.cameraParams, "null\n");
  EXPECT_EQ(absent.extendedInfo, "{}");
}

TEST(ImgMetaData, RefusesWhatItCannotUse) {
  const std::string throws = "3 ImgMetaData_tag: readMetaData throw error";
  const std::string deep(10000, '[');
  std::vector<std::pair<std::string, std::string>> rows = {
      {"", "3 ImgMetaData_tag: cMetaData = "},
      {"{\"a\":", "3 ImgMetaData_tag: cMetaData = {\"a\":"},
      {deep, throws},
      {"{\"camera_params\":" + deep, throws},
  };
  for (const char* text :
       {"null", "[1]", "7", R"({"frames_count":-1})", R"({"frames_count":"many"})",
        R"({"width":[]})", R"({"version":{}})", R"({"undistorted":"yes"})"}) {
    rows.emplace_back(text, throws);
  }
  for (const auto& [text, line] : rows) {
    const LogCapture log;
    EXPECT_FALSE(ImgMetaData().jsonTo(text.c_str())) << text.substr(0, 60);
    EXPECT_TRUE(log.has(line)) << text.substr(0, 60);
  }
}

TEST(ImgMetaData, RefusesToEmbedWhatIsNotJson) {
  for (std::string ImgMetaData::*field : {&ImgMetaData::cameraParams, &ImgMetaData::extendedInfo}) {
    const LogCapture log;
    ImgMetaData metaData;
    metaData.*field = "not JSON";
    Json::Value root;
    EXPECT_FALSE(metaData.toJson(root));
    EXPECT_TRUE(root.isMember("undistorted"));
    EXPECT_TRUE(log.has("3 ImgMetaData_tag: reader.parse error"));
    metaData.*field = std::string(10000, '[');
    EXPECT_FALSE(metaData.toJson(root));
    EXPECT_TRUE(log.has("3 ImgMetaData_tag: build json throw error"));
  }
}

// Each of the two is a comment's place of its own.
TEST(ImgMetaData, KeepsCommentsWithTheTextTheyBelongTo) {
  ImgMetaData metaData;
  metaData.cameraParams = "// of the camera\n{\"a\":1}";
  metaData.extendedInfo = "{\"b\":1}";
  Json::Value root;
  ASSERT_TRUE(metaData.toJson(root));
  EXPECT_EQ(styledText(root["extendedInfo"]), "{\n   \"b\" : 1\n}\n");
}

TEST(ImgMetaData, RefusesTextsThatCouldNotBeReadAgain) {
  const auto nested = [](int depth) { return std::string(depth, '[') + std::string(depth, ']'); };
  const std::pair<std::string, bool> rows[] = {
      {nested(999), true}, {nested(1000), false}, {std::string("{//\0\n}", 6), false}};
  for (const auto& [params, isReadable] : rows) {
    const LogCapture log;
    ImgMetaData metaData;
    metaData.cameraParams = params;
    std::string text;
    ImgMetaData read;
    EXPECT_EQ(metaData.toText(text), isReadable) << params.substr(0, 10);
    EXPECT_EQ(log.errors().empty() && read.jsonTo(text.c_str()), isReadable);
  }
}

}  // namespace
