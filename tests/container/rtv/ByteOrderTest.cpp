// Files of big-endian writers. A program of its own: the byte order of the first file that a
// process opens is kept for all that follow.
#include <gtest/gtest.h>

#include "container/rtv/RtvFiles.h"
#include "support/TestSupport.h"
#include "velmar_video/velmar_video.h"

namespace {

class RtvByteOrder : public testing::TestWithParam<int> {
 protected:
  // The same recording, as written by either CPU.
  std::string recording(bool bigEndian) {
    RtvFile file{.version = GetParam(), .bigEndian = bigEndian, .startTime = 1000000};
    std::string can = RtvFrame().can;
    can.replace(0, 2, file.number(107, 2));
    can.replace(53, 4, file.number(0x41540000, 4));  // vehicle_speed 13.25
    can.replace(57, 4, file.number(77, 4));          // wheel_tick_left_front
    file.frames = {{"first", -500, 150, -250, 375, 12345, 1388, 359, can}, {"second", 500}};
    const std::string path = folder_ / (bigEndian ? "big.rtv" : "little.rtv");
    writeFile(path, file.bytes());
    return path;
  }

  TempFolder folder_;
};

// Version 03 takes the order from a header that it does not fill, and so always for little-endian.
INSTANTIATE_TEST_SUITE_P(Versions, RtvByteOrder, testing::Values(3, 4));

bool readsRight(TaggedVideoParser& parser, bool hasCan) {
  unsigned long time = 0;
  frametag03Ver_t tag;
  std::string bytes;
  can_data_io can;
  return parser.getTimeStamp(0, time) == RTV_ERR_SUCCESS && time == 1000500 &&
         parser.getTag(0, tag) == RTV_ERR_SUCCESS && tag.x == 150 && tag.y == -250 &&
         tag.z == 375 && tag.relative_distance == 12345 && tag.speed == 1388 &&
         parser.getRawImage(1, bytes) == RTV_ERR_SUCCESS && bytes == "second" &&
         parser.getCANRecord(0, can) == RTV_ERR_SUCCESS &&
         (!hasCan || (can.vehicle_speed == 13.25F && can.wheel_tick_left_front == 77 &&
                      can.can_data_length == 107));
}

TEST_P(RtvByteOrder, IsThatOfTheFirstFile) {
  const std::string big = recording(true);
  const std::string little = recording(false);
  const bool is04 = GetParam() == 4;
  for (const bool bigFirst : {true, false}) {
    const std::string& first = bigFirst ? big : little;
    const std::string& second = bigFirst ? little : big;
    EXPECT_TRUE(inChildProcess([&] {
      TaggedVideoParser parser;
      const bool opens = parser.init(first.c_str()) == RTV_ERR_SUCCESS;
      const bool right = opens && readsRight(parser, is04);
      parser.clear();
      if (!is04) return bigFirst ? !opens : right;
      return right && parser.init(second.c_str()) != RTV_ERR_SUCCESS;
    })) << bigFirst;
  }
}

TEST(RtvByteOrderEdit, BigEndianFilesAreNotEdited) {
  const TempFolder folder;
  RtvFile file{.bigEndian = true, .frames = {{"frame"}}};
  writeFile(folder / "a.rtv", file.bytes());
  const auto invalid = VELMAR_ERROR_CODE_INVALID_PARAMETER_E;
  EXPECT_TRUE(inChildProcess([&] {
    const auto modifier = makeVelmarVideoFileModifier(folder / "a.rtv");
    unsigned long time = 1000000;
    const unsigned char id[24] = {1};
    return modifier->open() == VELMAR_ERROR_CODE_SUCCESS_E &&
           modifier->modifyCameraID(id, sizeof id) == invalid &&
           modifier->modifyUndistorted(true) == invalid &&
           modifier->modifyStartTime(time) == invalid &&
           modifier->modifyTimestamp(0, time) == invalid &&
           modifier->correctVideoResolution() == invalid &&
           modifier->close() == VELMAR_ERROR_CODE_SUCCESS_E;
  }));
  EXPECT_EQ(readFile(folder / "a.rtv"), file.bytes());
}

}  // namespace
