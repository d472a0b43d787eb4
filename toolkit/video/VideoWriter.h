#ifndef VELMAR_TOOLKIT_VIDEO_WRITER_H
#define VELMAR_TOOLKIT_VIDEO_WRITER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "jpeg/JpegHeader.h"

namespace velmar::toolkit {

enum class VideoContainer { Mkv, Mp4, Mov, Avi };

/// By its name. Throws Failure if that ends otherwise.
VideoContainer videoContainer(const std::string& path);

/// `frames` frames in `seconds` seconds, both above 0.
struct FrameRate {
  int frames;
  int seconds;
};

/// A video to be written.
struct VideoDescription {
  std::string path;
  VideoContainer container;
  detail::JpegSize size;
  std::optional<FrameRate> rate;  ///< if it is constant; an AVI needs it
  std::uint64_t startTime;        ///< of the first frame, microseconds since 1970
  std::string deviceId;           ///< hexadecimal text; may be empty
  std::string position;           ///< where it starts, as ISO 6709 has it; may be empty
};

/// Writes JPEGs as they are into a video. The file gets its name when it is complete; what had that
/// name is replaced. Goes without a trace unless it is finished.
class VideoWriter {
 public:
  virtual ~VideoWriter() = default;
  /// \param number  of the frame, from 0, in order; those that are missing keep their place in an
  ///                AVI
  /// \param time    microseconds since the first, more than the last one's; an AVI does not hold it
  /// Throws Failure.
  virtual void add(const std::string& jpeg, std::uint64_t number, std::uint64_t time) = 0;
  /// Throws Failure.
  virtual void finish() = 0;
};

/// Throws Failure.
std::unique_ptr<VideoWriter> createVideo(const VideoDescription& description);

}  // namespace velmar::toolkit

#endif
