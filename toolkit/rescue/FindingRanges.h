#ifndef VELMAR_TOOLKIT_FINDING_RANGES_H
#define VELMAR_TOOLKIT_FINDING_RANGES_H

#include <functional>
#include <vector>

#include "toolkit/rescue/Verification.h"

/// Passes findings on, those that say the same of frames with neighbouring numbers as one.
class FindingRanges {
 public:
  explicit FindingRanges(const std::function<void(const Finding&)>& report) : report_(report) {}

  void add(const Finding& finding);
  /// Passes on what is still kept back for its next frame.
  void finish();

 private:
  const std::function<void(const Finding&)>& report_;
  std::vector<Finding> open_;
};

#endif
