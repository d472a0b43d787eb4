#include "container/img/ImgContainerReader.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>

#include "container/img/ImgFiles.h"
#include "scene/SampleScene.h"
#include "support/Pictures.h"
#include "support/TestSupport.h"

namespace {

constexpr auto kNotComplete = VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
constexpr auto kNoBuffer = VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E;
constexpr auto kNotInit = VELMAR_ERROR_CODE_NOT_INIT_E;

using Reader = VelmarVideoFileReader;

class ImgReader : public testing::Test {
 protected:
  std::shared_ptr<Reader> opened(const std::string& bytes) {
    writeFile(path_, bytes);
    return openedReader(path_);
  }

  TempFolder folder_;
  const std::string path_ = folder_ / "a.img";
};

TEST_F(ImgReader, AnswersWhatTheFileSays) {
  auto frames = lettered({10, 0, 300});
  frames[1].arrivedTime = frames[0].arrivedTime - 1;
  const auto reader = opened(handMadeImg(frames));
  unsigned short width = 0, height = 0;
  EXPECT_EQ(got(*reader, &Reader::getVersion), VELMAR_VERSION_1_0_E);
  EXPECT_EQ(got(*reader, &Reader::getFramesCount), 3U);
  EXPECT_EQ(got(*reader, &Reader::getFramesMax), 4294967295U);
  EXPECT_EQ(reader->getImageResolution(width, height), kSuccess);
  EXPECT_EQ(width * 10000 + height, 1280 * 10000 + 800);
  EXPECT_EQ(got(*reader, &Reader::getColorFormat), VELMAR_FORMAT_GRAY_E);
  EXPECT_EQ(got(*reader, &Reader::getImageColorFormat), VELMAR_FORMAT_BGR_E);
  EXPECT_EQ(got(*reader, &Reader::getCodec), VELMAR_CODEC_JPG_E);
  EXPECT_EQ(got(*reader, &Reader::getUndistortFlags), 1U);
  EXPECT_EQ(got(*reader, &Reader::getStartTime), frames[0].arrivedTime);
  EXPECT_EQ(reader->getCameraParams(), "{\n   \"f\" : 1\n}\n");
  EXPECT_EQ(reader->getExtendedInfo(), "{\n   \"e\" : 2\n}\n");
  EXPECT_EQ(reader->getMetaInfo().substr(0, 27), "{\n   \"camera_id\" : \"0aff\",\n");
  for (unsigned int i = 0; i < 3; ++i) {
    EXPECT_EQ(got(*reader, &Reader::getTimeStamp, i), frames[i].arrivedTime);
    EXPECT_EQ(got(*reader, &Reader::getArrivedTime, i), frames[i].arrivedTime);
    EXPECT_EQ(got(*reader, &Reader::getSensorTime, i), frames[i].sensorTime);
    EXPECT_EQ(got(*reader, &Reader::getTimeFlag, i), frames[i].arrivedTime - frames[0].arrivedTime);
  }
}

TEST_F(ImgReader, FillsDeviceIdsWithZerosBehindTheText) {
  const std::pair<std::string, std::vector<unsigned char>> rows[] = {
      {"0aff", {0x0A, 0xFF}}, {"0aff", {0x0A}}, {"0AF", {0x0A, 0x0F, 0, 0}},
      {"", {0, 0}},           {"zz1", {0, 1}},  {"0aff", {}}};
  for (const auto& [text, bytes] : rows) {
    const auto reader = opened(handMadeImg({}, R"({"camera_id":")" + text + "\"}"));
    std::vector<unsigned char> buffer(bytes.size() + 1, 0xEE);
    EXPECT_EQ(reader->getDeviceId(buffer.data(), bytes.size()), kSuccess);
    EXPECT_EQ(buffer.back(), 0xEE);
    buffer.pop_back();
    EXPECT_EQ(buffer, bytes) << text;
    EXPECT_EQ(reader->getDeviceId(nullptr, 1), kNoBuffer);
  }
}

TEST_F(ImgReader, RefusesWhatIsNotAWholeFile) {
  const std::string good = handMadeImg(lettered({10, 20}));
  const std::size_t size = good.size();
  const std::string metaData = std::to_string(bigEndian(good, 0, 8));
  const auto metaDataAt = [&](unsigned long at) { return patched(good, 0, bigEndianBytes(at, 8)); };
  const auto frameAt = [&](unsigned long at) {
    return patched(good, 8 + 28 + 16, bigEndianBytes(at, 8));
  };
  const std::string sizeText = std::to_string(size);
  const struct {
    std::string bytes, last, first = {};
  } rows[] = {
      {"x", "readMetaDataOffset error", "metaDataOffset_ fileLength_ 0 : 1"},
      {metaDataAt(0), "readMetaDataOffset error", "metaDataOffset_ fileLength_ 0 : " + sizeText},
      {metaDataAt(7), "readMetaDataOffset error"},
      {metaDataAt(size + 1), "readMetaDataOffset error"},
      {metaDataAt(~0UL), "readMetaDataOffset error"},
      {metaDataAt(size), "readMetaData error"},
      {metaDataAt(size - 1), "readMetaData error",
       "fileLength_ = " + sizeText + " ,metaDataOffset_ = " + std::to_string(size - 1) +
           ", metaDataLength = 1"},
      {good.substr(0, size - 1), "readMetaData error"},
      {frameAt(7), "readFrameIndex error", "checkIndex frame index error 7 : " + metaData},
      {frameAt(bigEndian(good, 0, 8)), "readFrameIndex error"},
      {frameAt(~0UL), "readFrameIndex error"},
      {handMadeImg(lettered({10}), R"({"frames_count":4294967295})"), "readFrameIndex error"},
      {handMadeImg({}, R"({"frames_count":1})"), "readFrameIndex error"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.last + " " + std::to_string(&row - rows));
    const LogCapture log;
    writeFile(path_, row.bytes);
    const auto reader = makeVelmarVideoFileReader(path_);
    EXPECT_EQ(reader->open(), kNotComplete);
    EXPECT_TRUE(row.first.empty() || log.has("3 ImgContainerFormatAnalysis_Tag: " + row.first));
    EXPECT_TRUE(log.has("3 ImgContainerReader_TAG: " + row.last));
    unsigned long time = 0;
    EXPECT_EQ(reader->getSensorTime(0, time), kNotInit);
    EXPECT_EQ(reader->close(), kNotInit);
    EXPECT_EQ(reader->getCameraParams(), "{}");  // nothing is left of it
    // It is complete now: the same object reads it.
    writeFile(path_, good);
    EXPECT_EQ(reader->open(), kSuccess);
    EXPECT_EQ(got(*reader, &Reader::getSensorTime, 1), 5001000U);
  }
}

