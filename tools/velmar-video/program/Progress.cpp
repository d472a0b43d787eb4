#include "program/Progress.h"

#include <unistd.h>

#include <iostream>
#include <utility>

Progress::Progress(std::string file, std::size_t total, bool quiet)
    : file_(std::move(file)), total_(total), shown_(!quiet && isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
  if (!shown_ || done_ == 0) return;
  show();
  std::cerr << '\n';
}

void Progress::update(std::size_t done) {
  done_ = done;
  if (!shown_) return;
  const auto now = std::chrono::steady_clock::now();
  if (now < next_) return;
  next_ = now + std::chrono::milliseconds(200);
  show();
}

void Progress::show() const {
  std::string text = "\r\033[K" + file_ + ": " + std::to_string(done_);
  if (total_ != 0) text += " of " + std::to_string(total_);
  text += " frames";
  std::cerr << text << std::flush;
}
