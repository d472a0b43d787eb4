/// The frames that everything is measured with.
#ifndef VELMAR_BENCH_FRAMES_H
#define VELMAR_BENCH_FRAMES_H

#include <string>
#include <vector>

constexpr unsigned short kWidth = 1280;  // pixels, of a camera frame
constexpr unsigned short kHeight = 800;

/// Some dozens of frames, drawn once, to be repeated.
class Frames {
 public:
  /// 1280 x 800, quality 85, 100 to 200 kB.
  static const Frames& camera();
  /// About 1 kB.
  static const Frames& small();
  /// Bytes that no decoder is to see, `size` of them a frame.
  static Frames ofSize(std::size_t size);

  const std::string& operator[](std::size_t index) const { return frames_[index % frames_.size()]; }
  /// Bytes of the largest.
  std::size_t largest() const;

 private:
  explicit Frames(std::vector<std::string> frames) : frames_(std::move(frames)) {}

  std::vector<std::string> frames_;
};

#endif
