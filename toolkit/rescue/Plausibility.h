#ifndef VELMAR_TOOLKIT_PLAUSIBILITY_H
#define VELMAR_TOOLKIT_PLAUSIBILITY_H

#include "toolkit/base/Finding.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// Warns of times, headings and positions that no drive has, although a recording may hold them.
void checkPlausibility(const Recording& recording, FindingMerger& findings);

}  // namespace velmar::toolkit

#endif
