#include "velmar_video/rtv/RecordFileToolkit.h"

#include <turbojpeg.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "container/rtv/EllipsoidRadii.h"

double g_meridianRadius = 0;
double g_parallelRadius = 0;

namespace {

using velmar::detail::EllipsoidRadii;

constexpr double kRadiansPerDegree = EllipsoidRadii::kRadiansPerDegree;
constexpr double kMetresPerDegreeOfLatitude = 111320.0;
constexpr double kSemiMajorAxis = 6378137.0;             // WGS 84, metres
constexpr double kEccentricity2 = 0.006694384999587921;  // WGS 84, first eccentricity squared
constexpr double kMeridianNumerator = 6335439.295341883;

double metresPerDegreeOfLongitude(double latitude) {
  const double phi = RecordFileToolkit::toRadians(latitude);
  return 111413.0 * std::cos(phi) - 94.0 * std::cos(3.0 * phi);
}

}  // namespace

double RecordFileToolkit::NDS2Degree(int nds) { return nds * 90.0 * 9.313225746154785e-10; }

int RecordFileToolkit::Degree2NDS(double degrees) {
  const double nds = degrees * 1073741824.0 / 90.0;
  if (std::isnan(nds)) return 0;
  return static_cast<int>(
      std::clamp<double>(nds, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

double RecordFileToolkit::toRadians(double degrees) {
  return degrees / 180.0 * EllipsoidRadii::kPi;
}

void RecordFileToolkit::toGPS(double lon0, double lat0, double x, double y, double& lon,
                              double& lat) {
  lon = x / metresPerDegreeOfLongitude(lat0) + lon0;
  lat = lat0 + y / kMetresPerDegreeOfLatitude;
}

void RecordFileToolkit::toRelative(double lon0, double lat0, double lon, double lat, double& x,
                                   double& y) {
  x = (lon - lon0) * metresPerDegreeOfLongitude(lat0);
  y = (lat - lat0) * kMetresPerDegreeOfLatitude;
}

double RecordFileToolkit::calculateMr_(double latitude) {
  const double s = std::sin(latitude * kRadiansPerDegree);
  return kMeridianNumerator / std::pow(1.0 - kEccentricity2 * s * s, 1.5);
}

double RecordFileToolkit::calculatePr_(double latitude) {
  const double s = std::sin(latitude * kRadiansPerDegree);
  const double c = std::cos(latitude * kRadiansPerDegree);
  return kSemiMajorAxis * c / std::sqrt(1.0 - kEccentricity2 * s * s);
}

void RecordFileToolkit::initRadius(double latitude) {
  g_meridianRadius = calculateMr_(latitude);
  g_parallelRadius = calculatePr_(latitude);
}

void RecordFileToolkit::abs2Rel(double lon0, double lat0, double lon, double lat, double& x,
                                double& y) {
  EllipsoidRadii{g_meridianRadius, g_parallelRadius}.abs2Rel(lon0, lat0, lon, lat, x, y);
}

void RecordFileToolkit::rel2Abs(double lon0, double lat0, double x, double y, double& lon,
                                double& lat) {
  EllipsoidRadii{g_meridianRadius, g_parallelRadius}.rel2Abs(lon0, lat0, x, y, lon, lat);
}

bool RecordFileToolkit::getJPEGResolution(const char* data, unsigned int size,
                                          unsigned short* width, unsigned short* height) {
  tjhandle handle = tjInitDecompress();
  int subsampling = -1;
  auto* jpeg = reinterpret_cast<unsigned char*>(const_cast<char*>(data));
  const int result = tjDecompressHeader2(handle, jpeg, size, reinterpret_cast<int*>(width),
                                         reinterpret_cast<int*>(height), &subsampling);
  if (result == -1) {
    tjDestroy(handle);
    return false;
  }
  return true;  // the handle leaks: kept for existing programs
}
