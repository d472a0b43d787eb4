#ifndef VELMAR_TOOLKIT_FRAME_ALIGNMENT_H
#define VELMAR_TOOLKIT_FRAME_ALIGNMENT_H

#include <cstdint>
#include <vector>

namespace velmar::toolkit {

/// Neighbouring frames of a recording.
struct FrameSpan {
  unsigned int first = 0;
  unsigned int count = 0;

  unsigned int end() const { return first + count; }
};

/// Neighbouring frames of two recordings that belong together, one by one, or that only one has.
struct FramePairs {
  FrameSpan a, b;  ///< of the same length unless one is empty

  bool isPaired() const { return a.count > 0 && b.count > 0; }
};

/// What the frames of a recording are recognised by.
struct FrameKeys {
  std::vector<std::uint64_t> pictures;  ///< the same for the same bytes
  std::vector<std::uint64_t> times;     ///< microseconds since 1970
};

/// Pairs the frames of two recordings in their order: those with the same picture and the same
/// time, then those with the same picture. What is left between two pairs is paired one by one if
/// it is as many frames on either side, and otherwise those with the same time. In n log n steps.
/// \return all frames of both, in order
std::vector<FramePairs> alignFrames(const FrameKeys& a, const FrameKeys& b);

}  // namespace velmar::toolkit

#endif
