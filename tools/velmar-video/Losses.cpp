#include "Losses.h"

#include "Diagnostics.h"

namespace {

std::string frameWords(unsigned int index, VELMAR_ERROR_CODE_E code) {
  return "frame " + std::to_string(index) + " skipped: " + plainWords(code);
}

}  // namespace

void Losses::add(const std::string& what, const std::string& words) {
  any_ = true;
  say(what + ": " + words);
}

void Losses::addStopped(const std::string& what, std::size_t done, std::size_t wanted) {
  add(what, "stopped by a signal after " + std::to_string(done) + " of " + std::to_string(wanted) +
                " frames");
}

void FrameLosses::add(unsigned int index, VELMAR_ERROR_CODE_E code) {
  const std::lock_guard lock(mutex_);
  codes_.emplace(index, code);
}

ExitStatus FrameLosses::report(const std::string& file, std::size_t wanted) const {
  if (codes_.empty()) return ExitStatus::Done;
  if (codes_.size() == wanted) {
    const auto [index, code] = *codes_.begin();
    throw Failure(file, "no frame can be had; " + frameWords(index, code), code);
  }
  for (const auto& [index, code] : codes_) {
    say(Failure(file, frameWords(index, code), code).what());
  }
  return ExitStatus::Loss;
}
