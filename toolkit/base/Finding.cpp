#include "toolkit/base/Finding.h"

#include <algorithm>

namespace velmar::toolkit {

void FindingMerger::add(const Finding& finding) {
  if (!finding.frame) {
    finish();
    return report_(finding);
  }
  const std::uint64_t frame = *finding.frame;
  std::erase_if(open_, [&](const Finding& range) {
    const bool isOver = range.last() != frame && range.last() + 1 != frame;
    if (isOver) report_(range);
    return isOver;
  });
  const auto same = std::find_if(open_.begin(), open_.end(), [&](const Finding& range) {
    return range.last() + 1 == frame && range.severity == finding.severity &&
           range.text == finding.text;
  });
  if (same == open_.end()) {
    open_.push_back(finding);
  } else {
    same->lastFrame = finding.last();
  }
}

void FindingMerger::finish() {
  for (const Finding& range : open_) report_(range);
  open_.clear();
}

}  // namespace velmar::toolkit
