#include "scene/Canvas.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "scene/Noise.h"

namespace {

// Seven rows of five dots, the leftmost dot in bit 4.
constexpr int kGlyphWidth = 5;
constexpr int kGlyphHeight = 7;
constexpr std::string_view kGlyphNames = "0123456789:.-";
constexpr std::uint8_t kGlyphs[kGlyphNames.size()][kGlyphHeight] = {
    {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E}, {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E},
    {0x0E, 0x11, 0x01, 0x06, 0x08, 0x10, 0x1F}, {0x1F, 0x02, 0x04, 0x02, 0x01, 0x11, 0x0E},
    {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02}, {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E},
    {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E}, {0x1F, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08},
    {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E}, {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C},
    {0x00, 0x0C, 0x0C, 0x00, 0x0C, 0x0C, 0x00}, {0x00, 0x00, 0x00, 0x00, 0x00, 0x0C, 0x0C},
    {0x00, 0x00, 0x00, 0x0E, 0x00, 0x00, 0x00}};

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

void Canvas::picture(const std::uint8_t* pixels, int width, int height, int left, int top) {
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x, pixels += 3) {
      const bool isInside = left + x >= 0 && left + x < width_ && top + y >= 0 && top + y < height_;
      if (isInside) set(left + x, top + y, {pixels[0], pixels[1], pixels[2]});
    }
  }
}

void Canvas::text(std::string_view text, int left, int top, int dot, Color color) {
  for (const char character : text) {
    const std::size_t found = kGlyphNames.find(character);
    if (found != kGlyphNames.npos) glyph(kGlyphs[found], left, top, dot, color);
    left += (kGlyphWidth + 1) * dot;
  }
}

void Canvas::number(unsigned int value, int left, int top, int dot) {
  std::string digits = std::to_string(value);
  if (digits.size() < 6) digits.insert(0, 6 - digits.size(), '0');
  const int length = static_cast<int>(digits.size()) * (kGlyphWidth + 1) * dot;
  rectangle(left, top, left + length + dot, top + (kGlyphHeight + 2) * dot, {16, 18, 22});
  text(digits, left + dot, top + dot, dot, {240, 240, 228});
}

void Canvas::glyph(const std::uint8_t* rows, int left, int top, int dot, Color color) {
  for (int row = 0; row < kGlyphHeight; ++row) {
    for (int column = 0; column < kGlyphWidth; ++column) {
      if ((rows[row] >> (kGlyphWidth - 1 - column) & 1) == 0) continue;
      const int x = left + column * dot;
      const int y = top + row * dot;
      rectangle(x, y, x + dot, y + dot, color);
    }
  }
}
