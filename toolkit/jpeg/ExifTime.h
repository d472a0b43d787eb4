#ifndef VELMAR_TOOLKIT_EXIF_TIME_H
#define VELMAR_TOOLKIT_EXIF_TIME_H

#include <cstdint>
#include <string>

namespace velmar::toolkit {

/// When a camera took a picture by its EXIF data: DateTimeOriginal with the fraction of a second
/// and the offset from UTC beside it; without an offset it is local time (TZ). \return microseconds
/// since 1970 Throws Failure if the file does not say it.
std::uint64_t exifTime(const std::string& path);

}  // namespace velmar::toolkit

#endif