TEST_F(ImgReader, ClosedReaderNeverUnmapsAnother) {
  const std::string file = handMadeImg(lettered({10000}));
  auto first = opened(file);
  ASSERT_EQ(first->close(), kSuccess);
  const auto second = opened(file);
  first.reset();
  EXPECT_EQ(storedFrame(*second, 0), std::string(10000, 'A'));
}

TEST_F(ImgReader, DecodesOnAfterADamagedFrame) {
  const std::string whole = SampleScene(160, 96).jpeg(1);
  std::string damaged = whole;
  damaged.replace(damaged.size() / 2, 400, 400, '\xFF');
  const std::string other = uniformJpeg(160, 96, Coding::Optimized);
  const std::string large = claiming(65500, 65500, uniformJpeg(160, 96, Coding::Progressive));
  // Tables that a refused frame leaves behind would serve the first one.
  const std::vector<TestFrame> frames = {{withoutHuffmanTables(whole)},
                                         {damaged},
                                         {whole.substr(0, whole.size() / 2)},
                                         {"no JPEG"},
                                         {""},
                                         {tablesOf(other)},
                                         {large},
                                         {other.substr(0, other.size() - 8)}};
  const auto reader = opened(handMadeImg(frames, "", 160, 96));
  std::vector<unsigned char> pixels(160 * 96 * 3);
  for (const unsigned short top : {0, 16}) {
    const auto decode = [&](unsigned int index) {
      return reader->getImage(index, pixels.size() - 160 * 3 * top, pixels.data(),
                              VELMAR_FORMAT_RGB_E, SCALE_FACTOR_1_1_E, top, 0);
    };
    for (unsigned int index = 1; index < frames.size(); ++index) {
      EXPECT_EQ(decode(index), VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E) << index;
      EXPECT_EQ(decode(0), kSuccess) << "after " << index;
    }
  }
}

// Millions of pixels in 130 bytes, for which the decoder takes no more memory than for others.
TEST_F(ImgReader, DecodesWhatIsSmallForGoodReason) {
  for (const int side : {2048, 6000}) {
    const std::string jpeg = uniformJpeg(side, side, Coding::Arithmetic);
    EXPECT_LT(jpeg.size(), 200U);
    const auto reader = opened(handMadeImg({{jpeg}}, "", side, side));
    std::vector<unsigned char> pixels(static_cast<std::size_t>(side / 8) * (side / 8));
    EXPECT_EQ(reader->getImage(0, pixels.size(), pixels.data(), VELMAR_FORMAT_GRAY_E,
                               SCALE_FACTOR_1_8_E, 0, 0),
              kSuccess);
    EXPECT_EQ(pixels, std::vector<unsigned char>(pixels.size(), 128));
  }
}

// Rows that a smaller frame leaves out must not show the frame before.
TEST_F(ImgReader, CutPicturesNeverShowAnEarlierFrame) {
  const auto reader = opened(
      handMadeImg({{SampleScene(160, 96).jpeg(1)}, {SampleScene(100, 50).jpeg(2)}}, "", 160, 96));
  const auto decode = [&](unsigned int index) {
    std::vector<unsigned char> pixels(160 * 80, 'k');
    EXPECT_EQ(reader->getImage(index, pixels.size(), pixels.data(), VELMAR_FORMAT_GRAY_E,
                               SCALE_FACTOR_1_1_E, 16, 0),
              kSuccess);
    return pixels;
  };
  decode(0);
  const auto pixels = decode(1);
  EXPECT_TRUE(std::all_of(pixels.end() - 160, pixels.end(), [](auto pixel) { return pixel == 0; }));
}

// The header is as large as can be, the frame small.
TEST_F(ImgReader, CutPicturesNeedNoMemoryForRowsThatNoFrameHas) {
  constexpr std::size_t kSize = 65535 * 16;
  const auto reader = opened(handMadeImg({{SampleScene(16, 8).jpeg(0)}}, "", 65535, 65535));
  EXPECT_TRUE(inChildProcess([&] {
    std::vector<unsigned char> pixels(kSize, 'k');
    unsigned long pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlim_t most = pages * ::sysconf(_SC_PAGESIZE) + (256UL << 20);
    const rlimit limit{most, most};
    return ::setrlimit(RLIMIT_AS, &limit) == 0 &&
           reader->getImage(0, kSize, pixels.data(), VELMAR_FORMAT_GRAY_E, SCALE_FACTOR_1_1_E,
                            65535 - 16, 0) == kSuccess &&
           std::all_of(pixels.begin(), pixels.end(), [](auto pixel) { return pixel == 0; });
  }));
}

}  // namespace
