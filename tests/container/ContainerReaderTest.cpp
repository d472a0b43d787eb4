// What readers of both containers have in common.
#include <gtest/gtest.h>

#include "SampleScene.h"
#include "container/img/ImgFiles.h"
#include "container/rtv/RtvFiles.h"
#include "support/Decoding.h"
#include "support/TestSupport.h"

namespace {

constexpr auto kSuccess = VELMAR_ERROR_CODE_SUCCESS_E;
constexpr auto kInvalid = VELMAR_ERROR_CODE_INVALID_PARAMETER_E;
constexpr auto kNotSupported = VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E;
constexpr auto kNotComplete = VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;

class Readers : public testing::Test {
 protected:
  std::shared_ptr<VelmarVideoFileReader> opened(const std::string& name, const std::string& bytes) {
    writeFile(folder_ / name, bytes);
    auto reader = makeVelmarVideoFileReader(folder_ / name);
    EXPECT_EQ(reader->open(), kSuccess);
    return reader;
  }

  TempFolder folder_;
};

RtvFile rtvFile(const std::vector<std::string>& frames, unsigned width, unsigned height) {
  RtvFile file;
  file.width = width;
  file.height = height;
  for (const std::string& frame : frames) file.frames.push_back({frame});
  return file;
}

TEST_F(Readers, RefuseWhatTheyCannotMap) {
  const struct {
    std::string name;
    VELMAR_ERROR_CODE_E code;
    std::string line;
  } rows[] = {{"none", VELMAR_ERROR_CODE_FILE_NOT_EXIST_E, "checkFileAccess error"},
              {"empty", VELMAR_ERROR_CODE_FILE_SIZE_IS_ZERO_E, "openMap error"},
              {"folder", VELMAR_ERROR_CODE_FILE_MMAP_FAIL_E, "openMap error"}};
  for (const std::string extension : {".img", ".rtv"}) {
    writeFile(folder_ / ("empty" + extension), "");
    std::filesystem::create_directory(folder_ / ("folder" + extension));
    for (const auto& row : rows) {
      const LogCapture log;
      EXPECT_EQ(makeVelmarVideoFileReader(folder_ / (row.name + extension))->open(), row.code);
      EXPECT_EQ(log.has("3 ImgContainerReader_TAG: " + row.line), extension == ".img");
    }
  }
}

TEST_F(Readers, ReadTheFramesBesidesACutOne) {
  std::vector<std::pair<std::string, std::string>> files = {
      {"a.img",
       patched(handMadeImg({{"first"}, {"second"}}, "", 8, 8), 8 + 24, "\xFF\xFF\xFF\xFF")},
  };
  const RtvFile rtv = rtvFile({"first", "second"}, 8, 8);
  const unsigned long size = rtv.bytes().size();
  const std::pair<unsigned long, unsigned int> ranges[] = {
      {size, 1}, {size - 5, 6}, {~0UL, 5}, {~0UL - 3, 4}, {0, 0xFFFFFFFF}};
  for (const auto& [offset, length] : ranges) {
    const std::string range = rtv.number(offset, 8) + rtv.number(length, 4);
    files.emplace_back("a.rtv", patched(rtv.bytes(), 72 + 4, range));
  }
  for (const auto& [name, bytes] : files) {
    SCOPED_TRACE(name);
    const auto reader = opened(name, bytes);
    std::string data;
    unsigned char pixels[64];
    EXPECT_EQ(reader->getRawImage(0, data), kNotComplete);
    EXPECT_EQ(reader->getRawImage(0, 0xFFFFFFFF, pixels), kNotComplete);
    EXPECT_EQ(reader->getImage(0, 64, pixels, VELMAR_FORMAT_GRAY_E, SCALE_FACTOR_1_1_E, 0, 0),
              kNotComplete);
    EXPECT_EQ(data, "");
    EXPECT_EQ(reader->getRawImage(1, data), kSuccess);
    EXPECT_EQ(data, "second");
  }
}

TEST_F(Readers, DecodeExactlyAsTurboJpeg) {
  const std::string jpeg = SampleScene(331, 203).jpeg(7);
  expectExactPixels(*opened("a.img", handMadeImg({{jpeg}}, "", 331, 203)), jpeg, 331, 203);
  expectExactPixels(*opened("a.rtv", rtvFile({jpeg}, 331, 203).bytes()), jpeg, 331, 203);
}

TEST_F(Readers, DecodeRealFramesExactly) {
  const std::string stills = std::string(VELMAR_SHARED_DATA) + "/stills/";
  if (!exists(stills)) GTEST_SKIP() << "no real frames here";
  const struct {
    const char* name;
    int width, height;
  } rows[] = {{"gray_960x540.jpg", 960, 540},
              {"odd420_641x479.jpg", 641, 479},
              {"progressive420_1280x720.jpg", 1280, 720},
              {"restart422_960x540.jpg", 960, 540},
              {"yuv444_1280x720.jpg", 1280, 720}};
  for (const auto& [name, width, height] : rows) {
    SCOPED_TRACE(name);
    const std::string jpeg = readFile(stills + name);
    const auto reader = opened("a.img", handMadeImg({{jpeg}}, "", width, height));
    expectExactPixels(*reader, jpeg, width, height);
  }
}

TEST_F(Readers, RefusePicturesThatCannotBe) {
  const std::vector<std::string> img = {"a.img"};
  const std::vector<std::string> rtv = {"a.rtv"};
  const std::vector<std::string> both = {"a.img", "a.rtv"};
  constexpr auto kRgb = VELMAR_FORMAT_RGB_E;
  constexpr auto kBgr = VELMAR_FORMAT_BGR_E;
  constexpr auto kGray = VELMAR_FORMAT_GRAY_E;
  const struct {
    std::vector<std::string> names;
    unsigned width, height;
    VELMAR_FORMAT_E format;
    int scale;
    unsigned short top, bottom;
    VELMAR_ERROR_CODE_E code;
    unsigned int size;
  } rows[] = {
      {both, 1280, 800, kBgr, SCALE_FACTOR_1_2_E, 100, 50, kSuccess, 624000},
      {both, 1920, 1080, kBgr, SCALE_FACTOR_1_2_E, 0, 0, kSuccess, 1555200},
      {both, 1000, 8, kGray, SCALE_FACTOR_3_8_E, 0, 0, kSuccess, 375 * 3},
      {both, 100, 80, kGray, SCALE_FACTOR_MAX_E, 0, 0, kSuccess, 8000},
      {rtv, 100, 80, kGray, SCALE_FACTOR_MAX_E + 1, 0, 0, kSuccess, 8000},
      {img, 100, 80, kGray, SCALE_FACTOR_MAX_E + 1, 0, 0, kInvalid, 0},
      {img, 100, 80, kGray, -1, 0, 0, kInvalid, 0},
      {img, 100, 80, VELMAR_FORMAT_MAX_E, 0, 0, 0, kNotSupported, 0},
      {both, 100, 80, VELMAR_FORMAT_YUV420_E, 0, 0, 0, kNotSupported, 0},
      {both, 100, 80, kRgb, 0, 80, 0, kSuccess, 0},
      {both, 100, 80, kRgb, 0, 80, 1, kInvalid, 0},
      {both, 100, 80, kRgb, 0, 65535, 65535, kInvalid, 0},
      {both, 65535, 65535, kRgb, 0, 0, 0, kInvalid, 0},
      {both, 0, 80, kRgb, 0, 0, 0, kSuccess, 0},
      {both, 100, 0, kRgb, 0, 0, 0, kSuccess, 0},
  };
  for (const auto& row : rows) {
    for (const std::string& name : row.names) {
      SCOPED_TRACE(name + " " + std::to_string(&row - rows));
      const LogCapture log;
      const auto reader = opened(
          name, name == "a.img" ? handMadeImg({{"first"}, {"second"}}, "", row.width, row.height)
                                : rtvFile({"first", "second"}, row.width, row.height).bytes());
      const auto scale = static_cast<SCALE_FACTOR_E>(row.scale);
      const auto decode = [&](unsigned int size, unsigned char* buffer) {
        return reader->getImage(1, size, buffer, row.format, scale, row.top, row.bottom);
      };
      unsigned int size = 0;
      EXPECT_EQ(reader->getImageSizeInBytes(size, row.format, scale, row.top, row.bottom, nullptr,
                                            nullptr),
                row.code);
      EXPECT_EQ(size, row.size);
      const bool isTried = row.code == kSuccess && row.width > 0 && row.height > 0;
      const auto failed = isTried ? VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E : kInvalid;
      EXPECT_EQ(decode(size, std::vector<unsigned char>(size + 1).data()),
                row.code == kSuccess ? failed : row.code);
      EXPECT_EQ(log.has("3 TaggedVideoParser: tjDecompress2 error: Not a JPEG file: starts with "
                        "0x73 0x65, index: 1, r_index: 1\n"),
                isTried && name == "a.rtv");
      if (size == 0) continue;
      EXPECT_EQ(decode(size + 1, nullptr), kInvalid);
      EXPECT_EQ(decode(size, nullptr), VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E);
    }
  }
}

}  // namespace
