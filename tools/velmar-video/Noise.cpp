#include "Noise.h"

#include <cmath>

double smoothNoise(double x, double y, std::uint32_t seed) {
  const double cellX = std::floor(x);
  const double cellY = std::floor(y);
  const auto left = static_cast<std::int32_t>(cellX);
  const auto top = static_cast<std::int32_t>(cellY);
  const auto ease = [](double share) { return share * share * (3 - 2 * share); };
  const double across = ease(x - cellX);
  const double down = ease(y - cellY);
  const auto row = [&](std::int32_t rowNumber) {
    const double from = grain(left, rowNumber, seed);
    return from + (grain(left + 1, rowNumber, seed) - from) * across;
  };
  const double upper = row(top);
  return upper + (row(top + 1) - upper) * down;
}
