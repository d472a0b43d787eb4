#ifndef VELMAR_TOOLKIT_VIDEO_SOURCE_H
#define VELMAR_TOOLKIT_VIDEO_SOURCE_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "jpeg/JpegHeader.h"
#include "toolkit/base/Job.h"

namespace velmar::toolkit {

/// What a video says of itself.
struct VideoFacts {
  bool hasTimes = true;                       ///< a bare stream of pictures has none
  std::optional<std::uint64_t> creationTime;  ///< microseconds since 1970
  std::uint64_t framesCount = 0;              ///< 0 if it does not say
  bool isCountExact = false;
  detail::JpegSize size{};  ///< of its frames
};

/// The frames of a video, one after the other as they are shown. Frames that are JPEGs in it stay
/// as they are; others are decoded and encoded as JPEGs.
class VideoSource {
 public:
  virtual ~VideoSource() = default;
  virtual const VideoFacts& facts() const = 0;

  /// Goes to the next frame. False at the end; the job has been told if that is not the video's.
  virtual bool next() = 0;
  /// Of this frame, microseconds; nothing if it has none. See flaw() for those that are estimated.
  virtual std::optional<std::int64_t> time() const = 0;
  /// What is wrong with this frame; empty if nothing is known.
  virtual std::string flaw() const = 0;
  /// Throws Failure.
  virtual void readJpeg(std::string& bytes) = 0;
};

/// How a video is opened.
struct VideoOpening {
  std::string path;  ///< "-" is standard input
  int quality;       ///< of the JPEGs that are encoded, 1 to 100
  /// Waits until standard input can be read; false ends the video there.
  std::function<bool(int fd)> waitReadable;

  std::string name() const { return path == "-" ? "standard input" : path; }
};

/// Opens what libavformat reads. The job, which must outlive it, is told of what the frames do not
/// show: rotation, fields, assumed colours. Starts threads when it decodes the first frame. Throws
/// Failure.
std::unique_ptr<VideoSource> openVideo(const VideoOpening& opening, Job& job);

}  // namespace velmar::toolkit

#endif
