#include "scene/SampleScene.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "scene/Noise.h"

namespace {

// Lengths in metres. The camera drives in the middle of the right lane, at 0; left is negative.
constexpr double kCameraHeight = 1.4;
constexpr double kMetresPerFrame = 0.8;
constexpr double kLaneWidth = 3.6;
constexpr double kRightLine = kLaneWidth / 2;
constexpr double kMiddleLine = -kLaneWidth / 2;
constexpr double kLeftLine = -1.5 * kLaneWidth;
constexpr double kLineHalfWidth = 0.08;
constexpr double kShoulder = 0.6;
constexpr double kDashPeriod = 12;
constexpr double kDashLength = 4.5;
constexpr int kTreeSpacing = 9;
constexpr int kPostSpacing = 25;
constexpr int kSignSpacing = 140;
constexpr double kSight = 320;
constexpr double kNearest = 3;
constexpr double kSensorNoise = 8;  // steps of brightness

constexpr Color kHaze{196, 208, 218};
constexpr Color kAsphalt{88, 89, 93};
constexpr Color kMarking{226, 226, 220};
constexpr Color kGravel{132, 124, 108};
constexpr Color kGrass{86, 112, 52};
constexpr Color kWhite{238, 238, 236};
constexpr Color kBlack{28, 28, 30};

enum Seed : std::uint32_t {
  kCloudSeed = 1,
  kHillSeed,
  kGroundSeed,
  kTreeSeed,
  kBendSeed,
  kSensorSeed
};

double hazeShare(double distance) { return distance / (distance + 350); }

Color hazy(Color color, double distance) { return mix(color, kHaze, hazeShare(distance)); }

bool isNear(double value, double target, double tolerance) {
  return std::abs(value - target) < tolerance;
}

// The ground across the road, at one distance.
class GroundLine {
 public:
  // \param along  metres from the start of the road
  GroundLine(double along, double distance)
      : fine_(along * 12, kGroundSeed),
        coarse_(along * 0.5, kGroundSeed),
        detail_(1 / (1 + distance / 22)),
        contrast_(1 - hazeShare(distance)),
        grass_(hazy(kGrass, distance)),
        gravel_(hazy(kGravel, distance)),
        marking_(hazy(kMarking, distance)),
        asphalt_(hazy(kAsphalt, distance)),
        dash_(std::fmod(along, kDashPeriod) < kDashLength) {}

  Color color(double side) {
    const double fine = (fine_.at(side * 24) - 0.5) * detail_ * contrast_;
    const double coarse = (coarse_.at(side * 1.3) - 0.5) * contrast_;
    if (side < kLeftLine - 2 * kShoulder || side > kRightLine + 2 * kShoulder) {
      return brighter(grass_, 90 * fine + 44 * coarse);
    }
    if (side < kLeftLine - kShoulder || side > kRightLine + kShoulder) {
      return brighter(gravel_, 80 * fine + 16 * coarse);
    }
    if (isNear(side, kRightLine, kLineHalfWidth) || isNear(side, kLeftLine, kLineHalfWidth) ||
        (dash_ && isNear(side, kMiddleLine, kLineHalfWidth))) {
      return brighter(marking_, 40 * fine);
    }
    // Wheels polish two darker tracks into each lane.
    const double inLane = std::abs(side > kMiddleLine ? side : side + kLaneWidth);
    const double track = isNear(inLane, 0.8, 0.25) ? -6 * contrast_ : 0;
    return brighter(asphalt_, 64 * fine + 14 * coarse + track);
  }

 private:
  NoiseLine fine_;
  NoiseLine coarse_;
  double detail_;    // what is finer than a pixel would only flicker
  double contrast_;  // what haze leaves of it
  Color grass_;
  Color gravel_;
  Color marking_;
  Color asphalt_;
  bool dash_;
};

unsigned int checkedSide(unsigned int pixels) {
  if (pixels < 1 || pixels > 65500) throw std::invalid_argument("a side has 1 to 65500 pixels");
  return pixels;
}

int checkedQuality(int quality) {
  if (quality < 1 || quality > 100) throw std::invalid_argument("quality goes from 1 to 100");
  return quality;
}

double curvatureAt(double travelled) {
  return (smoothNoise(travelled / 160, 0, kBendSeed) - 0.5) * 0.0014;
}

}  // namespace

double SampleScene::metresPerFrame() { return kMetresPerFrame; }

SampleScene::Motion SampleScene::start() {
  Motion motion;
  motion.curvature = curvatureAt(0);
  return motion;
}

