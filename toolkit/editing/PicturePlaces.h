#ifndef VELMAR_TOOLKIT_PICTURE_PLACES_H
#define VELMAR_TOOLKIT_PICTURE_PLACES_H

#include "toolkit/base/Job.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// Tells the job of frames whose pictures say where they were taken (EXIF): no edit changes those.
void tellPicturePlaces(const Recording& recording, Job& job);

}  // namespace velmar::toolkit

#endif
