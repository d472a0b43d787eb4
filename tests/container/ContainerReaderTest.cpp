// What readers of both containers have in common.
#include <gtest/gtest.h>
#include <turbojpeg.h>

#include "container/img/ImgFiles.h"
#include "container/rtv/RtvFiles.h"
#include "scene/SampleScene.h"
#include "support/Pictures.h"
#include "support/TestSupport.h"

namespace {

constexpr auto kNotInit = VELMAR_ERROR_CODE_NOT_INIT_E;
constexpr auto kInvalid = VELMAR_ERROR_CODE_INVALID_PARAMETER_E;
constexpr auto kNotSupported = VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E;
constexpr auto kNotComplete = VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
constexpr auto kNoBuffer = VELMAR_ERROR_CODE_BUFFER_NOT_ALLOCATED_E;

using Reader = VelmarVideoFileReader;

class Readers : public testing::Test {
 protected:
  std::shared_ptr<Reader> opened(const std::string& name, const std::string& bytes) {
    writeFile(folder_ / name, bytes);
    return openedReader(folder_ / name);
  }

  TempFolder folder_;
};

RtvFile rtvFile(const std::vector<std::string>& frames, unsigned width, unsigned height) {
  RtvFile file{.width = width, .height = height};
  for (const std::string& frame : frames) file.frames.push_back({frame});
  return file;
}

std::string twoFrames(const std::string& name, unsigned width, unsigned height) {
  return name == "a.img" ? handMadeImg({{"first"}, {"second"}}, "", width, height)
                         : rtvFile({"first", "second"}, width, height).bytes();
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

// Every operation that takes a frame index, with outputs that must stay as they were.
void expectNoFrame(Reader& reader, unsigned int index, VELMAR_ERROR_CODE_E expected) {
  unsigned long time = 4711;
  unsigned int size = 4711;
  std::string bytes = "kept";
  unsigned char buffer[64] = {'k'};
  for (const auto answer :
       {reader.getTimeFlag(index, time), reader.getTimeStamp(index, time),
        reader.getArrivedTime(index, time), reader.getSensorTime(index, time),
        reader.getRawImageSize(index, size, false), reader.getRawImage(index, 64, buffer),
        reader.getRawImage(index, bytes),
        reader.getImage(index, 64, buffer, VELMAR_FORMAT_GRAY_E, SCALE_FACTOR_1_1_E, 0, 0)}) {
    EXPECT_EQ(answer, expected);
  }
  EXPECT_TRUE(time == 4711 && size == 4711 && bytes == "kept" && buffer[0] == 'k');
}

TEST_F(Readers, GiveNoFrameOutsideTheirLife) {
  const struct {
    std::string name;
    VELMAR_ERROR_CODE_E closed, noFrame;
  } rows[] = {{"a.img", kNotInit, VELMAR_ERROR_CODE_OUT_RANGE_E}, {"a.rtv", kSuccess, kInvalid}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    writeFile(folder_ / row.name, twoFrames(row.name, 8, 8));
    const auto reader = makeVelmarVideoFileReader(folder_ / row.name);
    const auto expectClosed = [&] {
      EXPECT_EQ(reader->loadAllFromFile(), kNotInit);
      EXPECT_EQ(reader->close(), row.closed);
      expectNoFrame(*reader, 0, kNotInit);
    };
    expectClosed();
    ASSERT_EQ(reader->open(), kSuccess);
    EXPECT_EQ(reader->open(), VELMAR_ERROR_CODE_DUPLICATE_INIT_E);
    expectNoFrame(*reader, 2, row.noFrame);
    expectNoFrame(*reader, 3, row.noFrame);
    EXPECT_EQ(reader->loadAllFromFile(), kSuccess);
    EXPECT_EQ(reader->close(), kSuccess);
    expectClosed();
    writeFile(folder_ / row.name, twoFrames(row.name, 40, 30));
    EXPECT_EQ(reader->open(), kSuccess);
    unsigned short width = 0, height = 0;
    EXPECT_EQ(reader->getImageResolution(width, height), kSuccess);
    EXPECT_EQ(width * 100 + height, 4030);
    EXPECT_EQ(storedFrame(*reader, 1), "second");
  }
}

// img: the frame count itself is an index like any other until everything else is right.
TEST_F(Readers, LookAtTheArgumentsOfAPictureInTheirOrder) {
  const auto reader = opened("a.img", twoFrames("a.img", 8, 8));
  unsigned char pixels[64];
  const auto answer = [&](unsigned int index, VELMAR_FORMAT_E format, unsigned int size,
                          unsigned char* buffer) {
    return reader->getImage(index, size, buffer, format, SCALE_FACTOR_1_1_E, 0, 0);
  };
  EXPECT_EQ(answer(3, VELMAR_FORMAT_YUV420_E, 1, nullptr), VELMAR_ERROR_CODE_OUT_RANGE_E);
  EXPECT_EQ(answer(2, VELMAR_FORMAT_YUV420_E, 1, nullptr), kNotSupported);
  EXPECT_EQ(answer(2, VELMAR_FORMAT_GRAY_E, 1, nullptr), kInvalid);
  EXPECT_EQ(answer(2, VELMAR_FORMAT_GRAY_E, 64, nullptr), kNoBuffer);
  EXPECT_EQ(answer(2, VELMAR_FORMAT_GRAY_E, 64, pixels), VELMAR_ERROR_CODE_OUT_RANGE_E);
}

TEST_F(Readers, GiveTheStoredBytes) {
  const std::vector<std::string> frames = {"first", "", "third"};
  for (const int version : {0, 2, 3, 4}) {  // 0: an img file
    RtvFile rtv = rtvFile(frames, 8, 8);
    rtv.version = version;
    const auto reader = version == 0
                            ? opened("a.img", handMadeImg({{frames[0]}, {""}, {frames[2]}}))
                            : opened("a.rtv", rtv.bytes());
    std::string data = "before ";
    std::string expected = data;
    for (unsigned int i = 0; i < 3; ++i) {
      const unsigned int size = frames[i].size();
      unsigned int told = 0;
      std::string buffer(size + 2, '.');
      EXPECT_EQ(reader->getRawImageSize(i, told, true), kSuccess);
      EXPECT_EQ(told, size);
      EXPECT_EQ(reader->getRawImage(i, size + 1, reinterpret_cast<unsigned char*>(buffer.data())),
                kSuccess);
      EXPECT_EQ(buffer, frames[i] + "..");
      EXPECT_EQ(reader->getRawImage(i, data), kSuccess);
      expected = version == 0 ? expected + frames[i] : frames[i];
      EXPECT_EQ(data, expected);
      if (size == 0) continue;
      EXPECT_EQ(reader->getRawImage(i, size - 1, nullptr), kInvalid);
      EXPECT_EQ(reader->getRawImage(i, size, nullptr), kNoBuffer);
    }
  }
}

TEST_F(Readers, ReadTheFramesBesidesACutOne) {
  std::vector<std::pair<std::string, std::string>> files = {
      {"a.img", patched(twoFrames("a.img", 8, 8), 8 + 24, "\xFF\xFF\xFF\xFF")},
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
    EXPECT_EQ(storedFrame(*reader, 1), "second");
  }
}

// What TurboJPEG makes of the whole picture, with the kept rows cut out of it.
std::vector<unsigned char> decodedDirectly(const std::string& jpeg, int width, int height,
                                           tjscalingfactor factor, int pixelFormat, int top,
                                           int bottom) {
  const int w = TJSCALED(width, factor);
  const int h = TJSCALED(height, factor);
  const int pitch = w * tjPixelSize[pixelFormat];
  std::vector<unsigned char> whole(static_cast<std::size_t>(pitch) * h);
  tjhandle handle = tjInitDecompress();
  EXPECT_EQ(tjDecompress2(handle, reinterpret_cast<const unsigned char*>(jpeg.data()), jpeg.size(),
                          whole.data(), w, pitch, h, pixelFormat, 0),
            0);
  tjDestroy(handle);
  return {whole.begin() + static_cast<long>(TJSCALED(top, factor)) * pitch,
          whole.end() - static_cast<long>(TJSCALED(bottom, factor)) * pitch};
}

// Frame 0, which is `jpeg`, at every scale, format and cut.
void expectExactPixels(Reader& reader, const std::string& jpeg, int width, int height) {
  const tjscalingfactor factors[] = {{1, 1}, {7, 8}, {3, 4}, {5, 8}, {1, 2},
                                     {3, 8}, {1, 4}, {1, 8}, {1, 1}};
  const int pixelFormats[] = {TJPF_RGB, TJPF_BGR, TJPF_GRAY};
  const unsigned short cuts[][2] = {{0, 0}, {33, 0}, {0, 17}, {100, 51}};
  for (int scale = SCALE_FACTOR_1_1_E; scale <= SCALE_FACTOR_MAX_E; ++scale) {
    for (int format = VELMAR_FORMAT_RGB_E; format <= VELMAR_FORMAT_GRAY_E; ++format) {
      for (const auto& [top, bottom] : cuts) {
        const auto s = static_cast<SCALE_FACTOR_E>(scale);
        const auto f = static_cast<VELMAR_FORMAT_E>(format);
        const auto expected = decodedDirectly(jpeg, width, height, factors[scale],
                                              pixelFormats[format - 1], top, bottom);
        unsigned int size = 0;
        unsigned short w = 0, h = 0;
        ASSERT_EQ(reader.getImageSizeInBytes(size, f, s, top, bottom, &w, &h), kSuccess);
        ASSERT_EQ(size, expected.size());
        EXPECT_EQ(w, TJSCALED(width, factors[scale]));
        EXPECT_EQ(h * w * tjPixelSize[pixelFormats[format - 1]], static_cast<int>(size));
        std::vector<unsigned char> pixels(size);
        ASSERT_EQ(reader.getImage(0, size, pixels.data(), f, s, top, bottom), kSuccess);
        ASSERT_TRUE(pixels == expected) << "scale " << scale << " format " << format;
      }
    }
  }
}

TEST_F(Readers, DecodeExactlyAsTurboJpeg) {
  const std::string jpeg = SampleScene(331, 203).jpeg(7);
  expectExactPixels(*opened("a.img", handMadeImg({{jpeg}}, "", 331, 203)), jpeg, 331, 203);
  expectExactPixels(*opened("a.rtv", rtvFile({jpeg}, 331, 203).bytes()), jpeg, 331, 203);
  const std::string grey = uniformJpeg(331, 203, Coding::Progressive);
  expectExactPixels(*opened("a.img", handMadeImg({{grey}}, "", 331, 203)), grey, 331, 203);
}

TEST_F(Readers, RefusePicturesThatCannotBe) {
  constexpr auto kRgb = VELMAR_FORMAT_RGB_E;
  constexpr auto kBgr = VELMAR_FORMAT_BGR_E;
  constexpr auto kGray = VELMAR_FORMAT_GRAY_E;
  const struct {
    std::string only;  // the container that it is about
    unsigned width, height;
    VELMAR_FORMAT_E format;
    int scale;
    unsigned short top, bottom;
    VELMAR_ERROR_CODE_E code;
    unsigned int size;
  } rows[] = {
      {"", 1280, 800, kBgr, SCALE_FACTOR_1_2_E, 100, 50, kSuccess, 624000},
      {"", 1920, 1080, kBgr, SCALE_FACTOR_1_2_E, 0, 0, kSuccess, 1555200},
      {"", 1000, 8, kGray, SCALE_FACTOR_3_8_E, 0, 0, kSuccess, 375 * 3},
      {"", 100, 80, kGray, SCALE_FACTOR_MAX_E, 0, 0, kSuccess, 8000},
      {"a.rtv", 100, 80, kGray, SCALE_FACTOR_MAX_E + 1, 0, 0, kSuccess, 8000},
      {"a.img", 100, 80, kGray, SCALE_FACTOR_MAX_E + 1, 0, 0, kInvalid, 0},
      {"a.img", 100, 80, kGray, -1, 0, 0, kInvalid, 0},
      {"a.img", 100, 80, VELMAR_FORMAT_MAX_E, 0, 0, 0, kNotSupported, 0},
      {"", 100, 80, VELMAR_FORMAT_YUV420_E, 0, 0, 0, kNotSupported, 0},
      {"", 100, 80, kRgb, 0, 80, 0, kSuccess, 0},
      {"", 100, 80, kRgb, 0, 80, 1, kInvalid, 0},
      {"", 100, 80, kRgb, 0, 65535, 65535, kInvalid, 0},
      {"", 65535, 65535, kRgb, 0, 0, 0, kInvalid, 0},
      {"", 0, 80, kRgb, 0, 0, 0, kSuccess, 0},
      {"", 100, 0, kRgb, 0, 0, 0, kSuccess, 0},
  };
  for (const auto& row : rows) {
    for (const std::string name : {"a.img", "a.rtv"}) {
      if (!row.only.empty() && row.only != name) continue;
      SCOPED_TRACE(name + " " + std::to_string(&row - rows));
      const LogCapture log;
      const auto reader = opened(name, twoFrames(name, row.width, row.height));
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
      EXPECT_EQ(decode(size, nullptr), kNoBuffer);
    }
  }
}

}  // namespace
