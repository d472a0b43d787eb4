#include "toolkit/copying/Strip.h"

#include <sstream>
#include <utility>

#include "toolkit/base/Failure.h"
#include "toolkit/jpeg/JpegMetaData.h"

namespace velmar::toolkit {

Strip Strip::named(const std::string& names) {
  Strip strip;
  if (names.empty()) throw UsageError("--strip names nothing");
  std::istringstream list(names);
  for (std::string name; std::getline(list, name, ',');) {
    if (name == "positions") {
      strip.positions = true;
    } else if (name == "ids") {
      strip.ids = true;
    } else if (name == "exif") {
      strip.exif = true;
    } else {
      throw UsageError("--strip: " + name + " is neither positions, ids nor exif");
    }
  }
  return strip;
}

void Strip::applyTo(RecordingDescription& description) const {
  if (positions) description.lng = description.lat = description.alt = 0;
  if (ids) description.deviceId.clear();
}

bool Strip::applyTo(NewFrame& frame) const {
  if (positions) frame.tag.clearPosition();
  if (!exif) return true;
  auto stripped = withoutMetaData(frame.jpeg);
  if (stripped) frame.jpeg = std::move(*stripped);
  return stripped.has_value();
}

}  // namespace velmar::toolkit
