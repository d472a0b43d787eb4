/// Frames that cannot be had.
#ifndef VELMAR_TOOLKIT_FRAME_LOSSES_H
#define VELMAR_TOOLKIT_FRAME_LOSSES_H

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "toolkit/base/Finding.h"
#include "toolkit/base/Job.h"
#include "toolkit/frames/StoredFrame.h"

namespace velmar::toolkit {

/// Tells what happens to frames of a file as their numbers come, of neighbours at once.
class FrameNews {
 public:
  /// The job must outlive it.
  FrameNews(const std::string& file, Job& job);

  /// \param words  such as "lost: it is too large"
  void add(std::uint64_t first, std::uint64_t last, const std::string& words);
  /// Behind the last.
  void finish() { merger_.finish(); }

 private:
  FindingMerger merger_;
};

/// Collects frames that are skipped.
class FrameLosses {
 public:
  /// Thread-safe.
  void add(unsigned int index, const FrameFlaw& flaw);

  std::size_t count() const { return flaws_.size(); }
  /// Names the frames. Throws Failure instead if all `wanted` frames are lost.
  void report(const std::string& file, std::size_t wanted, Job& job) const;

 private:
  std::mutex mutex_;
  std::map<unsigned int, FrameFlaw> flaws_;
};

}  // namespace velmar::toolkit

#endif
