/// The columns that a table of frames is written with.
#ifndef VELMAR_TOOLKIT_FRAME_TABLE_H
#define VELMAR_TOOLKIT_FRAME_TABLE_H

#include <optional>
#include <string>
#include <vector>

#include "toolkit/base/ContentHash.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/tables/FrameFacts.h"

namespace velmar::toolkit {

struct FrameColumn {
  enum class Kind {
    File,      ///< the recording's path
    Captured,  ///< RFC 3339
    Arrived,   ///< the same
    Hash,      ///< of the stored bytes
    Stored,    ///< a number of the tag as it is in the file
    Fact,
  };

  std::string name;
  Kind kind;
  std::optional<FrameFact> fact = {};  ///< for a stored number, which one
  HashKind hash = HashKind::Xxh3;
  std::string title = name;  ///< for people
};

using FrameTable = std::vector<FrameColumn>;

/// The columns of the names with commas: those of frameColumns(), all facts, "file", "captured",
/// "arrived", "xxh3_128" and "sha256". Throws UsageError.
FrameTable namedColumns(const std::string& names);

/// What a table shows that is not told what to show.
/// \param ofRtv   with what an rtv knows, which stays empty for an img
/// \param hasCan  and with the CAN signals
FrameTable columnsForPrograms(bool ofRtv, bool hasCan);
FrameTable columnsForPeople(bool ofRtv);
FrameTable columnsOf(const Recording& recording);

/// The column of a hash.
FrameColumn hashColumn(HashKind kind);

/// A line with the names.
std::string csvHeader(const FrameTable& table);

}  // namespace velmar::toolkit

#endif
