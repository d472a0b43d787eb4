/// Pseudo-random values that depend on nothing but their arguments, on every machine.
#ifndef VELMAR_SCENE_NOISE_H
#define VELMAR_SCENE_NOISE_H

#include <cstdint>

/// 0 to below 1, unrelated between neighbours.
inline double grain(std::int32_t x, std::int32_t y, std::uint32_t seed) {
  std::uint32_t hash = static_cast<std::uint32_t>(x) * 0x9E3779B1U ^
                       static_cast<std::uint32_t>(y) * 0x85EBCA77U ^ seed * 0xC2B2AE3DU;
  hash = (hash ^ hash >> 15) * 0x2C1B3C6DU;
  hash = (hash ^ hash >> 12) * 0x297A2D39U;
  return (hash ^ hash >> 15) * 0x1p-32;
}

/// Whole numbers downwards, also for negative values. Faster than std::floor().
inline std::int32_t cellOf(double coordinate) {
  const auto cell = static_cast<std::int32_t>(coordinate);
  return cell - (coordinate < cell ? 1 : 0);
}

/// Noise of 0 to below 1 along a line, changing gently over a distance of 1. Neighbouring places
/// that are asked for one after another are cheap.
class NoiseLine {
 public:
  NoiseLine(double y, std::uint32_t seed)
      : seed_(seed), cellY_(cellOf(y)), down_(ease(y - cellY_)) {}

  double at(double x) {
    const std::int32_t cell = cellOf(x);
    if (cell != cellX_) moveTo(cell);
    return left_ + (right_ - left_) * ease(x - cell);
  }

 private:
  static double ease(double share) { return share * share * (3 - 2 * share); }

  void moveTo(std::int32_t cell) {
    cellX_ = cell;
    left_ = corner(cell);
    right_ = corner(cell + 1);
  }

  double corner(std::int32_t x) const {
    const double upper = grain(x, cellY_, seed_);
    return upper + (grain(x, cellY_ + 1, seed_) - upper) * down_;
  }

  std::uint32_t seed_;
  std::int32_t cellY_;
  double down_;
  std::int32_t cellX_ = INT32_MIN;
  double left_ = 0;
  double right_ = 0;
};

/// The noise of a single place.
inline double smoothNoise(double x, double y, std::uint32_t seed) {
  return NoiseLine(y, seed).at(x);
}

#endif
