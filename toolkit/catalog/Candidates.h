#ifndef VELMAR_TOOLKIT_CANDIDATES_H
#define VELMAR_TOOLKIT_CANDIDATES_H

#include <string>
#include <vector>

#include "toolkit/catalog/Database.h"
#include "toolkit/catalog/RecordingSummary.h"
#include "toolkit/frames/FrameSelection.h"

namespace velmar::toolkit {

/// A recording that may have an answer.
struct Candidate {
  std::string file;
  FileState state;  ///< when it was added
  FrameSpans frames;
};

/// The recordings and frames for which `where` may hold within the selection's time, by what the
/// catalogue knows of stretches; in the order of the files. Throws UsageError and Failure.
std::vector<Candidate> candidatesFor(Database& database, const std::string& where,
                                     const FrameSelection& selection);

}  // namespace velmar::toolkit

#endif
