#include "toolkit/tables/RecordingInfo.h"

#include <tuple>

#include "toolkit/text/JsonText.h"
#include "toolkit/text/NumberText.h"

namespace velmar::toolkit {

std::uint64_t durationOf(const Recording& recording) {
  const unsigned int count = recording.framesCount();
  if (count < 2) return 0;
  const std::uint64_t first = recording.sensorTime(0);
  const std::uint64_t last = recording.sensorTime(count - 1);
  return last < first ? 0 : last - first;
}

RecordingInfo::RecordingInfo(const Recording& recording)
    : file(recording.path()),
      container(recording.isRtv() ? "rtv" : "img"),
      version(recording.version()),
      framesCount(recording.framesCount()),
      framesMax(recording.framesMax()),
      description(recording.description()),
      deviceId(recording.deviceId()),
      duration(durationOf(recording)),
      cameraParams(parseJson(description.cameraParams)),
      extendedInfo(parseJson(description.extendedInfo)),
      bytes(recording.file().size()),
      isFinished(recording.isFinished()),
      isRecorded(recorderOf(recording).state == Recorder::State::AtWork) {
  if (recording.isRtv() && isFinished) start = Track(recording).start();
}

// jsoncpp would sort the keys; people who look at the line want them in order.
std::string RecordingInfo::json() const {
  const std::tuple<const char*, Json::Value, bool> members[] = {
      {"file", file, true},
      {"container", container, true},
      {"version", velmarVersion2String(version), hasFirst()},
      {"frames_count", framesCount, true},
      {"frames_max", framesMax, hasFirst()},
      {"width", description.width, hasFirst()},
      {"height", description.height, hasFirst()},
      {"frame_format", velmarFormat2String(description.format), isFinished},
      {"frame_codec", velmarCodec2String(description.codec), isFinished},
      {"undistorted", description.undistorted, isFinished},
      {"device_id", deviceId, isFinished},
      {"start_time_us", Json::UInt64{description.startTime}, hasStartTime()},
      {"duration_us", Json::UInt64{duration}, true},
      {"camera_params", cameraParams, isFinished},
      {"extended_info", extendedInfo, isFinished},
      {"file_bytes", Json::UInt64{bytes}, true},
  };
  std::string line;
  for (const auto& [key, value, isKnown] : members) {
    if (!isKnown) continue;
    line += line.empty() ? "{" : ",";
    line += toJsonText(key) + ":" + toJsonText(value);
  }
  if (start) {
    line += ",\"start_position\":{\"lng_deg\":" + degreesText(start->lng) +
            ",\"lat_deg\":" + degreesText(start->lat) + ",\"alt_m\":" + fixedText(start->alt, 2) +
            "}";
  }
  if (!isFinished) line += ",\"state\":" + toJsonText(state());
  return line + "}";
}

}  // namespace velmar::toolkit
