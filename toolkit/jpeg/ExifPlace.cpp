#include "toolkit/jpeg/ExifPlace.h"

#include <libexif/exif-data.h>

#include <memory>

namespace velmar::toolkit {

bool hasExifPlace(const std::string& jpeg) {
  struct Delete {
    void operator()(ExifData* data) const { exif_data_unref(data); }
  };
  if (jpeg.find("Exif") == jpeg.npos) return false;
  const std::unique_ptr<ExifData, Delete> data(exif_data_new_from_data(
      reinterpret_cast<const unsigned char*>(jpeg.data()), static_cast<unsigned int>(jpeg.size())));
  if (!data) return false;
  ExifContent* const places = data->ifd[EXIF_IFD_GPS];
  const auto has = [places](int tag) {
    return exif_content_get_entry(places, static_cast<ExifTag>(tag)) != nullptr;
  };
  return has(EXIF_TAG_GPS_LATITUDE) || has(EXIF_TAG_GPS_LONGITUDE);
}

}  // namespace velmar::toolkit
