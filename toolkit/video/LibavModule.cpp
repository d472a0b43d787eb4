// The module's only symbol that programs see.
#include "toolkit/video/VideoModule.h"

extern "C" __attribute__((visibility("default")))
const velmar::toolkit::VideoModule velmarVideoModule = {&velmar::toolkit::openVideo,
                                                        &velmar::toolkit::createVideo};
