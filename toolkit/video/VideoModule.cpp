// The module's only symbol that programs see.
#include "toolkit/video/VideoModule.h"

namespace velmar::toolkit {

extern "C" __attribute__((visibility("default")))
const VideoModule velmarVideoModule = {&openVideo, &createVideo};

}  // namespace velmar::toolkit
