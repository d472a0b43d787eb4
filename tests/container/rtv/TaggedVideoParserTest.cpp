#include "velmar_video/rtv/TaggedVideoParser.h"

#include <gtest/gtest.h>

#include <cstring>

#include "SampleScene.h"
#include "container/rtv/RtvFiles.h"
#include "support/TestSupport.h"
#include "velmar_video/rtv/RecordFile.h"

namespace {

constexpr int kSuccess = RTV_ERR_SUCCESS;

RtvFile threeFrames(int version) {
  RtvFile file;
  file.version = version;
  file.deviceId = "0123456789abcdefghijklmn";
  file.startTime = 1000000;
  file.lng = 1073741824;
  file.lat = -536870912;
  file.alt = 12345;
  file.framesMax = 9;
  file.width = 1280;
  file.height = 800;
  file.format = RTV_FMT_GRAY;
  file.codec = RTV_CODEC_H264;
  file.taggingFlags = 0x11;
  std::string can = RtvFrame().can;
  can.replace(53, 4, std::string("\x00\x00\x54\x41", 4));  // vehicle_speed 13.25
  can[105] = 1;                                            // abs_active
  file.frames = {{"first", -500, 150, -250, 375, 12345, 1388, 359, can},
                 {"second", 500, -1, 8388607, 0, 0xFFFFFF, 0, 1},
                 {"third", 700}};
  return file;
}

class RtvParser : public testing::Test {
 protected:
  int init(const std::string& bytes) {
    writeFile(path_, bytes);
    return parser_.init(path_.c_str());
  }

  TempFolder folder_;
  const std::string path_ = folder_ / "a.rtv";
  TaggedVideoParser parser_;
};

class RtvParserVersions : public RtvParser, public testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Versions, RtvParserVersions, testing::Values(2, 3, 4));

TEST_P(RtvParserVersions, AnswersWhatTheHeaderSays) {
  const RtvFile file = threeFrames(GetParam());
  ASSERT_EQ(init(file.bytes()), kSuccess);
  version_e version{};
  unsigned short number = 0;
  unsigned short height = 0;
  format_e format{};
  codec_e codec{};
  unsigned long time = 0;
  unsigned int flags = 0;
  unsigned char id[33];
  double lat = 0;
  double lng = 0;
  double alt = 0;
  EXPECT_EQ(parser_.getVersion(version), kSuccess);
  EXPECT_EQ(version + 2, GetParam());
  EXPECT_EQ(parser_.getFramesCount(number), kSuccess);
  EXPECT_EQ(number, 3);
  EXPECT_EQ(parser_.getFramesMax(number), kSuccess);
  EXPECT_EQ(number, 9);
  EXPECT_EQ(parser_.getImageResolution(number, height), kSuccess);
  EXPECT_EQ(number * 10000 + height, 1280 * 10000 + 800);
  EXPECT_EQ(parser_.getColorFormat(format), kSuccess);
  EXPECT_EQ(format, RTV_FMT_GRAY);
  EXPECT_EQ(parser_.getImageColorFormat(format), kSuccess);
  EXPECT_EQ(format, RTV_FMT_BGR);
  EXPECT_EQ(parser_.getCodec(codec), kSuccess);
  EXPECT_EQ(codec, RTV_CODEC_H264);
  EXPECT_EQ(parser_.getStartTime(time), kSuccess);
  EXPECT_EQ(time, 1000000U);
  EXPECT_EQ(parser_.getTaggingFlags(flags), kSuccess);
  EXPECT_EQ(flags, 0x11U);
  std::memset(id, '.', sizeof id);
  EXPECT_EQ(parser_.getDeviceId(id, 23), RTV_ERR_INVALID_PARAMETER);
  EXPECT_EQ(parser_.getDeviceId(nullptr, 24), RTV_ERR_BUFFER_NOT_ALLOCATED);
  EXPECT_EQ(parser_.getDeviceId(id, 33), kSuccess);
  EXPECT_EQ(std::string(id, id + 33), file.deviceId + ".........");
  EXPECT_EQ(parser_.getStdPosition(lat, lng, alt), kSuccess);
  EXPECT_EQ(lng, 90.0);
  EXPECT_EQ(lat, -45.0);
  EXPECT_EQ(alt, GetParam() == 2 ? 0.0 : GetParam() == 3 ? 12345.0 : 123.45);
}

