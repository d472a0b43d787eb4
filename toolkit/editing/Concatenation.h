#ifndef VELMAR_TOOLKIT_CONCATENATION_H
#define VELMAR_TOOLKIT_CONCATENATION_H

#include <string>
#include <vector>

#include "toolkit/base/Job.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// Copies recordings into one, one behind the other. Throws Failure.
/// \param winner   one of them, whose description counts
/// \param isAsked  whether it was chosen where the others differ; else such a difference is a
///                 Failure
void concatenate(const std::vector<Recording>& recordings, const Recording& winner, bool isAsked,
                 const std::string& output, Job& job);

}  // namespace velmar::toolkit

#endif
