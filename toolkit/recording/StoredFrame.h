#ifndef VELMAR_TOOLKIT_STORED_FRAME_H
#define VELMAR_TOOLKIT_STORED_FRAME_H

#include <string>

#include "toolkit/base/Losses.h"
#include "toolkit/recording/Recording.h"

/// Reads a frame as it is stored. One of a recording whose codec is H264 may begin with anything.
/// \return what is wrong with it: it has no bytes, or they do not begin as a JPEG
FrameFlaw readStoredFrame(const Recording& recording, unsigned int index, std::string& bytes);

#endif
