/// What a command does without: said on standard error, and in its exit status.
#ifndef VELMAR_TOOL_LOSSES_H
#define VELMAR_TOOL_LOSSES_H

#include <map>
#include <mutex>
#include <string>

#include "Failure.h"

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

/// Frames that the library cannot deliver.
class FrameLosses {
 public:
  /// Any thread.
  void add(unsigned int index, VELMAR_ERROR_CODE_E code);

  std::size_t count() const { return codes_.size(); }
  /// Names the frames. Throws Failure instead if all `wanted` frames are lost.
  ExitStatus report(const std::string& file, std::size_t wanted) const;

 private:
  std::mutex mutex_;
  std::map<unsigned int, VELMAR_ERROR_CODE_E> codes_;
};

#endif
