#include "toolkit/frames/FrameLosses.h"

#include "toolkit/base/Failure.h"
#include "toolkit/text/NumberText.h"

namespace velmar::toolkit {

FrameNews::FrameNews(const std::string& file, Job& job)
    : merger_([file, &job](const Finding& finding) {
        const std::string frames = framesText(*finding.frame, finding.last());
        job.lose(file, frames + (finding.lastFrame ? " are " : " is ") + finding.text);
      }) {}

void FrameNews::add(std::uint64_t first, std::uint64_t last, const std::string& words) {
  Finding finding{Finding::Severity::Error, first, {}, words};
  if (last > first) finding.lastFrame = last;
  merger_.add(finding);
}

void FrameLosses::add(unsigned int index, const FrameFlaw& flaw) {
  const std::lock_guard lock(mutex_);
  flaws_.emplace(index, flaw);
}

void FrameLosses::report(const std::string& file, std::size_t wanted, Job& job) const {
  if (!flaws_.empty() && flaws_.size() == wanted) {
    const auto& [index, flaw] = *flaws_.begin();
    throw Failure(
        file, "no frame can be had; frame " + std::to_string(index) + " is skipped: " + flaw.words,
        flaw.code);
  }
  FrameNews news(file, job);
  for (const auto& [index, flaw] : flaws_) news.add(index, index, "skipped: " + flaw.text());
  news.finish();
}

}  // namespace velmar::toolkit
