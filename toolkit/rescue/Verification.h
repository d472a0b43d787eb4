#ifndef VELMAR_TOOLKIT_VERIFICATION_H
#define VELMAR_TOOLKIT_VERIFICATION_H

#include <cstdint>
#include <functional>
#include <string>

#include "toolkit/base/Finding.h"

namespace velmar::toolkit {

/// Gets the bytes of each frame that is checked; false ends the check.
using VerificationProgress = std::function<bool(std::uint64_t bytes)>;

/// Checks what opening a recording does not. Findings come in the order of the checks: places,
/// then frames one by one, then what is said of the whole. What is wrong with neighbouring frames
/// is one finding.
/// \param decode  every frame as well
/// \return the number of frames; 0 if the recording does not open, which is a finding, too
/// Throws Failure if the file cannot be read on.
unsigned int verify(const std::string& path, bool decode, const FindingMerger::Report& report,
                    const VerificationProgress& progress = {});

}  // namespace velmar::toolkit

#endif
