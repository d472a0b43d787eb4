#ifndef VELMAR_TOOLKIT_TRACK_H
#define VELMAR_TOOLKIT_TRACK_H

#include <string>
#include <vector>

#include "container/rtv/EllipsoidRadii.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// A place on the WGS 84 ellipsoid.
struct Place {
  double lng;  ///< degrees
  double lat;  ///< degrees
  double alt;  ///< metres
};

/// The start position of an rtv, "LNG,LAT,ALT" in degrees and metres.
std::string startPositionText(const RecordingDescription& description);

/// Distances on the ground around a latitude, by the radii that the ellipsoid has there.
class GroundScale {
 public:
  explicit GroundScale(double lat);

  double lat() const { return lat_; }
  double metresPerDegreeEast() const { return metresPerDegreeEast_; }
  double metresPerDegreeNorth() const { return metresPerDegreeNorth_; }
  /// Metres, the short way round.
  double distance(const Place& one, const Place& other) const;

 private:
  double lat_;
  double metresPerDegreeEast_;
  double metresPerDegreeNorth_;
};

/// Where the frames of an rtv were captured: its start position and the frames' positions relative
/// to it, by the ellipsoid method.
class Track {
 public:
  /// Of an rtv that is finished.
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
  detail::EllipsoidRadii radii_;
};

}  // namespace velmar::toolkit

#endif
