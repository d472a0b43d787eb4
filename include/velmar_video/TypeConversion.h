/// \file
/// Conversions between the enumerations of the facade and those of the RTV classes. Every function
/// is pure and accepts every value: one without a counterpart gives the fallback that the function
/// names.
#ifndef VELMAR_VIDEO_TYPE_CONVERSION_H
#define VELMAR_VIDEO_TYPE_CONVERSION_H

#include "velmar_video/VelmarVideoCommDef.h"
#include "velmar_video/VelmarVideoErrMsg.h"
#include "velmar_video/export.h"

/// Versions "0.2", "0.3", "0.4" are RTV 02, 03, 04; every other value gives RTV_VER_MAX.
VELMAR_VIDEO_API version_e velmarVersion2RTVVersion(VELMAR_VERSION_E version);
/// Fallback VELMAR_VERSION_MAX_E.
VELMAR_VIDEO_API VELMAR_VERSION_E rtvVersion2VelmarVersion(version_e version);

/// Fallback BGR, in both directions and for RTV_FMT_UNKNOWN, too; kept for existing programs.
VELMAR_VIDEO_API format_e velmarFormat2RTVFormat(VELMAR_FORMAT_E format);
/// See velmarFormat2RTVFormat().
VELMAR_VIDEO_API VELMAR_FORMAT_E rtvFormat2VelmarFormat(format_e format);

/// Fallback RTV_CODEC_UNKNOWN.
VELMAR_VIDEO_API codec_e velmarCodec2RTVCodec(VELMAR_CODEC_E codec);
/// Fallback VELMAR_CODEC_MAX_E.
VELMAR_VIDEO_API VELMAR_CODEC_E rtvCodec2VelmarCodec(codec_e codec);

/// SCALE_FACTOR_MAX_E gives RTV_SCALE_1_1. Every other value passes unchanged, even one outside the
/// enumeration.
VELMAR_VIDEO_API ScaleFactor_e velmarScalFactor2RTVScalFactor(SCALE_FACTOR_E scale);
/// Every value passes unchanged.
VELMAR_VIDEO_API SCALE_FACTOR_E rtvScalFactor2VelmarScalFactor(ScaleFactor_e scale);

/// The negated code.
VELMAR_VIDEO_API ErrorCode_e velmarErrorCode2RTVErrorCode(VELMAR_ERROR_CODE_E code);
/// The absolute value: a code that is positive already passes unchanged.
VELMAR_VIDEO_API VELMAR_ERROR_CODE_E rtvErrorCode2VelmarErrorCode(ErrorCode_e code);

#endif
