/// A recording for the other container, or another version of its own.
#ifndef VELMAR_TOOLKIT_CONVERSION_H
#define VELMAR_TOOLKIT_CONVERSION_H

#include <optional>
#include <string>
#include <vector>

#include "toolkit/copying/Strip.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// What the recording says of itself, as `output` can say it.
/// \param version  of an rtv; that of the recording, or 03, if not given
RecordingDescription convertedDescription(const Recording& recording, const std::string& output,
                                          std::optional<version_e> version);

/// What of the recording `output` cannot hold, in words.
/// \param strip  is left out anyway
std::vector<std::string> lostInConversion(const Recording& recording, const std::string& output,
                                          version_e version, const Strip& strip = {});

}  // namespace velmar::toolkit

#endif
