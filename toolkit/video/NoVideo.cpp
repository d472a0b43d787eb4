// In the place of VideoSource.cpp and VideoWriter.cpp where a build has no libavformat.
#include "toolkit/base/Failure.h"
#include "toolkit/video/VideoSource.h"
#include "toolkit/video/VideoWriter.h"

namespace velmar::toolkit {

namespace {

Failure refusal(const std::string& file) {
  return {file,
          "this build knows no videos; install libavformat-dev, libavcodec-dev, libavutil-dev and "
          "libswscale-dev and build again",
          VELMAR_ERROR_CODE_INVALID_PARAMETER_E};
}

}  // namespace

std::unique_ptr<VideoSource> openVideo(const VideoOpening& opening, Job& /*job*/) {
  throw refusal(opening.name());
}

std::unique_ptr<VideoWriter> createVideo(const VideoDescription& description) {
  throw refusal(description.path);
}

}  // namespace velmar::toolkit
