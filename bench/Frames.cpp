#include "Frames.h"

#include <algorithm>

#include "scene/SampleScene.h"

namespace {

std::vector<std::string> draw(unsigned int width, unsigned int height, int quality) {
  constexpr unsigned int kCount = 48;
  SampleScene scene(width, height, quality);
  std::vector<std::string> frames;
  for (unsigned int i = 0; i < kCount; ++i) frames.push_back(scene.jpeg(i));
  return frames;
}

}  // namespace

const Frames& Frames::camera() {
  constexpr int kQuality = 85;
  static const Frames frames(draw(kWidth, kHeight, kQuality));
  return frames;
}

const Frames& Frames::small() {
  static const Frames frames(draw(48, 32, 50));
  return frames;
}

Frames Frames::ofSize(std::size_t size) { return Frames({std::string(size, '\x5A')}); }

std::size_t Frames::largest() const {
  return std::max_element(frames_.begin(), frames_.end(),
                          [](const auto& a, const auto& b) { return a.size() < b.size(); })
      ->size();
}
