#ifndef VELMAR_TOOLKIT_CONCATENATION_H
#define VELMAR_TOOLKIT_CONCATENATION_H

#include <cstdint>
#include <string>
#include <vector>

#include "toolkit/base/Job.h"
#include "toolkit/copying/Strip.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// How recordings become one.
struct Joint {
  const Recording* winner = nullptr;  ///< whose description counts; the first if not given
  /// Frames that were captured no later than the last one of the recordings before are left out.
  bool dropsOverlap = false;
  Strip strip = {};
};

/// Copies recordings into one, one behind the other. Where they differ from the winner in something
/// that one recording cannot have twice, a winner has to be given. The job is told of those that
/// overlap. Throws Failure.
void concatenate(const std::vector<const Recording*>& recordings, const Joint& joint,
                 const std::string& output, Job& job);

/// When frame 0 was captured; the end of time if there is none.
std::uint64_t captureStart(const Recording& recording);

}  // namespace velmar::toolkit

#endif
