#ifndef VELMAR_TOOLKIT_EXIF_PLACE_H
#define VELMAR_TOOLKIT_EXIF_PLACE_H

#include <string>

namespace velmar::toolkit {

/// Whether a JPEG's EXIF data say where it was taken. Its first 128 KiB are enough.
bool hasExifPlace(const std::string& jpeg);

}  // namespace velmar::toolkit

#endif
