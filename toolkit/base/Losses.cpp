#include "toolkit/base/Losses.h"

#include "toolkit/base/Diagnostics.h"

void Losses::add(const std::string& what, const std::string& words) {
  any_ = true;
  say(what + ": " + words);
}

void Losses::addStopped(const std::string& what, std::size_t done, std::size_t wanted) {
  add(what, "stopped by a signal after " + std::to_string(done) + " of " + std::to_string(wanted) +
                " frames");
}

void FrameRanges::add(std::uint64_t first, std::uint64_t last, const std::string& words) {
  if (words != words_ || first != last_ + 1) finish();
  if (words_.empty()) first_ = first;
  words_ = words;
  last_ = last;
}

void FrameRanges::finish() {
  if (words_.empty()) return;
  const std::string first = std::to_string(first_);
  losses_.add(file_,
              (first_ == last_ ? "frame " + first + " is "
                               : "frames " + first + " to " + std::to_string(last_) + " are ") +
                  words_);
  words_.clear();
}

FrameFlaw::FrameFlaw(VELMAR_ERROR_CODE_E cause)
    : code(cause),
      words(cause == VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E
                ? "its bytes reach past the end of the file"
                : plainWords(cause)) {}

std::string FrameFlaw::text() const { return words + " (" + errorCode2String(code) + ")"; }

void FrameLosses::add(unsigned int index, const FrameFlaw& flaw) {
  const std::lock_guard lock(mutex_);
  flaws_.emplace(index, flaw);
}

ExitStatus FrameLosses::report(const std::string& file, std::size_t wanted) const {
  if (!flaws_.empty() && flaws_.size() == wanted) {
    const auto& [index, flaw] = *flaws_.begin();
    throw Failure(
        file, "no frame can be had; frame " + std::to_string(index) + " is skipped: " + flaw.words,
        flaw.code);
  }
  Losses losses;
  FrameRanges ranges(file, losses);
  for (const auto& [index, flaw] : flaws_) ranges.add(index, index, "skipped: " + flaw.text());
  ranges.finish();
  return losses.status();
}
