/// Pseudo-random values that depend on nothing but their arguments, on every machine.
#ifndef VELMAR_TOOL_NOISE_H
#define VELMAR_TOOL_NOISE_H

#include <cstdint>

/// 0 to below 1, unrelated between neighbours.
inline double grain(std::int32_t x, std::int32_t y, std::uint32_t seed) {
  std::uint32_t hash = static_cast<std::uint32_t>(x) * 0x9E3779B1U ^
                       static_cast<std::uint32_t>(y) * 0x85EBCA77U ^ seed * 0xC2B2AE3DU;
  hash = (hash ^ hash >> 15) * 0x2C1B3C6DU;
  hash = (hash ^ hash >> 12) * 0x297A2D39U;
  return (hash ^ hash >> 15) * 0x1p-32;
}

/// 0 to below 1, changing gently over a distance of 1.
double smoothNoise(double x, double y, std::uint32_t seed);

#endif
