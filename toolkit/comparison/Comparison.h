#ifndef VELMAR_TOOLKIT_COMPARISON_H
#define VELMAR_TOOLKIT_COMPARISON_H

#include <json/value.h>

#include <string>
#include <vector>

#include "toolkit/base/Finding.h"
#include "toolkit/base/Job.h"
#include "toolkit/comparison/FrameAlignment.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// What two recordings say differently, by its name in the JSON of `info`. A start position is text
/// as startPositionText() gives it.
struct HeaderDifference {
  std::string name;
  Json::Value a, b;  ///< null if one does not say it
};

/// What neighbouring frames have differently, by its name in the JSON of `frames`, or "picture".
struct FrameDifference {
  std::string name;
  FramePairs frames;
  Json::Value a, b;  ///< of the first; null if it has none, and for pictures
};

/// In what two recordings differ, as far as the containers of both can hold it: times of an img are
/// compared with those of an rtv in whole milliseconds.
struct Comparison {
  /// Whether they are the same, as far as they could be read.
  bool isSame() const;

  std::vector<HeaderDifference> header;
  std::vector<FramePairs> frames;  ///< all of both, in order
  std::vector<FrameDifference> frameDifferences;
  std::vector<Finding> unreadOfA, unreadOfB;  ///< frames whose pictures are not compared
  bool isWhole = true;                        ///< false if the job was stopped
};

/// Reads all of both. Throws Failure.
Comparison compareRecordings(const Recording& a, const Recording& b, Job& job);

}  // namespace velmar::toolkit

#endif
