#ifndef VELMAR_TOOLKIT_EDIT_REQUEST_H
#define VELMAR_TOOLKIT_EDIT_REQUEST_H

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/recording/FrameTag.h"
#include "toolkit/recording/FrameTimes.h"
#include "toolkit/recording/RecordingDescription.h"
#include "toolkit/writing/StartPosition.h"

namespace velmar::toolkit {

/// What a recording can be rid of. One that holds none has nothing to change.
enum class Contents {
  Positions,  ///< the start position, and of the tags x, y, z, both distances and the direction
  Speed,      ///< of the tags and of the CAN signals, those of the wheels included
  Can,        ///< all signals
  ExtendedInfo,
  DeviceId,
};

/// What `edit` is asked to do, as it stands on the command line.
struct EditRequest {
  struct FrameTime {
    unsigned int index;
    std::uint64_t time;
  };

  std::optional<std::string> deviceId;  ///< bytes
  std::optional<bool> undistorted;
  std::optional<std::uint64_t> startTime;
  std::vector<FrameTime> sensorTimes;
  std::vector<FrameTime> arrivedTimes;
  std::optional<std::vector<FrameTimes>> allTimes;  ///< of every frame
  std::optional<std::int64_t> shift;                ///< microseconds
  std::optional<std::string> cameraParams;          ///< JSON text
  std::optional<std::string> extendedInfo;          ///< JSON text
  std::optional<unsigned int> taggingFlags;
  bool fixResolution = false;
  std::vector<Contents> cleared;  ///< before anything else is set
  std::optional<StartPosition> startPosition;
  /// Changes the tags of all frames, and may set the start position if there is none.
  std::function<void(const std::vector<std::uint64_t>& sensorTimes, std::vector<FrameTag>& tags,
                     RecordingDescription& description)>
      changeTags;
  std::string changeTagsOption = "--log";  ///< that asks for it

  bool clears(Contents contents) const {
    return std::find(cleared.begin(), cleared.end(), contents) != cleared.end();
  }
};

}  // namespace velmar::toolkit

#endif
