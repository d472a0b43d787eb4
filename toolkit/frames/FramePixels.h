#ifndef VELMAR_TOOLKIT_FRAME_PIXELS_H
#define VELMAR_TOOLKIT_FRAME_PIXELS_H

#include <cstdint>
#include <string>

#include "jpeg/ImageGeometry.h"
#include "jpeg/JpegDecoder.h"
#include "toolkit/frames/StoredFrame.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// How frames are decoded.
struct PixelForm {
  VELMAR_FORMAT_E format = VELMAR_FORMAT_RGB_E;
  SCALE_FACTOR_E scale = SCALE_FACTOR_1_1_E;
  unsigned short cropTop = 0;     ///< rows, before scaling
  unsigned short cropBottom = 0;  ///< rows, before scaling

  bool operator==(const PixelForm&) const = default;
};

/// Decodes frames of a recording. One for each thread; they may share the recording once its
/// places() have been asked for.
class FramePixels {
 public:
  /// The recording must outlive it. Throws Failure if the form leaves nothing of the pictures.
  FramePixels(const Recording& recording, const PixelForm& form);

  /// Of the pictures that read() makes.
  const detail::ImageGeometry& geometry() const { return geometry_; }
  /// Memory that decoding a frame may take as a rule, bytes.
  std::uint64_t memory() const;
  /// No frame may take more.
  void limitMemory(std::uint64_t bytes) { memoryLimit_ = bytes; }
  /// Decodes a frame to geometry().size() bytes at `pixels`, those of a frame that is smaller than
  /// the recording says among zeros.
  /// \return what is wrong with the frame; then the pixels are undefined
  FrameFlaw read(unsigned int index, std::uint8_t* pixels);

 private:
  std::uint64_t pictureMemory() const;
  const char* refusal(detail::JpegSize size) const;

  const Recording& recording_;
  const int pixelFormat_;
  const detail::ImageGeometry geometry_;
  std::uint64_t memoryLimit_ = UINT64_MAX;
  detail::JpegDecoder decoder_{TJFLAG_LIMITSCANS};
  JpegInspector inspector_;
  std::string jpeg_;  // that is decoded
};

}  // namespace velmar::toolkit

#endif
