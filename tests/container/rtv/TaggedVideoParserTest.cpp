#include "velmar_video/rtv/TaggedVideoParser.h"

#include <gtest/gtest.h>

#include <cstring>

#include "container/rtv/RtvFiles.h"
#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "velmar_video/rtv/RecordFile.h"

namespace {

constexpr int kSuccess = RTV_ERR_SUCCESS;

using Parser = TaggedVideoParser;

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
  unsigned short width = 0, height = 0;
  std::string id(33, '.');
  auto* idBytes = reinterpret_cast<unsigned char*>(id.data());
  double lat = 0, lng = 0, alt = 0;
  EXPECT_EQ(got(parser_, &Parser::getVersion) + 2, GetParam());
  EXPECT_EQ(got(parser_, &Parser::getFramesCount), 3);
  EXPECT_EQ(got(parser_, &Parser::getFramesMax), 9);
  EXPECT_EQ(parser_.getImageResolution(width, height), kSuccess);
  EXPECT_EQ(width * 10000 + height, 1280 * 10000 + 800);
  EXPECT_EQ(got(parser_, &Parser::getColorFormat), RTV_FMT_GRAY);
  EXPECT_EQ(got(parser_, &Parser::getImageColorFormat), RTV_FMT_BGR);
  EXPECT_EQ(got(parser_, &Parser::getCodec), RTV_CODEC_H264);
  EXPECT_EQ(got(parser_, &Parser::getStartTime), 1000000U);
  EXPECT_EQ(got(parser_, &Parser::getTaggingFlags), 0x11U);
  EXPECT_EQ(parser_.getDeviceId(idBytes, 23), RTV_ERR_INVALID_PARAMETER);
  EXPECT_EQ(parser_.getDeviceId(nullptr, 24), RTV_ERR_BUFFER_NOT_ALLOCATED);
  EXPECT_EQ(parser_.getDeviceId(idBytes, 33), kSuccess);
  EXPECT_EQ(id, file.deviceId + ".........");
  EXPECT_EQ(parser_.getStdPosition(lat, lng, alt), kSuccess);
  EXPECT_EQ(lng, 90.0);
  EXPECT_EQ(lat, -45.0);
  EXPECT_EQ(alt, GetParam() == 2 ? 0.0 : GetParam() == 3 ? 12345.0 : 123.45);
}

TEST_P(RtvParserVersions, AnswersWhatTheTagsSay) {
  const bool is02 = GetParam() == 2;
  std::string file = threeFrames(GetParam()).bytes();
  if (is02) file[13] = '\1';  // is read as 02 as well
  ASSERT_EQ(init(file), kSuccess);
  EXPECT_EQ(got(parser_, &Parser::getVersion) + 2, GetParam());
  const unsigned long start = (is02 ? 1420070400000 : 0) + 1000000;
  const struct {
    int timeFlag;
    float a, b, c, distance, speed, direction;
  } rows[] = {{-500, -2.5F, 1.5F, is02 ? 0.0F : 3.75F, 123.45F, 13.88F, 359},
              {500, 83886.07F, -0.01F, 0, is02 ? -0.01F : 167772.15F, 0, 1},
              {700, 0, 0, 0, 0, 0, 0}};
  for (unsigned short i = 0; i < 3; ++i) {
    float a = 0, b = 0, c = 0;
    EXPECT_EQ(got(parser_, &Parser::getTimeFlag, i), rows[i].timeFlag);
    EXPECT_EQ(got(parser_, &Parser::getTimeStamp, i), start + std::abs(rows[i].timeFlag));
    EXPECT_EQ(parser_.getRelPosition(i, a, b, c), kSuccess);
    EXPECT_EQ(a, rows[i].a);
    EXPECT_EQ(b, rows[i].b);
    EXPECT_EQ(c, rows[i].c);
    EXPECT_EQ(got(parser_, &Parser::getRelDistance, i), rows[i].distance);
    EXPECT_EQ(got(parser_, &Parser::getSpeed, i), rows[i].speed);
    EXPECT_EQ(got(parser_, &Parser::getDirection, i), rows[i].direction);
    const frametag03Ver_t tag = got(parser_, &Parser::getTag, i);
    EXPECT_EQ(tag.x / 100.0F, rows[i].b);
    EXPECT_EQ(tag.z / 100.0F, rows[i].c);
    EXPECT_EQ(tag.speed / 100.0F, rows[i].speed);
  }
}