SampleScene::Motion SampleScene::next(Motion motion) {
  motion.east += std::sin(motion.heading) * kMetresPerFrame;
  motion.north += std::cos(motion.heading) * kMetresPerFrame;
  motion.heading += motion.curvature * kMetresPerFrame;
  motion.travelled += kMetresPerFrame;
  motion.curvature = curvatureAt(motion.travelled);
  return motion;
}

SampleScene::SampleScene(unsigned int width, unsigned int height, int quality)
    : quality_(checkedQuality(quality)),
      focalLength_(0.8 * checkedSide(width)),
      horizon_(0.45 * checkedSide(height)),
      sky_(width, height),
      canvas_(width, height),
      compressor_(tjInitCompress()) {
  drawSky(sky_);
}

std::string SampleScene::jpeg(unsigned int frameNumber) {
  travelled_ = frameNumber * kMetresPerFrame;
  curvature_ = curvatureAt(travelled_);
  canvas_ = sky_;
  drawGround();
  drawRoadside();
  drawTraffic(frameNumber);
  canvas_.addGrain(kSensorNoise, kSensorSeed + frameNumber);
  const int dot = std::max(1, canvas_.height() / 160);
  canvas_.number(frameNumber, 3 * dot, 3 * dot, dot);
  return compress();
}

void SampleScene::drawSky(Canvas& canvas) const {
  const int bottom = std::min(canvas.height(), static_cast<int>(horizon_) + 1);
  for (int y = 0; y < bottom; ++y) {
    for (int x = 0; x < canvas.width(); ++x) canvas.set(x, y, skyColor(x, y));
  }
}

Color SampleScene::skyColor(int x, int y) const {
  const double across = x / focalLength_;
  const double down = y / horizon_;  // 0 at the zenith, 1 at the horizon
  const double ridge =
      0.13 * smoothNoise(across * 3, 0, kHillSeed) + 0.03 * smoothNoise(across * 17, 0, kHillSeed);
  if (1 - down < ridge) return mix({108, 128, 128}, kHaze, 0.35 + 0.5 * (down - 1 + ridge) / ridge);

  // Clouds lie on a plane, so they shrink towards the horizon.
  const double depth = 0.6 / (1.08 - down);
  const double plane = (across - 0.6) * depth;
  const double cloud = 0.6 * smoothNoise(plane * 3, depth * 3, kCloudSeed) +
                       0.28 * smoothNoise(plane * 9, depth * 9, kCloudSeed) +
                       0.12 * smoothNoise(plane * 30, depth * 30, kCloudSeed);
  const Color clear = mix({74, 124, 190}, kHaze, down * down);
  return mix(clear, {240, 242, 245}, std::clamp((cloud - 0.5) * 3.2, 0.0, 0.85));
}

void SampleScene::drawGround() {
  const double middle = canvas_.width() / 2.0;
  for (int y = static_cast<int>(horizon_) + 1; y < canvas_.height(); ++y) {
    const double distance = kCameraHeight * focalLength_ / (y + 0.5 - horizon_);
    const double metresPerPixel = distance / focalLength_;
    const double left = (0.5 - middle) * metresPerPixel - bend(distance);
    GroundLine line(travelled_ + distance, distance);
    for (int x = 0; x < canvas_.width(); ++x) {
      canvas_.set(x, y, line.color(left + x * metresPerPixel));
    }
  }
}

void SampleScene::drawRoadside() {
  // Things stand at whole metres; from far to near, so that near ones cover far ones.
  const auto nearest = static_cast<std::int64_t>(travelled_ + kNearest);
  for (auto along = static_cast<std::int64_t>(travelled_ + kSight); along > nearest; --along) {
    const double distance = static_cast<double>(along) - travelled_;
    if (along % kTreeSpacing == 0) drawTree(static_cast<int>(along / kTreeSpacing), distance);
    if (along % kPostSpacing == 0) drawPosts(distance);
    if (along % kSignSpacing == 0) drawSign(distance);
  }
}

void SampleScene::drawTree(int number, double distance) {
  const bool left = grain(number, 1, kTreeSeed) < 0.5;
  const double away = 5 + 22 * grain(number, 2, kTreeSeed);
  const double height = 4.5 + 5 * grain(number, 3, kTreeSeed);
  const Spot foot = spot(left ? kLeftLine - away : kRightLine + away, distance);
  const double size = height * foot.scale;
  const Color leaves =
      hazy(mix({58, 92, 40}, {96, 104, 44}, grain(number, 4, kTreeSeed)), distance);
  const auto seed = static_cast<std::uint32_t>(number) + 100;
  canvas_.rectangle(foot.x - 0.03 * size, foot.y - 0.5 * size, foot.x + 0.03 * size, foot.y,
                    hazy({74, 60, 46}, distance));
  canvas_.disc(foot.x - 0.15 * size, foot.y - 0.5 * size, 0.25 * size, leaves, 26, seed);
  canvas_.disc(foot.x + 0.16 * size, foot.y - 0.54 * size, 0.24 * size, leaves, 26, seed + 1);
  canvas_.disc(foot.x, foot.y - 0.74 * size, 0.27 * size, leaves, 26, seed + 2);
}

