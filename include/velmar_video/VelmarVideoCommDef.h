/// \file
/// The enumerations of the facade and of the RTV classes, the facade's text names, and the 64-bit
/// byte reversal. Every function may be called from any thread.
#ifndef VELMAR_VIDEO_COMM_DEF_H
#define VELMAR_VIDEO_COMM_DEF_H

#include <string>

#include "velmar_video/export.h"

/// Container version.
enum VELMAR_VERSION_E : int {
  VELMAR_VERSION_0_1_E = 0,
  VELMAR_VERSION_0_2_E = 1,  ///< RTV version 02
  VELMAR_VERSION_0_3_E = 2,  ///< RTV version 03
  VELMAR_VERSION_0_4_E = 3,  ///< RTV version 04
  VELMAR_VERSION_1_0_E = 4,  ///< img
  VELMAR_VERSION_MAX_E = 5,  ///< unknown
};

/// Pixel format.
enum VELMAR_FORMAT_E : unsigned char {
  VELMAR_FORMAT_YUV420_E = 0,  ///< decoding to it is not supported
  VELMAR_FORMAT_RGB_E = 1,     ///< 3 bytes a pixel
  VELMAR_FORMAT_BGR_E = 2,     ///< 3 bytes a pixel
  VELMAR_FORMAT_GRAY_E = 3,    ///< 1 byte a pixel
  VELMAR_FORMAT_MAX_E = 4,     ///< unknown
};

/// Codec of the stored frames.
enum VELMAR_CODEC_E : unsigned char {
  VELMAR_CODEC_H264_E = 0,
  VELMAR_CODEC_JPG_E = 1,
  VELMAR_CODEC_MAX_E = 2,  ///< unknown
};

/// Scale at which a frame is decoded. A dimension d becomes ceil(d * scale).
enum SCALE_FACTOR_E : int {
  SCALE_FACTOR_1_1_E = 0,
  SCALE_FACTOR_7_8_E = 1,
  SCALE_FACTOR_3_4_E = 2,
  SCALE_FACTOR_5_8_E = 3,
  SCALE_FACTOR_1_2_E = 4,
  SCALE_FACTOR_3_8_E = 5,
  SCALE_FACTOR_1_4_E = 6,
  SCALE_FACTOR_1_8_E = 7,
  SCALE_FACTOR_MAX_E = 8,  ///< decodes at 1/1
};

/// Version of an RTV file.
enum version_e : int {
  RTV_VER_02 = 0,
  RTV_VER_03 = 1,
  RTV_VER_04 = 2,
  RTV_VER_MAX = 3,  ///< unknown
};

/// Pixel format on the RTV side; also the byte stored in RTV headers.
enum format_e : unsigned char {
  RTV_FMT_UNKNOWN = 0,
  RTV_FMT_YUV420 = 1,
  RTV_FMT_RGB = 2,
  RTV_FMT_BGR = 3,
  RTV_FMT_GRAY = 4,
};

/// Codec on the RTV side; also the byte stored in RTV headers.
enum codec_e : unsigned char {
  RTV_CODEC_UNKNOWN = 0,
  RTV_CODEC_H264 = 1,
  RTV_CODEC_JPG = 2,
};

/// Decoding scale on the RTV side; any other value decodes at 1/1.
enum ScaleFactor_e : int {
  RTV_SCALE_1_1 = 0,
  RTV_SCALE_7_8 = 1,
  RTV_SCALE_3_4 = 2,
  RTV_SCALE_5_8 = 3,
  RTV_SCALE_1_2 = 4,
  RTV_SCALE_3_8 = 5,
  RTV_SCALE_1_4 = 6,
  RTV_SCALE_1_8 = 7,
};

/// "0.1" to "0.4", "1.0"; empty for every other value.
VELMAR_VIDEO_API std::string velmarVersion2String(VELMAR_VERSION_E version);
/// Exact, case-sensitive; VELMAR_VERSION_MAX_E for any other text.
VELMAR_VIDEO_API VELMAR_VERSION_E string2VelmarVersion(std::string text);

/// "H264", "JPG"; empty for every other value.
VELMAR_VIDEO_API std::string velmarCodec2String(VELMAR_CODEC_E codec);
/// Exact, case-sensitive; VELMAR_CODEC_MAX_E for any other text.
VELMAR_VIDEO_API VELMAR_CODEC_E string2VelmarCodec(std::string text);

/// "YUV420", "RGB", "BGR", "GRAY"; empty for every other value.
VELMAR_VIDEO_API std::string velmarFormat2String(VELMAR_FORMAT_E format);
/// Exact, case-sensitive; VELMAR_FORMAT_MAX_E for any other text.
VELMAR_VIDEO_API VELMAR_FORMAT_E string2RvelmarFormat(std::string text);

/// The eight bytes of `value` in reverse order, on every host. That is the conversion to big-endian
/// on little-endian hosts, and the library runs on no others.
inline unsigned long htonll(unsigned long value) { return __builtin_bswap64(value); }
/// The same reversal.
inline unsigned long ntohll(unsigned long value) { return htonll(value); }

#endif
