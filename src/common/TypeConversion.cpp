#include "velmar_video/TypeConversion.h"

version_e velmarVersion2RTVVersion(VELMAR_VERSION_E version) {
  switch (version) {
    case VELMAR_VERSION_0_2_E:
      return RTV_VER_02;
    case VELMAR_VERSION_0_3_E:
      return RTV_VER_03;
    case VELMAR_VERSION_0_4_E:
      return RTV_VER_04;
    default:
      return RTV_VER_MAX;
  }
}

VELMAR_VERSION_E rtvVersion2VelmarVersion(version_e version) {
  switch (version) {
    case RTV_VER_02:
      return VELMAR_VERSION_0_2_E;
    case RTV_VER_03:
      return VELMAR_VERSION_0_3_E;
    case RTV_VER_04:
      return VELMAR_VERSION_0_4_E;
    default:
      return VELMAR_VERSION_MAX_E;
  }
}

format_e velmarFormat2RTVFormat(VELMAR_FORMAT_E format) {
  switch (format) {
    case VELMAR_FORMAT_YUV420_E:
      return RTV_FMT_YUV420;
    case VELMAR_FORMAT_RGB_E:
      return RTV_FMT_RGB;
    case VELMAR_FORMAT_GRAY_E:
      return RTV_FMT_GRAY;
    default:
      return RTV_FMT_BGR;
  }
}

VELMAR_FORMAT_E rtvFormat2VelmarFormat(format_e format) {
  switch (format) {
    case RTV_FMT_YUV420:
      return VELMAR_FORMAT_YUV420_E;
    case RTV_FMT_RGB:
      return VELMAR_FORMAT_RGB_E;
    case RTV_FMT_GRAY:
      return VELMAR_FORMAT_GRAY_E;
    default:
      return VELMAR_FORMAT_BGR_E;
  }
}

codec_e velmarCodec2RTVCodec(VELMAR_CODEC_E codec) {
  switch (codec) {
    case VELMAR_CODEC_H264_E:
      return RTV_CODEC_H264;
    case VELMAR_CODEC_JPG_E:
      return RTV_CODEC_JPG;
    default:
      return RTV_CODEC_UNKNOWN;
  }
}

VELMAR_CODEC_E rtvCodec2VelmarCodec(codec_e codec) {
  switch (codec) {
    case RTV_CODEC_H264:
      return VELMAR_CODEC_H264_E;
    case RTV_CODEC_JPG:
      return VELMAR_CODEC_JPG_E;
    default:
      return VELMAR_CODEC_MAX_E;
  }
}

ScaleFactor_e velmarScalFactor2RTVScalFactor(SCALE_FACTOR_E scale) {
  return scale == SCALE_FACTOR_MAX_E ? RTV_SCALE_1_1 : static_cast<ScaleFactor_e>(scale);
}

SCALE_FACTOR_E rtvScalFactor2VelmarScalFactor(ScaleFactor_e scale) {
  return static_cast<SCALE_FACTOR_E>(scale);
}

ErrorCode_e velmarErrorCode2RTVErrorCode(VELMAR_ERROR_CODE_E code) {
  return static_cast<ErrorCode_e>(0U - static_cast<unsigned int>(code));
}

VELMAR_ERROR_CODE_E rtvErrorCode2VelmarErrorCode(ErrorCode_e code) {
  // In unsigned arithmetic: the lowest 32-bit value has no counterpart and stays as it is.
  const auto bits = static_cast<unsigned int>(code);
  return static_cast<VELMAR_ERROR_CODE_E>(code < 0 ? 0U - bits : bits);
}