TEST_P(RtvParserVersions, AnswersWhatTheTagsSay) {
  ASSERT_EQ(init(threeFrames(GetParam()).bytes()), kSuccess);
  const bool is02 = GetParam() == 2;
  const unsigned long start = (is02 ? 1420070400000 : 0) + 1000000;
  const struct {
    int timeFlag;
    float a, b, c, distance, speed, direction;
  } rows[] = {{-500, -2.5F, 1.5F, is02 ? 0.0F : 3.75F, 123.45F, 13.88F, 359},
              {500, 83886.07F, -0.01F, 0, is02 ? -0.01F : 167772.15F, 0, 1},
              {700, 0, 0, 0, 0, 0, 0}};
  for (unsigned short i = 0; i < 3; ++i) {
    int flag = 0;
    unsigned long time = 0;
    float a = 0;
    float b = 0;
    float c = 0;
    EXPECT_EQ(parser_.getTimeFlag(i, flag), kSuccess);
    EXPECT_EQ(flag, rows[i].timeFlag);
    EXPECT_EQ(parser_.getTimeStamp(i, time), kSuccess);
    EXPECT_EQ(time, start + std::abs(rows[i].timeFlag));
    EXPECT_EQ(parser_.getRelPosition(i, a, b, c), kSuccess);
    EXPECT_EQ(a, rows[i].a);
    EXPECT_EQ(b, rows[i].b);
    EXPECT_EQ(c, rows[i].c);
    EXPECT_EQ(parser_.getRelDistance(i, a), kSuccess);
    EXPECT_EQ(a, rows[i].distance);
    EXPECT_EQ(parser_.getSpeed(i, a), kSuccess);
    EXPECT_EQ(a, rows[i].speed);
    EXPECT_EQ(parser_.getDirection(i, a), kSuccess);
    EXPECT_EQ(a, rows[i].direction);
    frametag03Ver_t tag;
    EXPECT_EQ(parser_.getTag(i, tag), kSuccess);
    EXPECT_EQ(tag.x / 100.0F, rows[i].b);
    EXPECT_EQ(tag.z / 100.0F, rows[i].c);
    EXPECT_EQ(tag.speed / 100.0F, rows[i].speed);
  }
}

TEST_P(RtvParserVersions, GivesTheStoredBytes) {
  const RtvFile file = threeFrames(GetParam());
  ASSERT_EQ(init(file.bytes()), kSuccess);
  std::string bytes = "replaced";
  unsigned char buffer[6] = {};
  unsigned int size = 0;
  for (unsigned short i = 0; i < 3; ++i) {
    EXPECT_EQ(parser_.getRawImageSize(i, size, true), kSuccess);
    EXPECT_EQ(size, file.frames[i].bytes.size());
    EXPECT_EQ(parser_.getRawImage(i, bytes), kSuccess);
    EXPECT_EQ(bytes, file.frames[i].bytes);
    EXPECT_EQ(parser_.getRawImage(i, size, buffer), kSuccess);
    EXPECT_EQ(parser_.getRawImage(i, size - 1, buffer), RTV_ERR_INVALID_PARAMETER);
    EXPECT_EQ(parser_.getRawImage(i, size, nullptr), RTV_ERR_BUFFER_NOT_ALLOCATED);
  }
}

TEST_P(RtvParserVersions, GivesTheCanSignalsOfTheFile) {
  const RtvFile file = threeFrames(GetParam());
  ASSERT_EQ(init(file.bytes()), kSuccess);
  can_data_io record;
  for (unsigned short i = 0; i < 3; ++i) {
    ASSERT_EQ(parser_.getCANRecord(i, record), kSuccess);
    const std::string bytes(reinterpret_cast<const char*>(&record), sizeof record);
    EXPECT_EQ(bytes, GetParam() == 4 ? file.frames[i].can : RtvFrame().can);
  }
  EXPECT_EQ(parser_.getCANRecord(3, record), RTV_ERR_INVALID_PARAMETER);
  can_data can;
  EXPECT_EQ(parser_.getCAN(60000, can), GetParam() == 4 ? RTV_ERR_INVALID_PARAMETER : kSuccess);
}

