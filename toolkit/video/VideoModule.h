/// libavformat and libavcodec bring a hundred libraries, which take longer to load than most
/// commands run. What uses them is a module that is loaded when there is a video.
#ifndef VELMAR_TOOLKIT_VIDEO_MODULE_H
#define VELMAR_TOOLKIT_VIDEO_MODULE_H

#include "toolkit/video/VideoSource.h"
#include "toolkit/video/VideoWriter.h"

namespace velmar::toolkit {

/// What the module has under the name `velmarVideoModule`.
struct VideoModule {
  decltype(&openVideo) open;
  decltype(&createVideo) create;
};

}  // namespace velmar::toolkit

#endif
