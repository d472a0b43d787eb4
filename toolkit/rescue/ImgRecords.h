/// The records of an img that was interrupted or damaged.
#ifndef VELMAR_TOOLKIT_IMG_RECORDS_H
#define VELMAR_TOOLKIT_IMG_RECORDS_H

#include <vector>

#include "toolkit/rescue/Leftover.h"

namespace velmar::toolkit {

// A record counts if a JPEG begins where it leads, if its frame and that of a neighbour lie side by
// side, or if it is that of the frame before the metadata. So nothing else is taken for one:
// neither zeros nor what lies behind the index.

/// From the index journal beside the file; none if that cannot be read.
std::vector<LeftoverFrame> readJournal(const FileBytes& file);

/// From the index at the front of the file, which the recorder writes over the first frames at the
/// end. Throws Failure if the file cannot be read.
std::vector<LeftoverFrame> readFrontIndex(const FileBytes& file);

}  // namespace velmar::toolkit

#endif
