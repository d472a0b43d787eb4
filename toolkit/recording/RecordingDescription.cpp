#include "toolkit/recording/RecordingDescription.h"

#include <cmath>
#include <limits>

#include "base/HexText.h"
#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

bool isRtvPath(const std::string& path) { return path.ends_with(".rtv"); }

bool hasStartPosition(const RecordingDescription& description) {
  return description.lng != 0 || description.lat != 0 || description.alt != 0;
}

int altitudesPerMetre(version_e version) {
  return version == RTV_VER_04 ? 100 : version == RTV_VER_03 ? 1 : 0;
}

std::string bytesOfHex(const std::string& text) {
  std::string bytes(text.size() / 2, '\0');
  detail::hexToBytes(text, reinterpret_cast<unsigned char*>(bytes.data()),
                     static_cast<unsigned int>(bytes.size()));
  return bytes;
}

int nearestNds(double degrees) {
  constexpr double kUnitsPerDegree = 1073741824.0 / 90;
  return static_cast<int>(std::lround(degrees * kUnitsPerDegree));
}

std::uint64_t rtvEpoch(version_e version) {
  return version == RTV_VER_02 ? kRtvVersion02Epoch * kMillisecond : 0;
}

std::optional<std::uint64_t> rtvStartTime(const RecordingDescription& description) {
  const std::uint64_t epoch = rtvEpoch(description.version);
  if (description.startTime < epoch) return std::nullopt;
  return (description.startTime - epoch) / kMillisecond;
}

std::optional<int> rtvTimeFlag(const RecordingDescription& description, std::uint64_t sensorTime) {
  const std::uint64_t start = description.startTime / kMillisecond;
  const std::uint64_t time = sensorTime / kMillisecond;
  if (time < start || time - start > std::numeric_limits<int>::max()) return std::nullopt;
  return static_cast<int>(time - start);
}

void checkFramesCount(const std::string& output, std::size_t frames) {
  if (!isRtvPath(output) || frames <= kRtvFramesMax) return;
  throw Failure(output, "an rtv holds 65535 frames at the most, not " + std::to_string(frames),
                VELMAR_ERROR_CODE_OUT_RANGE_E);
}

void checkRtvTimes(const std::string& output, const RecordingDescription& description,
                   const std::vector<FrameTimes>& times) {
  if (!isRtvPath(output)) return;
  if (!rtvStartTime(description)) {
    throw Failure(output, "version 02 of rtv holds no start before 2015",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  for (std::size_t i = 0; i < times.size(); ++i) {
    if (rtvTimeFlag(description, times[i].sensor)) continue;
    throw Failure(output,
                  "frame " + std::to_string(i) +
                      " was captured before the start, or more than 24 days after it",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
}

}  // namespace velmar::toolkit
