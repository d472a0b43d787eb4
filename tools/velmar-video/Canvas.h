#ifndef VELMAR_TOOL_CANVAS_H
#define VELMAR_TOOL_CANVAS_H

#include <cstddef>
#include <cstdint>
#include <vector>

struct Color {
  std::uint8_t red, green, blue;
};

/// `share` of 0 gives `from`, 1 gives `to`.
Color mix(Color from, Color to, double share);
/// All three channels moved by `amount`, within 0 to 255.
Color brighter(Color color, double amount);

/// A picture of RGB pixels, row by row without padding. Whatever is drawn outside it is cut off.
class Canvas {
 public:
  Canvas(unsigned int width, unsigned int height);

  int width() const { return width_; }
  int height() const { return height_; }
  const std::uint8_t* pixels() const { return pixels_.data(); }

  /// `x`, `y` must be inside.
  void set(int x, int y, Color color);
  void rectangle(double left, double top, double right, double bottom, Color color);
  /// A disc whose brightness is mottled by up to `roughness`, the same for the same `seed`.
  void disc(double centerX, double centerY, double radius, Color color, double roughness,
            std::uint32_t seed);
  /// Moves the brightness of every pixel by up to half of `amount`.
  void addGrain(double amount, std::uint32_t seed);
  /// Decimal digits of `dot` by `dot` pixels a dot, at least six of them, on a dark ground.
  void number(unsigned int value, int left, int top, int dot);

 private:
  void digit(unsigned int value, int left, int top, int dot, Color color);

  int width_;
  int height_;
  std::vector<std::uint8_t> pixels_;
};

#endif
