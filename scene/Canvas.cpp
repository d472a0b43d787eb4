#include "scene/Canvas.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "scene/Noise.h"

namespace {

// Seven rows of five dots, the leftmost dot in bit 4.
constexpr int kDigitWidth = 5;
constexpr int kDigitHeight = 7;
constexpr std::uint8_t kDigits[10][kDigitHeight] = {
    {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E}, {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E},
    {0x0E, 0x11, 0x01, 0x06, 0x08, 0x10, 0x1F}, {0x1F, 0x02, 0x04, 0x02, 0x01, 0x11, 0x0E},
    {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02}, {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E},
    {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E}, {0x1F, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08},
    {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E}, {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C}};

// The first pixel at or behind a coordinate, within 0 to `limit`.
int pixelAt(double coordinate, int limit) {
  return static_cast<int>(std::clamp(std::ceil(coordinate - 0.5), 0.0, double(limit)));
}

}  // namespace

Canvas::Canvas(unsigned int width, unsigned int height)
    : width_(static_cast<int>(width)),
      height_(static_cast<int>(height)),
      pixels_(std::size_t{3} * width * height) {}

void Canvas::rectangle(double left, double top, double right, double bottom, Color color) {
  const int endX = pixelAt(right, width_);
  const int endY = pixelAt(bottom, height_);
  for (int y = pixelAt(top, height_); y < endY; ++y) {
    for (int x = pixelAt(left, width_); x < endX; ++x) set(x, y, color);
  }
}

void Canvas::disc(double centerX, double centerY, double radius, Color color, double roughness,
                  std::uint32_t seed) {
  const int endX = pixelAt(centerX + radius, width_);
  const int endY = pixelAt(centerY + radius, height_);
  const double patch = std::max(1.0, radius / 9);
  for (int y = pixelAt(centerY - radius, height_); y < endY; ++y) {
    for (int x = pixelAt(centerX - radius, width_); x < endX; ++x) {
      const double dx = (x - centerX) / radius;
      const double dy = (y - centerY) / radius;
      const double mottle =
          smoothNoise((x - centerX) / patch + 64, (y - centerY) / patch + 64, seed);
      // A ragged rim, lit from above.
      if (dx * dx + dy * dy > 0.7 + 0.3 * mottle) continue;
      set(x, y, brighter(color, roughness * (2 * mottle - 1 - dy)));
    }
  }
}

void Canvas::addGrain(double amount, std::uint32_t seed) {
  std::uint8_t* pixel = pixels_.data();
  for (int y = 0; y < height_; ++y) {
    for (int x = 0; x < width_; ++x, pixel += 3) {
      const double change = amount * (grain(x, y, seed) - 0.5);
      for (int i = 0; i < 3; ++i) pixel[i] = toChannel(pixel[i] + change);
    }
  }
}

void Canvas::number(unsigned int value, int left, int top, int dot) {
  std::string digits = std::to_string(value);
  if (digits.size() < 6) digits.insert(0, 6 - digits.size(), '0');
  const int step = (kDigitWidth + 1) * dot;
  const int length = static_cast<int>(digits.size()) * step;
  rectangle(left, top, left + length + dot, top + (kDigitHeight + 2) * dot, {16, 18, 22});
  for (std::size_t i = 0; i < digits.size(); ++i) {
    digit(static_cast<unsigned int>(digits[i] - '0'), left + dot + static_cast<int>(i) * step,
          top + dot, dot, {240, 240, 228});
  }
}

void Canvas::digit(unsigned int value, int left, int top, int dot, Color color) {
  for (int row = 0; row < kDigitHeight; ++row) {
    for (int column = 0; column < kDigitWidth; ++column) {
      if ((kDigits[value][row] >> (kDigitWidth - 1 - column) & 1) == 0) continue;
      const int x = left + column * dot;
      const int y = top + row * dot;
      rectangle(x, y, x + dot, y + dot, color);
    }
  }
}
