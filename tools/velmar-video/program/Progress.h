#ifndef VELMAR_TOOL_PROGRESS_H
#define VELMAR_TOOL_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <string>

/// Shows on standard error how many frames are done, if that is a terminal, a few times a second.
class Progress {
 public:
  /// \param total  0 if nobody knows yet
  Progress(std::string file, std::size_t total, bool quiet);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  /// Leaves the last count on the terminal.
  ~Progress();

  void update(std::size_t done);

 private:
  void show() const;

  std::string file_;
  std::size_t total_;
  bool shown_;
  std::size_t done_ = 0;
  std::chrono::steady_clock::time_point next_;
};

#endif
