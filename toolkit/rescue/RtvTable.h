/// The tag table of an rtv that was interrupted or damaged.
#ifndef VELMAR_TOOLKIT_RTV_TABLE_H
#define VELMAR_TOOLKIT_RTV_TABLE_H

#include <string>
#include <vector>

#include "toolkit/rescue/Leftover.h"

namespace velmar::toolkit {

/// A slot of the tag table.
struct RtvSlot {
  LeftoverFrame frame;  ///< its lostBecause tells why the tag leads to none
  FrameTag tag;         ///< without a time if the tag has none any more
  bool isEmpty = true;  ///< all zeros
  /// Part of the tag was on a page that did not come to the disk before the power failed. Fields
  /// that reach into it are 0, the CAN signals absent.
  bool isTorn = false;
};

/// The tag table, read as one of a version.
struct RtvTable {
  version_e version;
  std::vector<RtvSlot> slots;   ///< up to the last that is not empty
  std::uint64_t dataStart = 0;  ///< of the first frame
  long wholeFrames = 0;         ///< tags that lead to a frame
  long strangeTags = 0;         ///< those that are there and do not

  /// The number of slots, by what lies between header and frames.
  unsigned int framesMax() const;
  /// Whether the slots end where the frames begin.
  bool isExact() const;
};

/// \param front  the start of the file, with all of the table
RtvTable readRtvTable(const FileBytes& file, const std::string& front, version_e version);

}  // namespace velmar::toolkit

#endif
