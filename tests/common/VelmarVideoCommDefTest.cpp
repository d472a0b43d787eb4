#include "velmar_video/VelmarVideoCommDef.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "velmar_video/TypeConversion.h"

namespace {

template <typename Enum>
Enum as(int value) {
  return static_cast<Enum>(value);
}

TEST(ErrorNames, AreTheMembersUpToTheLastError) {
  EXPECT_EQ(errorCode2String(as<VELMAR_ERROR_CODE_E>(0)), "VELMAR_ERROR_CODE_SUCCESS_E");
  EXPECT_EQ(errorCode2String(as<VELMAR_ERROR_CODE_E>(14)),
            "VELMAR_ERROR_CODE_COLOR_FORMAT_NOT_SUPPROT_E");
  EXPECT_EQ(errorCode2String(as<VELMAR_ERROR_CODE_E>(18)), "VELMAR_ERROR_CODE_OUT_RANGE_E");
  for (const int outside : {19, 20, -1, INT_MIN}) {
    EXPECT_EQ(errorCode2String(as<VELMAR_ERROR_CODE_E>(outside)),
              "error must >= VELMAR_ERROR_CODE_SUCCESS_E && < VELMAR_ERROR_CODE_MAX_E ");
  }
}

template <typename Enum>
void expectNames(const std::vector<std::string>& names, std::string (*nameOf)(Enum),
                 Enum (*valueOf)(std::string)) {
  const int max = static_cast<int>(names.size());
  for (int i = 0; i < max; ++i) {
    EXPECT_EQ(nameOf(as<Enum>(i)), names[i]);
    EXPECT_EQ(valueOf(names[i]), i);
  }
  for (const int value : {max, 255, -1}) EXPECT_EQ(nameOf(as<Enum>(value)), "");
  for (const char* text : {"", "0.5", "gray", " JPG", "1.0 "})
    EXPECT_EQ(valueOf(text), max) << text;
}

TEST(EnumerationNames, GoThereAndBackAndAreEmptyOutside) {
  expectNames({"0.1", "0.2", "0.3", "0.4", "1.0"}, velmarVersion2String, string2VelmarVersion);
  expectNames({"H264", "JPG"}, velmarCodec2String, string2VelmarCodec);
  expectNames({"YUV420", "RGB", "BGR", "GRAY"}, velmarFormat2String, string2RvelmarFormat);
}

// Columns: the value, and what each conversion makes of it.
TEST(TypeConversion, IsTotal) {
  const struct {
    int value, version2Rtv, version2Velmar, format2Rtv, format2Velmar, codec2Rtv, codec2Velmar;
  } rows[] = {
      {0, 3, 1, 1, 2, 1, 2}, {1, 0, 2, 2, 0, 2, 0},   {2, 1, 3, 3, 1, 0, 1},
      {3, 2, 5, 4, 2, 0, 2}, {4, 3, 5, 3, 3, 0, 2},   {5, 3, 5, 3, 2, 0, 2},
      {6, 3, 5, 3, 2, 0, 2}, {255, 3, 5, 3, 2, 0, 2}, {-1, 3, 5, 3, 2, 0, 2},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.value);
    EXPECT_EQ(velmarVersion2RTVVersion(as<VELMAR_VERSION_E>(row.value)), row.version2Rtv);
    EXPECT_EQ(rtvVersion2VelmarVersion(as<version_e>(row.value)), row.version2Velmar);
    EXPECT_EQ(velmarFormat2RTVFormat(as<VELMAR_FORMAT_E>(row.value)), row.format2Rtv);
    EXPECT_EQ(rtvFormat2VelmarFormat(as<format_e>(row.value)), row.format2Velmar);
    EXPECT_EQ(velmarCodec2RTVCodec(as<VELMAR_CODEC_E>(row.value)), row.codec2Rtv);
    EXPECT_EQ(rtvCodec2VelmarCodec(as<codec_e>(row.value)), row.codec2Velmar);
    EXPECT_EQ(velmarScalFactor2RTVScalFactor(as<SCALE_FACTOR_E>(row.value)), row.value);
  }
  EXPECT_EQ(velmarScalFactor2RTVScalFactor(SCALE_FACTOR_MAX_E), RTV_SCALE_1_1);
  EXPECT_EQ(velmarErrorCode2RTVErrorCode(VELMAR_ERROR_CODE_OUT_RANGE_E), RTV_ERR_OUT_RANGE);
  EXPECT_EQ(rtvErrorCode2VelmarErrorCode(RTV_ERR_NOT_INIT), VELMAR_ERROR_CODE_NOT_INIT_E);
  EXPECT_EQ(rtvErrorCode2VelmarErrorCode(as<ErrorCode_e>(14)), 14);
}

TEST(ByteReversal, IsItsOwnInverse) {
  EXPECT_EQ(htonll(0x0102030405060708), 0x0807060504030201U);
  EXPECT_EQ(ntohll(htonll(0x0102030405060708)), 0x0102030405060708U);
}

}  // namespace
