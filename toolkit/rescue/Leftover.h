/// What a recorder that was killed left behind in its temporary file.
#ifndef VELMAR_TOOLKIT_LEFTOVER_H
#define VELMAR_TOOLKIT_LEFTOVER_H

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/files/FileBytes.h"
#include "toolkit/recording/FrameTag.h"
#include "toolkit/recording/FrameTimes.h"
#include "toolkit/recording/RecordingDescription.h"

namespace velmar::toolkit {

/// Bytes of a file that the system brings to the disk at once.
constexpr std::size_t kPage = 4096;

struct LeftoverFrame {
  std::uint64_t number = 0;  ///< in the recording
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
  bool isCut = false;                 ///< the file ends inside the frame
  std::optional<FrameTimes> times;    ///< img
  const char* lostBecause = nullptr;  ///< null if the frame may be whole
  const char* caveat = nullptr;       ///< what a frame that is recovered lacks; null if nothing

  std::uint64_t end() const { return offset + size; }
};

/// Cuts a frame that reaches past the end of the file.
inline void clip(LeftoverFrame& frame, const FileBytes& file) {
  const std::uint64_t size = file.sizeWithin(frame.offset, frame.size);
  frame.isCut = size < frame.size;
  frame.size = size;
}

/// As much of the frame as shows whether it is a JPEG.
inline std::string startOf(const LeftoverFrame& frame, const FileBytes& file) {
  return file.read(frame.offset, std::min<std::uint64_t>(frame.size, 2));
}

struct Leftover {
  /// As far as the file itself says; see undescribed.
  RecordingDescription description;
  /// Why the file does not say what the recorder knew of the whole recording; empty if it does.
  std::string undescribed;
  unsigned int framesMax = 0;  ///< rtv: slots of the tag table
  /// In recording order. A number that is missing is that of a frame of which nothing is left.
  std::vector<LeftoverFrame> frames;
  std::uint64_t framesCount = 0;  ///< of the recording, the missing ones included
  std::vector<FrameTag> tags;     ///< rtv: one for each of `frames`
  /// Belong to no frame: behind the last one those of a frame that was being added.
  std::uint64_t strayBytes = 0;
};

/// What the caller knows of the times of an img's frames, for those that have no record any more.
struct LeftoverTimes {
  std::optional<double> framesPerSecond;
  std::uint64_t startTime = 0;    ///< microseconds since 1970, for framesPerSecond
  std::vector<FrameTimes> times;  ///< in recording order
};

/// Takes the frames from the index journal beside the file and from the index at its front, if the
/// recorder came to write that; what neither has is found by following the JPEGs from marker to
/// marker, where the others leave room for it. Throws Failure if the file cannot be read or times
/// are needed and not given.
Leftover findImgLeftover(const FileBytes& file, const LeftoverTimes& times);

/// Takes the frames from the tag table. The version is that by which most tags lead to frames; what
/// no tag leads to is found by following the JPEGs from marker to marker.
/// \param version  if it is known
/// Throws Failure if the file cannot be read.
Leftover findRtvLeftover(const FileBytes& file, std::optional<version_e> version);

}  // namespace velmar::toolkit

#endif
