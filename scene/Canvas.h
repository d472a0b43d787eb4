#ifndef VELMAR_SCENE_CANVAS_H
#define VELMAR_SCENE_CANVAS_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "scene/Color.h"

/// A picture of RGB pixels, row by row without padding. Whatever is drawn outside it is cut off.
class Canvas {
 public:
  Canvas(unsigned int width, unsigned int height);

  int width() const { return width_; }
  int height() const { return height_; }
  const std::uint8_t* pixels() const { return pixels_.data(); }

  /// `x`, `y` must be inside.
  void set(int x, int y, Color color) {
    std::uint8_t* pixel = &pixels_[3 * (static_cast<std::size_t>(y) * width_ + x)];
    pixel[0] = color.red;
    pixel[1] = color.green;
    pixel[2] = color.blue;
  }
  void rectangle(double left, double top, double right, double bottom, Color color);
  /// A disc whose brightness is mottled by up to `roughness`, the same for the same `seed`.
  void disc(double centerX, double centerY, double radius, Color color, double roughness,
            std::uint32_t seed);
  /// Moves the brightness of every pixel by up to half of `amount`.
  void addGrain(double amount, std::uint32_t seed);
  /// RGB pixels, row by row without padding.
  void picture(const std::uint8_t* pixels, int width, int height, int left, int top);
  /// Digits, colons, points and hyphens; a gap for any other character. A character is 6 by 7 dots
  /// of `dot` by `dot` pixels, of which the sixth column is empty.
  void text(std::string_view text, int left, int top, int dot, Color color);
  /// Decimal digits, at least six of them, on a dark ground.
  void number(unsigned int value, int left, int top, int dot);

 private:
  void glyph(const std::uint8_t* rows, int left, int top, int dot, Color color);

  int width_;
  int height_;
  std::vector<std::uint8_t> pixels_;
};

#endif