// The tag in the array is a copy of an aligned block and getCAN() copies once more.
TEST_F(RtvParser, GetCanCopiesAlignedBlocksAsIfTheyWerePacked) {
  const RtvFile file = threeFrames(4);
  ASSERT_EQ(init(file.bytes()), kSuccess);
  can_data expected;
  std::memset(&expected, 0, sizeof expected);
  std::memcpy(&expected, file.frames[0].can.data(), 109);
  for (int i = 0; i < 3; ++i) can_data_init_ptr(&expected, true);
  can_data can;
  ASSERT_EQ(parser_.getCAN(0, can), kSuccess);
  EXPECT_EQ(std::memcmp(&can, &expected, 128), 0);
  EXPECT_NE(can.vehicle_speed, 13.25F);
}

TEST(RtvTag, CopiesByTheRuleAndMovesAsItIs) {
  RecordFile owner;
  const RtvFile file = threeFrames(4);
  const std::string raw = file.tag(file.frames[0], 4711);
  RecordFile::frametag_t tag(&owner);
  for (const unsigned size : {0U, 108U, 110U, 383U, 385U}) {
    EXPECT_FALSE(tag.fill(raw.data(), static_cast<CAN_SIZE>(size)));
    EXPECT_EQ(tag.pCan(), nullptr);
    EXPECT_EQ(tag.data_offset(), 0U);
  }
  ASSERT_TRUE(tag.fill(raw.data(), CAN_SIZE_IO));
  EXPECT_EQ(tag.x() * 1000 + tag.z(), 150 * 1000 + 375);
  const RecordFile::frametag_t packed(tag);
  EXPECT_EQ(std::memcmp(packed.pCan(), raw.data() + 36, 109), 0);

  ASSERT_TRUE(tag.fill(raw.data(), CAN_SIZE_ALIGNED));
  EXPECT_EQ(*tag.pCan()->pVehicle_speed, 13.25F);
  RecordFile::frametag_t copy(&owner);
  copy = tag;
  EXPECT_EQ(copy.data_offset(), 4711U);
  EXPECT_NE(copy.pCan()->vehicle_speed, 13.25F);
  const RecordFile::frametag_t moved(std::move(tag));
  EXPECT_EQ(*moved.pCan()->pVehicle_speed, 13.25F);
  EXPECT_EQ(tag.can_size(), CAN_SIZE_NONE);
  const RecordFile::frametag_t ofEmpty(tag);
  EXPECT_EQ(ofEmpty.pCan(), nullptr);
}

TEST_F(RtvParser, RefusesWhatIsNotAWholeFile) {
  const std::string good = threeFrames(3).bytes();
  const auto with = [&](std::size_t at, const std::string& bytes) {
    return std::string(good).replace(at, bytes.size(), bytes);
  };
  const std::size_t lastTag = 72 + 2 * 36;
  RtvFile none = threeFrames(3);
  none.frames.clear();
  const std::string tag = "3 TaggedVideoParser: ";
  const auto size = std::to_string(good.size());
  const struct {
    std::string bytes;
    int code;
    std::string line;
  } rows[] = {
      {"", RTV_ERR_FILE_SIZE_IS_ZERO, ""},
      {"v", RTV_ERR_NOT_VELMAR_VIDEO_FORMAT, ""},
      {good.substr(0, 13), RTV_ERR_NOT_VELMAR_VIDEO_FORMAT, ""},
      {good.substr(0, 71), RTV_ERR_NOT_VELMAR_VIDEO_FORMAT, ""},
      {with(12, "\x01"), RTV_ERR_NOT_VELMAR_VIDEO_FORMAT, tag + "version unknown: 1.3\n"},
      {with(13, "\x05"), RTV_ERR_NOT_VELMAR_VIDEO_FORMAT, tag + "version unknown: 0.5\n"},
      {with(13, std::string(1, '\0')), RTV_ERR_NOT_VELMAR_VIDEO_FORMAT, ""},
      {with(5, "R"), RTV_ERR_NOT_VELMAR_VIDEO_FORMAT, ""},
      {with(6, "-any"), kSuccess, ""},
      {good.substr(0, 72 + 3 * 36 - 1), RTV_ERR_VIDEO_NOT_COMPLETE, ""},
      {none.bytes(), RTV_ERR_VIDEO_NOT_COMPLETE, ""},
      {with(58, "\xFF\xFF"), RTV_ERR_VIDEO_NOT_COMPLETE, ""},
      {good + "x", RTV_ERR_VIDEO_NOT_COMPLETE,
       tag + "mFileSize: " + std::to_string(good.size() + 1) +
           " > (lastFrmOffset: " + std::to_string(good.size() - 5) + " + lastFrmDatLen: 5)\n"},
      {good.substr(0, good.size() - 1), RTV_ERR_VIDEO_NOT_COMPLETE,
       tag + "mFileSize: " + std::to_string(good.size() - 1) +
           " < (lastFrmOffset: " + std::to_string(good.size() - 5) + " + lastFrmDatLen: 5)\n"},
      // offset + length wraps around to the size of the file
      {with(lastTag + 4, none.number(good.size() - 5 + (1UL << 63), 8)), RTV_ERR_VIDEO_NOT_COMPLETE,
       ""},
      {with(lastTag + 4, none.number(good.size() - 0xFFFFFFFF, 8) + "\xFF\xFF\xFF\xFF"),
       RTV_ERR_VIDEO_NOT_COMPLETE, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line + " " + std::to_string(&row - rows));
    const LogCapture log;
    EXPECT_EQ(init(row.bytes), row.code);
    EXPECT_TRUE(row.line.empty() || log.has(row.line));
    unsigned short count = 0;
    EXPECT_EQ(parser_.getFramesCount(count), row.code == kSuccess ? kSuccess : RTV_ERR_NOT_INIT);
    parser_.clear();
  }
}

