/// The keys of the metadata of "img" files.
#ifndef VELMAR_IMG_META_DATA_KEYS_H
#define VELMAR_IMG_META_DATA_KEYS_H

namespace velmar::detail {

constexpr char kCameraIdKey[] = "camera_id";
constexpr char kVersionKey[] = "version";
constexpr char kFramesCountKey[] = "frames_count";
constexpr char kWidthKey[] = "width";
constexpr char kHeightKey[] = "height";
constexpr char kFrameFormatKey[] = "frame_format";
constexpr char kFrameCodecKey[] = "frame_codec";
constexpr char kUndistortedKey[] = "undistorted";
constexpr char kCameraParamsKey[] = "camera_params";
constexpr char kExtendedInfoKey[] = "extendedInfo";
constexpr char kIndexChecksumKey[] = "frame_index_data_checksum";

}  // namespace velmar::detail

#endif
