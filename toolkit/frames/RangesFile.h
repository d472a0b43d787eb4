/// Ranges of frames of many recordings, as text.
#ifndef VELMAR_TOOLKIT_RANGES_FILE_H
#define VELMAR_TOOLKIT_RANGES_FILE_H

#include <string>
#include <vector>

#include "toolkit/frames/FrameSelection.h"

namespace velmar::toolkit {

struct NamedRanges {
  std::vector<std::string> files;  ///< each once, in their order
  SpansOfFiles ranges;
};

/// From JSON lines with "file" and "range", two numbers: the first frame and the one behind the
/// last; or from a table with the columns file, first and behind. "-" is standard input. Throws
/// Failure.
NamedRanges readRanges(const std::string& path);

}  // namespace velmar::toolkit

#endif
