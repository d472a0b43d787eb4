#ifndef VELMAR_TOOLKIT_RECORDING_DESCRIPTION_H
#define VELMAR_TOOLKIT_RECORDING_DESCRIPTION_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "jpeg/JpegHeader.h"
#include "toolkit/recording/FrameTimes.h"
#include "velmar_video/VelmarVideoCommDef.h"
#include "velmar_video/rtv/RecordFile.h"

namespace velmar::toolkit {

/// What a recording says of itself besides its frames.
struct RecordingDescription {
  bool operator==(const RecordingDescription&) const = default;
  detail::JpegSize size() const { return {width, height}; }
  void setSize(detail::JpegSize size) {
    width = static_cast<unsigned short>(size.width);
    height = static_cast<unsigned short>(size.height);
  }

  unsigned short width = 0;   ///< pixels
  unsigned short height = 0;  ///< pixels
  VELMAR_FORMAT_E format = VELMAR_FORMAT_BGR_E;
  VELMAR_CODEC_E codec = VELMAR_CODEC_JPG_E;
  std::string deviceId;  ///< bytes
  bool undistorted = false;

  // Only in img.
  std::string cameraParams = "{}";  ///< JSON text
  std::string extendedInfo = "{}";  ///< JSON text

  // Only in rtv.
  version_e version = RTV_VER_03;
  std::uint64_t startTime = 0;    ///< microseconds since 1970, in every version
  int lng = 0;                    ///< start position, NDS units
  int lat = 0;                    ///< start position, NDS units
  int alt = 0;                    ///< as stored
  unsigned int taggingFlags = 0;  ///< besides the mark of undistorted frames
};

/// By its name; Recording::isRtv() is for one that is open.
bool isRtvPath(const std::string& path);

/// In how many units to a metre a version stores the altitude of its start position: hundredths,
/// metres, or none.
int altitudesPerMetre(version_e version);

/// Whether positions mean a place on the earth.
bool hasStartPosition(const RecordingDescription& description);

/// The bytes of an identifier's hexadecimal text; a digit too many is left out.
std::string bytesOfHex(const std::string& text);

/// The NDS units nearest to the degrees; 180 degrees east are 180 degrees west. (The library's
/// Degree2NDS() cuts off, so that what NDS2Degree() gives would come back as another unit.)
int nearestNds(double degrees);

/// Microseconds since 1970 from which an rtv of the version counts its start time.
std::uint64_t rtvEpoch(version_e version);

/// Milliseconds as the version's header has them; nothing before the day from which it counts.
std::optional<std::uint64_t> rtvStartTime(const RecordingDescription& description);

/// Milliseconds from the start to the capture of a frame as its tag has them. Nothing for a frame
/// before the start, whose time readers would take for one after it, and beyond 24 days.
std::optional<int> rtvTimeFlag(const RecordingDescription& description, std::uint64_t sensorTime);

/// Whether a tag has a time that readers take for another one, since the recorder's clock went back
/// or far ahead.
constexpr bool isMisread(int timeFlag) { return timeFlag < 0; }
/// What such a frame has.
constexpr char kMisreadTime[] =
    "a time before the start or more than 24 days after it, which readers misread";

/// Throws Failure, which names `output`, if it is an rtv and cannot hold as many frames.
void checkFramesCount(const std::string& output, std::size_t frames);

/// The same if it cannot hold the start time or the time of a frame.
void checkRtvTimes(const std::string& output, const RecordingDescription& description,
                   const std::vector<FrameTimes>& times);

}  // namespace velmar::toolkit

#endif
