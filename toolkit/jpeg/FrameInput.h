/// Picture files as a source of frames.
#ifndef VELMAR_TOOLKIT_FRAME_INPUT_H
#define VELMAR_TOOLKIT_FRAME_INPUT_H

#include <string>
#include <vector>

#include "toolkit/base/Job.h"

namespace velmar::toolkit {

/// No frame is larger; what is, is no frame.
constexpr std::size_t kMaxFrameSize = std::size_t{64} << 20;

/// Whether it is one file that is not named as a picture: a video, if anything.
bool isVideoInput(const std::vector<std::string>& inputs);

/// Whether a file is named as a picture that is no JPEG and has to be encoded: PNG, BMP, TIFF,
/// WebP.
bool isOtherPicture(const std::string& path);

/// Files stay as they are given; a folder stands for its pictures in natural order.
/// Throws Failure if one is missing or a folder holds none.
std::vector<std::string> listPictures(const std::vector<std::string>& inputs);

/// The pictures without those that would have to be encoded, which the job is told. Throws Failure
/// if none is left.
std::vector<std::string> withoutOtherPictures(std::vector<std::string> pictures, Job& job);

}  // namespace velmar::toolkit

#endif