void SampleScene::drawPosts(double distance) {
  for (const double side : {kLeftLine - 1.4, kRightLine + 1.4}) {
    const Spot foot = spot(side, distance);
    const double half = 0.06 * foot.scale;
    const auto band = [&](double bottom, double top, Color color) {
      canvas_.rectangle(foot.x - half, foot.y - top * foot.scale, foot.x + half,
                        foot.y - bottom * foot.scale, hazy(color, distance));
    };
    band(0, 1.05, kWhite);
    band(0.7, 0.92, kBlack);
    band(0.75, 0.87, {222, 150, 60});
  }
}

void SampleScene::drawSign(double distance) {
  const Spot foot = spot(kRightLine + 3.4, distance);
  const auto part = [&](double left, double bottom, double right, double top, Color color) {
    canvas_.rectangle(foot.x + left * foot.scale, foot.y - top * foot.scale,
                      foot.x + right * foot.scale, foot.y - bottom * foot.scale,
                      hazy(color, distance));
  };
  part(-0.85, 0, -0.75, 2.2, {120, 122, 124});
  part(0.75, 0, 0.85, 2.2, {120, 122, 124});
  part(-1.1, 1.7, 1.1, 3.1, kWhite);
  part(-1.04, 1.76, 1.04, 3.04, {24, 72, 148});
  part(-0.8, 2.55, 0.6, 2.75, kWhite);
  part(-0.8, 2.1, 0.2, 2.3, kWhite);
}

void SampleScene::drawTraffic(unsigned int frameNumber) {
  const double gap = 22 + 16 * smoothNoise(frameNumber / 60.0, 0, kSensorSeed);
  const double oncoming = 200 - std::fmod(frameNumber * 2 * kMetresPerFrame, 196);
  if (oncoming > gap) drawCar(-kLaneWidth, oncoming, {62, 66, 78}, {250, 248, 224});
  drawCar(0.1, gap, {150, 34, 34}, {226, 40, 36});
  if (oncoming <= gap) drawCar(-kLaneWidth, oncoming, {62, 66, 78}, {250, 248, 224});
}

void SampleScene::drawCar(double side, double distance, Color paint, Color lights) {
  const Spot foot = spot(side, distance);
  const auto part = [&](double left, double bottom, double right, double top, Color color) {
    canvas_.rectangle(foot.x + left * foot.scale, foot.y - top * foot.scale,
                      foot.x + right * foot.scale, foot.y - bottom * foot.scale,
                      hazy(color, distance));
  };
  part(-0.95, -0.06, 0.95, 0.22, {36, 36, 38});  // shadow
  part(-0.88, 0, -0.62, 0.4, kBlack);            // wheels
  part(0.62, 0, 0.88, 0.4, kBlack);
  part(-0.9, 0.25, 0.9, 0.95, paint);
  part(-0.72, 0.95, 0.72, 1.42, brighter(paint, -14));
  part(-0.62, 0.98, 0.62, 1.34, {66, 78, 88});  // window
  part(-0.86, 0.66, -0.56, 0.84, lights);
  part(0.56, 0.66, 0.86, 0.84, lights);
  part(-0.26, 0.46, 0.26, 0.6, kWhite);  // number plate
}

double SampleScene::bend(double distance) const { return curvature_ * distance * distance; }

SampleScene::Spot SampleScene::spot(double side, double distance) const {
  const double scale = focalLength_ / distance;
  return {canvas_.width() / 2.0 + (side + bend(distance)) * scale, horizon_ + kCameraHeight * scale,
          scale};
}

std::string SampleScene::compress() const {
  std::string jpeg(tjBufSize(canvas_.width(), canvas_.height(), TJSAMP_420), '\0');
  auto* out = reinterpret_cast<unsigned char*>(jpeg.data());
  unsigned long size = jpeg.size();
  if (tjCompress2(compressor_.get(), canvas_.pixels(), canvas_.width(), 0, canvas_.height(),
                  TJPF_RGB, &out, &size, TJSAMP_420, quality_, TJFLAG_NOREALLOC) != 0) {
    throw std::runtime_error(tjGetErrorStr2(compressor_.get()));
  }
  jpeg.resize(size);
  return jpeg;
}
