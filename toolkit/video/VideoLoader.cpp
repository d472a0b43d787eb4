// openVideo() and createVideo() of programs that load the module.
#include "toolkit/video/VideoModule.h"

#include "toolkit/base/ProgramModule.h"

namespace velmar::toolkit {

namespace {

VideoModule loadModule(const std::string& file) {
  const ProgramModule module{
      VELMAR_VIDEO_MODULE,
      "this build knows no videos; install libavformat-dev, libavcodec-dev, libavutil-dev and "
      "libswscale-dev and build again",
      "videos cannot be read or written"};
  return *static_cast<const VideoModule*>(symbolOf(module, "velmarVideoModule", file));
}

const VideoModule& module(const std::string& file) {
  static const VideoModule loaded = loadModule(file);
  return loaded;
}

}  // namespace

std::unique_ptr<VideoSource> openVideo(const VideoOpening& opening, Job& job) {
  return module(opening.name()).open(opening, job);
}

std::unique_ptr<VideoWriter> createVideo(const VideoDescription& description) {
  return module(description.path).create(description);
}

}  // namespace velmar::toolkit
