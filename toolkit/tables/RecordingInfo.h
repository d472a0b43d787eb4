#ifndef VELMAR_TOOLKIT_RECORDING_INFO_H
#define VELMAR_TOOLKIT_RECORDING_INFO_H

#include <json/json.h>

#include <cstdint>
#include <optional>
#include <string>

#include "toolkit/recording/Recording.h"
#include "toolkit/tables/Track.h"

namespace velmar::toolkit {

/// From the first frame's capture to the last one's, microseconds.
std::uint64_t durationOf(const Recording& recording);

/// What a recording says of itself.
struct RecordingInfo {
  /// Throws Failure.
  explicit RecordingInfo(const Recording& recording);

  /// One JSON object, without what is not known.
  std::string json() const;
  /// Of one that is not finished.
  const char* state() const { return isRecorded ? "recording" : "interrupted"; }
  /// Whether what the first frame tells is known.
  bool hasFirst() const { return isFinished || framesCount > 0; }
  bool hasStartTime() const { return isFinished || (hasFirst() && container == "img"); }

  std::string file;
  std::string container;
  VELMAR_VERSION_E version;
  unsigned int framesCount;
  unsigned int framesMax;
  RecordingDescription description;
  std::string deviceId;
  std::uint64_t duration;
  Json::Value cameraParams;
  Json::Value extendedInfo;
  std::uint64_t bytes;
  std::optional<Place> start;  ///< of an rtv that is finished
  bool isFinished;
  bool isRecorded;
};

}  // namespace velmar::toolkit

#endif
