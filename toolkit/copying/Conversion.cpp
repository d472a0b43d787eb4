#include "toolkit/copying/Conversion.h"

#include <cstdint>
#include <cstdlib>

#include "toolkit/copying/CopyFrames.h"
#include "toolkit/text/JsonText.h"

namespace velmar::toolkit {

namespace {

bool saysSomething(const std::string& json) {
  const Json::Value value = parseJson(json);
  return !value.isNull() && !(value.isObject() && value.empty());
}

// Whether version 02 has the bits for position and distance, which is signed there.
bool fitsVersion02(const FrameTag& tag) {
  const auto fits = [](int value) { return value >= kLowest24Bits && value <= kHighest24Bits; };
  return fits(tag.x) && fits(tag.y) && fits(static_cast<int>(tag.relativeDistance));
}

// What of the frames gets lost.
struct FrameContents {
  FrameContents(const Recording& recording, const Strip& strip) {
    const unsigned int count = recording.framesCount();
    for (unsigned int i = 0; i < count; ++i) {
      const FrameTimes times = recording.times(i);
      FrameTag tag = recording.tag(i);
      if (strip.positions) tag.clearPosition();
      hasArrivalTimes |= times.arrived != times.sensor;
      hasMicroseconds |= times.sensor % kMillisecond != 0;
      hasPositions |= tag.hasPosition();
      hasHeights |= tag.z != 0;
      isFarAway |= !fitsVersion02(tag);
      hasCan |= tag.hasCan();
      hasMisreadTimes |= isMisread(recording.timeFlag(i));
    }
  }

  bool hasArrivalTimes = false;
  bool hasMicroseconds = false;
  bool hasPositions = false;
  bool hasHeights = false;
  bool isFarAway = false;
  bool hasCan = false;
  bool hasMisreadTimes = false;
};

// What of `from` an img cannot hold.
std::vector<std::string> lostInImg(const RecordingDescription& from, const FrameContents& frames,
                                   const Recording& recording, const Strip& strip) {
  std::vector<std::string> lost;
  if (frames.hasPositions) {
    lost.emplace_back(strip.positions ? "speeds" : "positions, distances, speeds and headings");
  }
  if (frames.hasCan) lost.emplace_back("CAN signals");
  if (frames.hasMisreadTimes) lost.emplace_back("times before the start");
  if (hasStartPosition(from)) lost.emplace_back("the start position");
  if (from.taggingFlags != 0) lost.emplace_back("tagging flags");
  if (recording.framesCount() > 0 && recording.timeFlag(0) != 0) {
    lost.emplace_back("the start time, which is not the first frame's");
  }
  return lost;
}

// Altitudes of versions 03 and 04 are read with different units; nothing for one that does not
// fit.
std::optional<int> altitudeFor(version_e version, const RecordingDescription& from) {
  if (version == from.version || from.alt == 0) return from.alt;
  if (version != RTV_VER_04)
    return from.alt % 100 == 0 ? std::optional(from.alt / 100) : std::nullopt;
  const long hundredths = from.alt * 100L;
  if (std::abs(hundredths) > INT32_MAX) return std::nullopt;
  return static_cast<int>(hundredths);
}

// What of `from` an rtv of the version cannot hold.
std::vector<std::string> lostInRtv(const RecordingDescription& from, const FrameContents& frames,
                                   version_e version) {
  std::vector<std::string> lost;
  if (frames.hasArrivalTimes) lost.emplace_back("arrival times");
  if (frames.hasMicroseconds) lost.emplace_back("microseconds of the capture times");
  if (saysSomething(from.cameraParams)) lost.emplace_back("camera parameters");
  if (saysSomething(from.extendedInfo)) lost.emplace_back("extended information");
  if (from.deviceId.size() > kRtvDeviceIdSize) lost.emplace_back("the device id beyond 24 bytes");
  if (!from.deviceId.empty() && from.deviceId.size() < kRtvDeviceIdSize) {
    lost.emplace_back("the length of the device id, which is padded to 24 bytes");
  }
  if (frames.hasCan && version != RTV_VER_04) lost.emplace_back("CAN signals");
  if (version != RTV_VER_02) {
    if (!altitudeFor(version, from)) lost.emplace_back("the exact altitude of the start position");
    return lost;
  }
  if (from.undistorted) lost.emplace_back("the mark of undistorted frames");
  if (from.taggingFlags != 0) lost.emplace_back("tagging flags");
  if (from.alt != 0) lost.emplace_back("the altitude of the start position");
  if (frames.hasHeights) lost.emplace_back("heights");
  if (frames.isFarAway) lost.emplace_back("positions and distances beyond 83 km");
  return lost;
}

}  // namespace

RecordingDescription convertedDescription(const Recording& recording, const std::string& output,
                                          std::optional<version_e> version) {
  RecordingDescription description = recording.description();
  const bool fromRtv = recording.isRtv();
  const version_e after = version.value_or(fromRtv ? description.version : RTV_VER_03);
  if (fromRtv) {
    const int nearest = after == RTV_VER_03 ? description.alt / 100 : 0;
    description.alt = altitudeFor(after, description).value_or(nearest);
  } else if (isRtvPath(output)) {
    description.startTime = earliestSensorTime(recording);
  }
  description.version = after;
  return description;
}

std::vector<std::string> lostInConversion(const Recording& recording, const std::string& output,
                                          version_e version, const Strip& strip) {
  RecordingDescription from = recording.description();
  strip.applyTo(from);
  const FrameContents frames(recording, strip);
  std::vector<std::string> lost = isRtvPath(output) ? lostInRtv(from, frames, version)
                                                    : lostInImg(from, frames, recording, strip);
  if (!strip.ids && !recording.hasPlainDeviceId()) {
    lost.emplace_back("the exact text of the device id");
  }
  return lost;
}

}  // namespace velmar::toolkit
