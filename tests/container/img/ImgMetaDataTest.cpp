#include "container/img/ImgMetaData.h"

#include <gtest/gtest.h>

#include <locale>

#include "container/img/JsonText.h"
#include "support/TestSupport.h"
#include "velmar_video/rtv/CanData.h"

using namespace velmar::detail;

namespace {

std::string textOf(const ImgMetaData& metaData) {
  Json::Value root;
  EXPECT_TRUE(metaData.toJson(root));
  return styledText(root);
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

  for (const char* text : {"{}", "null"}) {
    ImgMetaData absent;
    ASSERT_TRUE(absent.jsonTo(text));
    EXPECT_EQ(absent.version, VELMAR_VERSION_MAX_E);
    EXPECT_EQ(absent.framesCount, 0U);
    EXPECT_EQ(absent.cameraParams, "null\n");
    EXPECT_EQ(absent.extendedInfo, "{}");
  }
}

// As Json::StyledWriter has it; files with braces on lines of their own read the same.
TEST(ImgMetaData, HasOneShape) {
  const std::string embedded =
      "{\n   \"a\" : [ 1, 2, 3 ],\n   \"b\" : {\n      \"c\" : {}\n   }\n}\n";
  for (const char* text :
       {R"({"camera_params":{"a":[1,2,3],"b":{"c":{}}}})",
        "{\n   \"camera_params\" : \n   {\n      \"a\" : \n      [\n         1,\n         2,\n"
        "         3\n      ],\n      \"b\" : \n      {\n         \"c\" : {}\n      }\n   }\n}\n"}) {
    ImgMetaData metaData;
    ASSERT_TRUE(metaData.jsonTo(text));
    EXPECT_EQ(metaData.cameraParams, embedded);
    const std::string whole = textOf(metaData);
    EXPECT_NE(
        whole.find("\n   \"camera_params\" : {\n      \"a\" : [ 1, 2, 3 ],\n      \"b\" : {\n"),
        std::string::npos)
        << whole;
  }
}

struct Punctuation : std::numpunct<char> {
  Punctuation(char point, char separator) : point_(point), separator_(separator) {}
  char do_decimal_point() const override { return point_; }
  char do_thousands_sep() const override { return separator_; }
  std::string do_grouping() const override { return "\3"; }

  char point_, separator_;
};

TEST(ImgMetaData, KeepsNumbersInEveryLocale) {
  const std::string text =
      "{\"camera_params\":{\"f\":1234.5678,\"g\":[-0.25,1e-7,12345678.5E-3,1.5e300],"
      "\"i\":-1234567,\"huge\":123456789012345678901,/* 1.5 \" */\"s\":\"1.5\\\"2.5\" // 3.5\n}}";
  ImgMetaData expected;
  ASSERT_TRUE(expected.jsonTo(text.c_str()));
  const std::string expectedText = textOf(expected);
  EXPECT_NE(expectedText.find("1234.5678"), std::string::npos);
  can_data_io can;
  can_data_io_purge(&can);
  can.vehicle_speed = 1234.5F;

  for (const auto& [point, separator] : {std::pair{',', '.'}, {'.', ','}}) {
    SCOPED_TRACE(point);
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new Punctuation(point, separator)));
    ImgMetaData read;
    EXPECT_TRUE(read.jsonTo(text.c_str()));
    const std::string written = textOf(read);
    for (const char* broken : {"1.5.2", "1.5e", "1.5e400", "1.e", "1e5e6", "[1.5", "\"1.5"}) {
      EXPECT_FALSE(ImgMetaData().jsonTo((std::string("{\"k\":") + broken + "}").c_str())) << broken;
    }
    const std::string canText = can_data_toString(&can, CAN_SIZE_IO);
    std::locale::global(before);

    EXPECT_EQ(read.cameraParams, expected.cameraParams);
    EXPECT_EQ(written, expectedText);
    EXPECT_NE(canText.find("vehicle_speed: 1234.5, "), std::string::npos);
  }
}

TEST(ImgMetaData, RefusesWhatItCannotUse) {
  const std::string throws = "3 ImgMetaData_tag: readMetaData throw error";
  const std::string deep(10000, '[');
  const std::pair<std::string, std::string> rows[] = {
      {"", "3 ImgMetaData_tag: cMetaData = "},
      {"{\"a\":", "3 ImgMetaData_tag: cMetaData = {\"a\":"},
      {deep, throws},
      {"{\"camera_params\":" + deep, throws},
      {"[1]", throws},
      {"7", throws},
      {R"({"frames_count":-1})", throws},
      {R"({"frames_count":"many"})", throws},
      {R"({"width":[]})", throws},
      {R"({"version":{}})", throws},
      {R"({"undistorted":"yes"})", throws}};
  for (const auto& [text, line] : rows) {
    const LogCapture log;
    EXPECT_FALSE(ImgMetaData().jsonTo(text.c_str())) << text.substr(0, 60);
    EXPECT_TRUE(log.has(line)) << text.substr(0, 60);
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

// The blank behind a comment would let it swallow the next line.
TEST(ImgMetaData, KeepsWhatFollowsACommentThatEndsWithABlank) {
  ImgMetaData metaData;
  metaData.cameraParams = "{\"a\":[{}, // why \n2], \"b\":{\"c\":3} // why not \n} // end ";
  metaData.extendedInfo = "{\"d\":4} // done \n";
  metaData.framesCount = 7;
  std::string text;
  ASSERT_TRUE(metaData.toText(text));
  ImgMetaData again;
  ASSERT_TRUE(again.jsonTo(text.c_str()));
  EXPECT_EQ(again.framesCount, 7);
  Json::Value params;
  ASSERT_TRUE(parseJson(again.cameraParams, params));
  EXPECT_EQ(params["a"].size(), 2);
  EXPECT_EQ(params["b"]["c"], 3);
  Json::Value info;
  ASSERT_TRUE(parseJson(again.extendedInfo, info));
  EXPECT_EQ(info.getMemberNames(), std::vector<std::string>{"d"});
}

// The first two are no JSON, the others could not be read again.
TEST(ImgMetaData, RefusesToEmbedWhatIsNotJson) {
  const auto nested = [](int depth) { return std::string(depth, '[') + std::string(depth, ']'); };
  const std::pair<std::string, std::string> rows[] = {
      {"not JSON", "3 ImgMetaData_tag: reader.parse error"},
      {std::string(10000, '['), "3 ImgMetaData_tag: build json throw error"},
      {nested(1000), "3 ImgMetaData_tag: build json throw error"},
      {std::string("{//\0\n}", 6), "3 ImgMetaData_tag: build json throw error"},
      {"1/*/", "3 ImgMetaData_tag: build json throw error"},
      {nested(999), ""},
  };
  for (const auto& [json, line] : rows) {
    for (auto field : {&ImgMetaData::cameraParams, &ImgMetaData::extendedInfo}) {
      const LogCapture log;
      ImgMetaData metaData;
      metaData.*field = json;
      std::string text;
      EXPECT_EQ(metaData.toText(text), line.empty());
      EXPECT_EQ(log.errors(), line.empty() ? std::vector<std::string>() : std::vector{line});
      EXPECT_TRUE(!line.empty() || ImgMetaData().jsonTo(text.c_str()));
    }
  }
}

}  // namespace
