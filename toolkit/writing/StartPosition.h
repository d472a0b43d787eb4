#ifndef VELMAR_TOOLKIT_START_POSITION_H
#define VELMAR_TOOLKIT_START_POSITION_H

#include <optional>
#include <string>

#include "velmar_video/rtv/RecordFile.h"

namespace velmar::toolkit {

/// From where the positions of an rtv are to be counted.
struct StartPosition {
  int lng = 0;                ///< NDS units
  int lat = 0;                ///< NDS units
  std::optional<double> alt;  ///< metres
};

/// "LNG,LAT" or "LNG,LAT,ALT" in degrees and metres. Throws UsageError.
StartPosition parseStartPosition(const std::string& text);

struct StoredAltitude {
  int units = 0;  ///< the nearest that the version has
  bool isExact = true;
};

/// An altitude of that many metres in a version that has any.
StoredAltitude storedAltitude(double metres, version_e version);

}  // namespace velmar::toolkit

#endif
