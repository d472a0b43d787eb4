#ifndef VELMAR_TOOLKIT_CONTACT_SHEET_H
#define VELMAR_TOOLKIT_CONTACT_SHEET_H

#include <vector>

#include "toolkit/base/Job.h"
#include "toolkit/jpeg/Picture.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// So many of the frames, spread evenly, the first among them; all if there are no more.
std::vector<unsigned int> spread(const std::vector<unsigned int>& frames, std::size_t count);

/// One picture of small pictures of the frames, in rows of `columns`, with the capture time under
/// each. Frames that cannot be had are dark, and the job is told. Throws Failure, also if none can
/// be had or if the sheet would be larger than picture files may be.
Picture drawContactSheet(const Recording& recording, const std::vector<unsigned int>& frames,
                         unsigned int columns, Job& job);

}  // namespace velmar::toolkit

#endif
