#ifndef VELMAR_TOOLKIT_EXIF_TIME_H
#define VELMAR_TOOLKIT_EXIF_TIME_H

#include <cstdint>
#include <string>
#include <vector>

namespace velmar::toolkit {

/// When a camera took a picture by its EXIF data: DateTimeOriginal with the fraction of a second
/// and the offset from UTC beside it; without an offset it is local time (TZ). Throws Failure if
/// the file does not say it. \return microseconds since 1970
std::uint64_t exifTime(const std::string& path);

/// Sorts the files by these times; those with the same keep their order. Throws Failure.
/// \return the times, in the new order
std::vector<std::uint64_t> sortByExifTimes(std::vector<std::string>& files);

}  // namespace velmar::toolkit

#endif