TEST_F(RtvParser, ReadsMinorVersionOneAsTwo) {
  ASSERT_EQ(init(threeFrames(2).bytes().replace(13, 1, "\x01")), kSuccess);
  version_e version{};
  EXPECT_EQ(parser_.getVersion(version), kSuccess);
  EXPECT_EQ(version, RTV_VER_02);
}

TEST_F(RtvParser, OneCutFrameLeavesTheOthersReadable) {
  const RtvFile file = threeFrames(4);
  const std::string good = file.bytes();
  const struct {
    unsigned long offset;
    unsigned int length;
  } rows[] = {{good.size(), 1}, {good.size() - 5, 6}, {~0UL, 5}, {~0UL - 3, 4}, {0, 0xFFFFFFFF}};
  for (const auto& [offset, length] : rows) {
    std::string cut = good;
    cut.replace(72 + 4, 12, file.number(offset, 8) + file.number(length, 4));
    cut.replace(62, 4, file.number(8, 2) + file.number(8, 2));
    ASSERT_EQ(init(cut), kSuccess);
    std::string bytes;
    unsigned char pixels[64];
    EXPECT_EQ(parser_.getRawImage(0, bytes), RTV_ERR_VIDEO_NOT_COMPLETE);
    EXPECT_EQ(parser_.getRawImage(0, 0xFFFFFFFF, pixels), RTV_ERR_VIDEO_NOT_COMPLETE);
    EXPECT_EQ(parser_.getImage(0, 64, pixels, RTV_FMT_GRAY, RTV_SCALE_1_1, 0, 0),
              RTV_ERR_VIDEO_NOT_COMPLETE);
    EXPECT_EQ(parser_.getRawImage(1, bytes), kSuccess);
    EXPECT_EQ(bytes, "second");
    parser_.clear();
  }
}

