/// The ellipsoid method of coordinates, with radii that the caller keeps.
#ifndef VELMAR_VIDEO_CONTAINER_RTV_ELLIPSOID_RADII_H
#define VELMAR_VIDEO_CONTAINER_RTV_ELLIPSOID_RADII_H

#include "velmar_video/rtv/RecordFileToolkit.h"

namespace velmar::detail {

/// Radii of the WGS 84 ellipsoid at one latitude, metres. See RecordFileToolkit, whose functions of
/// the same names use the two of the process.
struct EllipsoidRadii {
  static constexpr double kPi = 3.141592653589793;
  static constexpr double kRadiansPerDegree = 0.0174532925199433;  // shortened; part of the results
  static constexpr double kDegreesPerRadian = 57.29577951308233;

  static EllipsoidRadii at(double latitude) {
    return {RecordFileToolkit::calculateMr_(latitude), RecordFileToolkit::calculatePr_(latitude)};
  }

  void abs2Rel(double lon0, double lat0, double lon, double lat, double& x, double& y) const {
    double difference = (lon - lon0) * kRadiansPerDegree;
    if (difference > kPi) {
      difference -= 2 * kPi;
    } else if (-kPi > difference) {
      difference += 2 * kPi;
    }
    x = difference * parallel;
    y = kRadiansPerDegree * (lat - lat0) * meridian;
  }

  void rel2Abs(double lon0, double lat0, double x, double y, double& lon, double& lat) const {
    lon = lon0 + (x / parallel) * kDegreesPerRadian;
    lat = lat0 + kDegreesPerRadian * (y / meridian);
    if (lon >= 180.0) {
      lon -= 360.0;
    } else if (-180.0 >= lon) {
      lon += 360.0;
    }
  }

  double meridian = 0;
  double parallel = 0;
};

}  // namespace velmar::detail

#endif
