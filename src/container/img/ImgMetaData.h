#ifndef VELMAR_IMG_IMG_META_DATA_H
#define VELMAR_IMG_IMG_META_DATA_H

#include <json/value.h>

#include <cstdint>
#include <string>

#include "velmar_video/VelmarVideoCommDef.h"

/// The header of an "img" file: JSON text at the end of the file.
struct ImgMetaData {
  /// Fills `root` with the metadata's keys. False, with a log line, if one of the two embedded
  /// texts is not JSON; `root` then holds the keys before it. "frame_index_data_checksum" is left
  /// out on purpose: no file written by this library has it.
  bool toJson(Json::Value& root) const;

  /// The text as in the file: toJson(), styled. False, with a log line, if toJson() fails or the
  /// text could not be read again.
  bool toText(std::string& text) const;

  /// Reads the fields from JSON text. False, with a log line, if it is no JSON object or a value
  /// has the wrong type; fields read before that keep their new values.
  bool jsonTo(const char* text);

  VELMAR_VERSION_E version = VELMAR_VERSION_1_0_E;
  std::string cameraId;  ///< two lower-case hexadecimal digits a byte
  std::uint32_t framesCount = 0;
  std::uint16_t width = 1280;
  std::uint16_t height = 800;
  VELMAR_CODEC_E codec = VELMAR_CODEC_JPG_E;
  VELMAR_FORMAT_E format = VELMAR_FORMAT_BGR_E;
  bool undistorted = false;
  std::string cameraParams = "{}";     ///< JSON text
  std::string frameIndexDataChecksum;  ///< opaque: neither computed nor verified here
  std::string extendedInfo = "{}";     ///< JSON text
};

#endif