TEST_F(RtvParser, WalksThroughItsLife) {
  const LogCapture log;
  EXPECT_EQ(parser_.init(nullptr), RTV_ERR_NULL_POINTER);
  EXPECT_EQ(parser_.init(""), RTV_ERR_INVALID_FILE_NAME);
  EXPECT_EQ(parser_.init(path_.c_str()), RTV_ERR_FILE_NOT_EXIST);
  EXPECT_EQ(parser_.beforeInitCheck(path_.c_str()), RTV_ERR_FILE_NOT_EXIST);
  EXPECT_EQ(parser_.init((folder_ / "").c_str()), RTV_ERR_FILE_MMAP_FAIL);
  int flag = 0;
  unsigned int size = 0;
  unsigned long offset = 4711;
  std::string bytes;
  can_data can;
  const auto answersAll = [&](int code) {
    EXPECT_EQ(parser_.loadAllFromFile(), code);
    EXPECT_EQ(parser_.getTimeFlag(0, flag), code);
    EXPECT_EQ(parser_.getRawImage(0, bytes), code);
    EXPECT_EQ(parser_.getCAN(0, can), code);
    EXPECT_EQ(parser_.getImageSizeInBytes(size, RTV_FMT_RGB, RTV_SCALE_1_1, 0, 0, nullptr, nullptr),
              code);
  };
  answersAll(RTV_ERR_NOT_INIT);
  parser_.getRawImageRange(0, offset, size, true, nullptr);
  EXPECT_EQ(offset, 4711U);
  ASSERT_EQ(init(threeFrames(4).bytes()), kSuccess);
  answersAll(kSuccess);
  EXPECT_EQ(parser_.getTimeFlag(3, flag), RTV_ERR_INVALID_PARAMETER);
  EXPECT_EQ(parser_.init(path_.c_str()), RTV_ERR_DUPLICATE_INIT);
  EXPECT_TRUE(log.has("3 TaggedVideoParser: TaggedVideoParser::init: Error: already inited by " +
                      path_ + "\n"));
  EXPECT_EQ(parser_.clear(), kSuccess);
  answersAll(RTV_ERR_NOT_INIT);
  EXPECT_EQ(parser_.getFileName(), "");
  EXPECT_EQ(parser_.init(path_.c_str()), kSuccess);
}

TEST_F(RtvParser, RefusesPicturesThatCannotBe) {
  const struct {
    unsigned width, height;
    int format, scale, top, bottom, sizeCode;
    unsigned size;
    int code;
  } rows[] = {
      {1920, 1080, RTV_FMT_BGR, RTV_SCALE_1_2, 0, 0, 0, 1555200, RTV_ERR_DECOMPRESS_ERROR},
      {1920, 1080, RTV_FMT_BGR, RTV_SCALE_1_2, 100, 100, 0, 1267200, RTV_ERR_DECOMPRESS_ERROR},
      {1000, 8, RTV_FMT_GRAY, RTV_SCALE_3_8, 0, 0, 0, 375 * 3, RTV_ERR_DECOMPRESS_ERROR},
      {100, 80, RTV_FMT_GRAY, 8, 0, 0, 0, 8000, RTV_ERR_DECOMPRESS_ERROR},
      {100, 80, RTV_FMT_YUV420, 0, 0, 0, -14, 0, -14},
      {100, 80, RTV_FMT_UNKNOWN, 0, 0, 0, -14, 0, -14},
      {100, 80, RTV_FMT_RGB, 0, 80, 1, -12, 0, -12},
      {65535, 65535, RTV_FMT_RGB, 0, 0, 0, -12, 0, -12},
      {0, 80, RTV_FMT_RGB, 0, 0, 0, 0, 0, -12},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    const LogCapture log;
    RtvFile file = threeFrames(3);
    file.width = row.width;
    file.height = row.height;
    ASSERT_EQ(init(file.bytes()), kSuccess);
    const auto format = static_cast<format_e>(row.format);
    const auto scale = static_cast<ScaleFactor_e>(row.scale);
    unsigned int size = 0;
    EXPECT_EQ(
        parser_.getImageSizeInBytes(size, format, scale, row.top, row.bottom, nullptr, nullptr),
        row.sizeCode);
    EXPECT_EQ(size, row.size);
    std::vector<unsigned char> buffer(size + 1);
    EXPECT_EQ(parser_.getImage(1, size, buffer.data(), format, scale, row.top, row.bottom),
              row.code);
    if (row.code == RTV_ERR_DECOMPRESS_ERROR) {
      EXPECT_EQ(log.errors().front(),
                "3 TaggedVideoParser: tjDecompress2 error: Not a JPEG file: starts with 0x73 0x65, "
                "index: 1, r_index: 1\n")
          << "with and without rows cut";
      EXPECT_EQ(parser_.getImage(1, size + 1, nullptr, format, scale, row.top, row.bottom), -12);
      EXPECT_EQ(parser_.getImage(1, size, nullptr, format, scale, row.top, row.bottom), -15);
    }
    parser_.clear();
  }
}

}  // namespace