TEST_P(RtvParserVersions, GivesTheCanSignalsOfTheFile) {
  const RtvFile file = threeFrames(GetParam());
  ASSERT_EQ(init(file.bytes()), kSuccess);
  for (unsigned short i = 0; i < 3; ++i) {
    const can_data_io record = got(parser_, &Parser::getCANRecord, i);
    const std::string bytes(reinterpret_cast<const char*>(&record), sizeof record);
    EXPECT_EQ(bytes, GetParam() == 4 ? file.frames[i].can : RtvFrame().can);
  }
  can_data_io record;
  can_data can;
  EXPECT_EQ(parser_.getCANRecord(3, record), RTV_ERR_INVALID_PARAMETER);
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
  const can_data can = got(parser_, &Parser::getCAN, 0);
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
  const std::size_t size = good.size();
  const std::size_t lastTag = 72 + 2 * 36;
  RtvFile none = threeFrames(3);
  none.frames.clear();
  const auto with = [&](std::size_t at, const std::string& bytes) {
    return std::string(good).replace(at, bytes.size(), bytes);
  };
  // Bytes of the last tag: its frame's offset and length.
  const auto range = [&](unsigned long offset, unsigned long length) {
    return with(lastTag + 4, none.number(offset, 8) + none.number(length, 4));
  };
  // Behind the end of the file there are zeros, in the last tag as well.
  const auto ends = [&](std::size_t fileSize, const std::string& relation, std::size_t offset,
                        int length) {
    return "mFileSize: " + std::to_string(fileSize) + relation +
           "(lastFrmOffset: " + std::to_string(offset) +
           " + lastFrmDatLen: " + std::to_string(length) + ")\n";
  };
  const auto cut = [&](std::size_t fileSize) { return good.substr(0, fileSize); };
  const struct {
    std::string bytes;
    int code;
    std::string line = {};
  } rows[] = {
      {"v", RTV_ERR_NOT_VELMAR_VIDEO_FORMAT},
      {cut(13), RTV_ERR_NOT_VELMAR_VIDEO_FORMAT, "version unknown: 0.0\n"},
      {cut(14), RTV_ERR_VIDEO_NOT_COMPLETE, ends(14, " > ", 0, 0)},
      {cut(71), RTV_ERR_VIDEO_NOT_COMPLETE, ends(71, " > ", 0, 0)},
      {cut(lastTag + 12), RTV_ERR_VIDEO_NOT_COMPLETE, ends(lastTag + 12, " < ", size - 5, 0)},
      {with(12, "\x01"), RTV_ERR_NOT_VELMAR_VIDEO_FORMAT, "version unknown: 1.3\n"},
      {with(13, "\x05"), RTV_ERR_NOT_VELMAR_VIDEO_FORMAT, "version unknown: 0.5\n"},
      {with(13, std::string(1, '\0')), RTV_ERR_NOT_VELMAR_VIDEO_FORMAT},
      {with(5, "R"), RTV_ERR_NOT_VELMAR_VIDEO_FORMAT},
      {with(6, "-any"), kSuccess},
      {cut(72 + 3 * 36 - 1), RTV_ERR_VIDEO_NOT_COMPLETE, ends(72 + 3 * 36 - 1, " < ", size - 5, 5)},
      {none.bytes(), RTV_ERR_VIDEO_NOT_COMPLETE, ends(none.bytes().size(), " > ", 0, 0)},
      {with(58, "\xFF\xFF"), RTV_ERR_VIDEO_NOT_COMPLETE},
      {good + "x", RTV_ERR_VIDEO_NOT_COMPLETE, ends(size + 1, " > ", size - 5, 5)},
      {cut(size - 1), RTV_ERR_VIDEO_NOT_COMPLETE, ends(size - 1, " < ", size - 5, 5)},
      // offset + length wraps around to the size of the file
      {range(size - 5 + (1UL << 63), 5), RTV_ERR_VIDEO_NOT_COMPLETE},
      {range(size - 0xFFFFFFFF, 0xFFFFFFFF), RTV_ERR_VIDEO_NOT_COMPLETE},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line + " " + std::to_string(&row - rows));
    const LogCapture log;
    EXPECT_EQ(init(row.bytes), row.code);
    EXPECT_TRUE(row.line.empty() || log.has("3 TaggedVideoParser: " + row.line));
    unsigned short count = 0;
    EXPECT_EQ(parser_.getFramesCount(count), row.code == kSuccess ? kSuccess : RTV_ERR_NOT_INIT);
    parser_.clear();
  }
}

