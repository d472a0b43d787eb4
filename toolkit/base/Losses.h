/// What a command does without: said on standard error, and in its exit status.
#ifndef VELMAR_TOOLKIT_LOSSES_H
#define VELMAR_TOOLKIT_LOSSES_H

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "toolkit/base/Failure.h"

/// Says at once what is lost or skipped, and remembers that something was.
class Losses {
 public:
  void add(const std::string& what, const std::string& words);

  /// That a signal ended the work early.
  void addStopped(const std::string& what, std::size_t done, std::size_t wanted);

  ExitStatus status() const { return any_ ? ExitStatus::Loss : ExitStatus::Done; }

 private:
  bool any_ = false;
};

/// Says what happens to frames, to neighbours on one line.
class FrameRanges {
 public:
  /// Both must outlive it.
  FrameRanges(const std::string& file, Losses& losses) : file_(file), losses_(losses) {}
  FrameRanges(const FrameRanges&) = delete;
  FrameRanges& operator=(const FrameRanges&) = delete;

  /// \param words  such as "lost: it is too large"
  void add(std::uint64_t first, std::uint64_t last, const std::string& words);
  /// Behind the last.
  void finish();

 private:
  const std::string& file_;
  Losses& losses_;
  std::string words_;
  std::uint64_t first_ = 0;
  std::uint64_t last_ = 0;
};

/// Why a frame cannot be had as it should be.
struct FrameFlaw {
  FrameFlaw() = default;
  /// What the library's code means for a frame.
  explicit FrameFlaw(VELMAR_ERROR_CODE_E cause);

  explicit operator bool() const { return code != VELMAR_ERROR_CODE_SUCCESS_E; }
  /// With the code's name.
  std::string text() const;

  VELMAR_ERROR_CODE_E code = VELMAR_ERROR_CODE_SUCCESS_E;
  std::string words;
  bool hasBytes = false;  ///< whether it can be had as it is stored
};

/// Frames that cannot be had.
class FrameLosses {
 public:
  /// Any thread.
  void add(unsigned int index, const FrameFlaw& flaw);

  std::size_t count() const { return flaws_.size(); }
  /// Names the frames. Throws Failure instead if all `wanted` frames are lost.
  ExitStatus report(const std::string& file, std::size_t wanted) const;

 private:
  std::mutex mutex_;
  std::map<unsigned int, FrameFlaw> flaws_;
};

#endif
