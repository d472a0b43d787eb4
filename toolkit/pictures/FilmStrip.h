#ifndef VELMAR_TOOLKIT_FILM_STRIP_H
#define VELMAR_TOOLKIT_FILM_STRIP_H

#include <vector>

#include "toolkit/frames/SharedRecording.h"
#include "toolkit/jpeg/Picture.h"

namespace velmar::toolkit {

/// One picture of small pictures of the frames side by side, all of one size, at least `height`
/// pixels high unless the frames are smaller. Frames that cannot be had are dark. Throws Failure,
/// also if the strip would be larger than picture files may be.
Picture drawFilmStrip(SharedRecording& recording, const std::vector<unsigned int>& frames,
                      unsigned int height);

}  // namespace velmar::toolkit

#endif
