#ifndef VELMAR_SCENE_COLOR_H
#define VELMAR_SCENE_COLOR_H

#include <algorithm>
#include <cstdint>

/// 8 bits a channel. The arithmetic is here because it runs for every pixel.
struct Color {
  std::uint8_t red, green, blue;
};

inline std::uint8_t toChannel(double value) {
  return static_cast<std::uint8_t>(std::min(std::max(value, 0.0), 255.0));
}

/// `share` of 0 gives `from`, 1 gives `to`.
inline Color mix(Color from, Color to, double share) {
  const auto between = [share](double a, double b) { return toChannel(a + (b - a) * share); };
  return {between(from.red, to.red), between(from.green, to.green), between(from.blue, to.blue)};
}

/// All three channels moved by `amount`, within 0 to 255.
inline Color brighter(Color color, double amount) {
  return {toChannel(color.red + amount), toChannel(color.green + amount),
          toChannel(color.blue + amount)};
}

#endif
