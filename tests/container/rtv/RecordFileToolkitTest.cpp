#include "velmar_video/rtv/RecordFileToolkit.h"

#include <gtest/gtest.h>

#include <cmath>

#include "SampleScene.h"
#include "support/TestSupport.h"

namespace {

using T = RecordFileToolkit;

TEST(Toolkit, ConvertsNdsUnits) {
  constexpr double kUnit = 90.0 / 1073741824;
  EXPECT_EQ(T::NDS2Degree(1073741824), 90.0);
  EXPECT_EQ(T::NDS2Degree(-2147483648), -180.0);
  const std::pair<double, int> rows[] = {{90, 1073741824},    {-0.5 * kUnit, 0}, {-1.9 * kUnit, -1},
                                         {-180, -2147483648}, {180, 2147483647}, {std::nan(""), 0}};
  for (const auto& [degrees, nds] : rows) EXPECT_EQ(T::Degree2NDS(degrees), nds) << degrees;
}

TEST(Toolkit, FixedCoefficientsGoThereAndBack) {
  double x = 0;
  double y = 0;
  T::toRelative(8.0, 60.0, 8.01, 59.99, x, y);
  EXPECT_NEAR(x, 0.01 * (111413.0 * 0.5 + 94.0), 1e-6);
  EXPECT_NEAR(y, -1113.2, 1e-6);
  double lon = 0;
  double lat = 0;
  T::toGPS(8.0, 60.0, x, y, lon, lat);
  EXPECT_NEAR(lon, 8.01, 1e-12);
  EXPECT_NEAR(lat, 59.99, 1e-12);
}

TEST(Toolkit, WrapsLongitudesWithItsOwnLimits) {
  T::initRadius(0.0);
  EXPECT_EQ(g_meridianRadius, 6335439.295341883);
  EXPECT_EQ(g_parallelRadius, 6378137.0);
  const double degree = 6378137.0 * 0.0174532925199433;
  double x = 0;
  double y = 0;
  for (const auto& [from, to, expected] : {std::array{179.5, -179.5, degree},
                                           {-179.5, 179.5, -degree},
                                           {0.0, 179.9, 179.9 * degree},
                                           {0.0, 180.0, -180 * degree}}) {
    T::abs2Rel(from, 0, to, 0, x, y);
    EXPECT_NEAR(x, expected, 1e-4) << from;
  }
  double lon = 0;
  double lat = 0;
  for (const auto& [from, expected] :
       {std::array{180.0, -180.0}, {-180.0, 180.0}, {200.0, -160.0}}) {
    T::rel2Abs(from, 1, 0, 0, lon, lat);
    EXPECT_EQ(lon, expected);
    EXPECT_EQ(lat, 1);
  }
}

// An independent way round the ellipsoid: over the tangent plane of Earth-centred coordinates.
TEST(Toolkit, EllipsoidAgreesWithEarthCentredCoordinates) {
  const auto centred = [](double lonDegrees, double latDegrees) {
    const double f = 1 / 298.257223563;
    const double e2 = f * (2 - f);
    const double lon = lonDegrees * M_PI / 180;
    const double lat = latDegrees * M_PI / 180;
    const double n = 6378137.0 / std::sqrt(1 - e2 * std::sin(lat) * std::sin(lat));
    return std::array{n * std::cos(lat) * std::cos(lon), n * std::cos(lat) * std::sin(lon),
                      n * (1 - e2) * std::sin(lat)};
  };
  const auto distance = [](const auto& p, const auto& q) {
    return std::hypot(p[0] - q[0], p[1] - q[1], p[2] - q[2]);
  };
  for (const double lat0 : {-35.0, 0.0, 48.137, 66.0}) {
    T::initRadius(lat0);
    const auto origin = centred(11.575, lat0);
    for (const auto& [x, y] : {std::array{1000.0, 0.0}, {0.0, 1000.0}}) {
      double lon = 0;
      double lat = 0;
      T::rel2Abs(11.575, lat0, x, y, lon, lat);
      EXPECT_NEAR(distance(origin, centred(lon, lat)), 1000.0, 0.001);
      double xBack = 0;
      double yBack = 0;
      T::abs2Rel(11.575, lat0, lon, lat, xBack, yBack);
      EXPECT_NEAR(xBack, x, 1e-6);
      EXPECT_NEAR(yBack, y, 1e-6);
    }
  }
}

// In a process of its own, since success leaves a handle behind.
TEST(Toolkit, ReadsTheSizeOfAJpeg) {
  const std::string jpeg = SampleScene(331, 203).jpeg(0);
  EXPECT_TRUE(inChildProcess([&] {
    unsigned short width[2] = {};
    unsigned short height[2] = {};
    return T::getJPEGResolution(jpeg.data(), jpeg.size(), width, height) && width[0] == 331 &&
           height[0] == 203 && !T::getJPEGResolution("no JPEG", 7, width, height) &&
           !T::getJPEGResolution(nullptr, 0, width, height) && width[0] == 331;
  }));
}

}  // namespace
