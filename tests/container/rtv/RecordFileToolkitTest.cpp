#include "velmar_video/rtv/RecordFileToolkit.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "scene/SampleScene.h"
#include "support/TestSupport.h"

namespace {

using T = RecordFileToolkit;
using Pair = std::array<double, 2>;

// The two outputs of a conversion.
Pair both(void (*convert)(double, double, double, double, double&, double&), Pair origin,
          Pair place) {
  Pair result{};
  convert(origin[0], origin[1], place[0], place[1], result[0], result[1]);
  return result;
}

void expectNear(Pair found, Pair expected, double tolerance) {
  EXPECT_NEAR(found[0], expected[0], tolerance);
  EXPECT_NEAR(found[1], expected[1], tolerance);
}

TEST(Toolkit, ConvertsNdsUnits) {
  constexpr double kUnit = 90.0 / 1073741824;
  EXPECT_EQ(T::NDS2Degree(1073741824), 90.0);
  EXPECT_EQ(T::NDS2Degree(-2147483648), -180.0);
  const std::pair<double, int> rows[] = {{90, 1073741824},    {-0.5 * kUnit, 0}, {-1.9 * kUnit, -1},
                                         {-180, -2147483648}, {180, 2147483647}, {std::nan(""), 0}};
  for (const auto& [degrees, nds] : rows) EXPECT_EQ(T::Degree2NDS(degrees), nds) << degrees;
}

TEST(Toolkit, FixedCoefficientsGoThereAndBack) {
  const Pair metres = both(T::toRelative, {8.0, 60.0}, {8.01, 59.99});
  expectNear(metres, {0.01 * (111413.0 * 0.5 + 94.0), -1113.2}, 1e-6);
  expectNear(both(T::toGPS, {8.0, 60.0}, metres), {8.01, 59.99}, 1e-12);
}

TEST(Toolkit, WrapsLongitudesWithItsOwnLimits) {
  T::initRadius(0.0);
  EXPECT_EQ(g_meridianRadius, 6335439.295341883);
  EXPECT_EQ(g_parallelRadius, 6378137.0);
  const double degree = 6378137.0 * 0.0174532925199433;
  for (const auto& [from, to, degrees] : {std::array{179.5, -179.5, 1.0},
                                          {-179.5, 179.5, -1.0},
                                          {0.0, 179.9, 179.9},
                                          {0.0, 180.0, -180.0}}) {
    expectNear(both(T::abs2Rel, {from, 0}, {to, 0}), {degrees * degree, 0}, 1e-4);
  }
  for (const auto& [from, to] : {Pair{180.0, -180.0}, {-180.0, 180.0}, {200.0, -160.0}}) {
    EXPECT_EQ(both(T::rel2Abs, {from, 1}, {0, 0}), (Pair{to, 1}));
  }
}

// The radii are those of another computation, from distances between Earth-centred coordinates.
TEST(Toolkit, EllipsoidGoesThereAndBack) {
  const std::array<double, 3> rows[] = {{-35.0, 6356426.70, 5230426.84},
                                        {48.137, 6370888.86, 4264385.11},
                                        {66.0, 6388905.71, 2601499.37}};
  for (const auto& [latitude, meridian, parallel] : rows) {
    T::initRadius(latitude);
    expectNear({g_meridianRadius, g_parallelRadius}, {meridian, parallel}, 0.05);
    const Pair place = both(T::rel2Abs, {11.575, latitude}, {1000, 2000});
    expectNear(place,
               {11.575 + 1000 / parallel * 180 / M_PI, latitude + 2000 / meridian * 180 / M_PI},
               1e-9);
    expectNear(both(T::abs2Rel, {11.575, latitude}, place), {1000, 2000}, 1e-6);
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
