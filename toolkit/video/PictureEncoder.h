#ifndef VELMAR_TOOLKIT_PICTURE_ENCODER_H
#define VELMAR_TOOLKIT_PICTURE_ENCODER_H

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "jpeg/TjHandle.h"
#include "toolkit/video/YccConversion.h"

struct AVFrame;
struct SwsContext;

namespace velmar::toolkit {

/// Encodes decoded pictures of a video as JPEGs, with the colours and the chroma sampling that they
/// have.
class PictureEncoder {
 public:
  /// \param file     for failures
  /// \param quality  1 to 100
  PictureEncoder(std::string file, int quality);
  ~PictureEncoder();

  /// Throws Failure.
  void encode(const AVFrame& picture, std::string& jpeg);

  /// What had to be assumed of a picture's colours because the video does not say it; empty if
  /// nothing.
  static std::string assumption(const AVFrame& picture);

 private:
  struct SwsDelete {
    void operator()(SwsContext* context) const;
  };
  struct FrameDelete {
    void operator()(AVFrame* frame) const;
  };

  const AVFrame& inPlanes(const AVFrame& picture);
  void setMeaning(const AVFrame& picture);
  void convertPlanes(const AVFrame& picture, int sampling);
  void compress(int width, int height, int sampling, std::string& jpeg);

  std::string file_;
  int quality_;
  detail::TjHandle compressor_;
  std::unique_ptr<SwsContext, SwsDelete> scaler_;
  std::unique_ptr<AVFrame, FrameDelete> converted_;
  std::pair<int, bool> colours_{-1, false};  ///< what conversion_ is for
  std::optional<YccConversion> conversion_;
  std::array<std::vector<unsigned char>, 3> planes_;
  std::vector<unsigned char> bytes_;
};

}  // namespace velmar::toolkit

#endif
