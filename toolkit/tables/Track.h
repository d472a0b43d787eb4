#ifndef VELMAR_TOOLKIT_TRACK_H
#define VELMAR_TOOLKIT_TRACK_H

#include <string>
#include <vector>

#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// A place on the WGS 84 ellipsoid.
struct Place {
  double lng;  ///< degrees
  double lat;  ///< degrees
  double alt;  ///< metres
};

/// On the ground, the short way round; of places that are not so far apart that the radii of the
/// ellipsoid differ.
double metresBetween(const Place& one, const Place& other);

/// Where the frames of an rtv were captured: its start position and the frames' positions relative
/// to it, by the ellipsoid method. One Track at a time, since that method keeps its radii in
/// variables of the process.
class Track {
 public:
  explicit Track(const Recording& recording);

  Place start() const { return start_; }
  Place at(const FrameTag& tag) const;

  /// A GPX document.
  std::string gpx(const std::vector<unsigned int>& frames) const;
  /// A GeoJSON feature: a line, or a point for a single frame.
  std::string geoJson(const std::vector<unsigned int>& frames) const;

 private:
  const Recording& recording_;
  Place start_{};
};

}  // namespace velmar::toolkit

#endif
