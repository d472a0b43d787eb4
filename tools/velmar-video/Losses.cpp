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