TEST_F(RtvParser, LogsTheCauseOfEachRefusedFrame) {
  const std::string jpeg = uniformJpeg(16, 8, Coding::Optimized);
  const std::pair<std::string, std::string> rows[] = {
      {"no JPEG", "Not a JPEG file: starts with 0x6e 0x6f"},
      {claiming(65500, 65500, uniformJpeg(16, 8, Coding::Progressive)),
       "JPEG data far too short for the picture's size"},
      {jpeg.substr(0, jpeg.size() - 3), "Premature end of JPEG file"},
      {tablesOf(jpeg), "JPEG tables without a picture"},
  };
  RtvFile file{.width = 16, .height = 8};
  for (const auto& row : rows) file.frames.push_back({row.first});
  ASSERT_EQ(init(file.bytes()), kSuccess);
  unsigned char pixels[16 * 8];
  for (unsigned short i = 0; i < std::size(rows); ++i) {
    const LogCapture log;
    EXPECT_EQ(parser_.getImage(i, sizeof pixels, pixels, RTV_FMT_GRAY, RTV_SCALE_1_1, 0, 0),
              RTV_ERR_DECOMPRESS_ERROR);
    const std::string index = std::to_string(i);
    EXPECT_EQ(log.errors(),
              std::vector{"3 TaggedVideoParser: tjDecompress2 error: " + rows[i].second +
                          ", index: " + index + ", r_index: " + index + "\n"});
  }
}

TEST_F(RtvParser, WalksThroughItsLife) {
  const LogCapture log;
  EXPECT_EQ(parser_.init(nullptr), RTV_ERR_NULL_POINTER);
  EXPECT_EQ(parser_.init(""), RTV_ERR_INVALID_FILE_NAME);
  EXPECT_EQ(parser_.beforeInitCheck(path_.c_str()), RTV_ERR_FILE_NOT_EXIST);
  unsigned int size = 0;
  unsigned long offset = 4711;
  can_data can;
  EXPECT_EQ(parser_.getCAN(0, can), RTV_ERR_NOT_INIT);
  parser_.getRawImageRange(0, offset, size, true, nullptr);
  EXPECT_EQ(offset, 4711U);
  ASSERT_EQ(init(threeFrames(4).bytes()), kSuccess);
  EXPECT_EQ(parser_.getCAN(0, can), kSuccess);
  EXPECT_EQ(parser_.init(path_.c_str()), RTV_ERR_DUPLICATE_INIT);
  EXPECT_TRUE(log.has("3 TaggedVideoParser: TaggedVideoParser::init: Error: already inited by " +
                      path_ + "\n"));
  EXPECT_EQ(parser_.clear(), kSuccess);
  EXPECT_EQ(parser_.getCAN(0, can), RTV_ERR_NOT_INIT);
  EXPECT_EQ(parser_.getFileName(), "");
}

}  // namespace
