#ifndef VELMAR_TOOLKIT_FRAME_LINE_H
#define VELMAR_TOOLKIT_FRAME_LINE_H

#include <string>

#include "toolkit/frames/FrameLosses.h"
#include "toolkit/frames/StoredFrame.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/tables/FrameFacts.h"
#include "toolkit/tables/FrameTable.h"

namespace velmar::toolkit {

/// Shows the frames of a recording, each as a line of text with the columns of a table.
class FrameLine {
 public:
  /// All must outlive it.
  /// \param news  is told of frames whose bytes cannot be had for a hash; needed only for that
  FrameLine(const Recording& recording, const FrameTable& table, FrameNews* news = nullptr);

  /// One JSON object, without what is absent. The CAN signals of version 04 are in one of their
  /// own.
  std::string json(unsigned int index);
  /// Values with commas; what is absent is empty.
  std::string csv(unsigned int index);
  /// A single value; empty if it is absent.
  std::string cell(unsigned int index, const FrameColumn& column);
  /// Aligned, for people.
  /// \param fileWidth  of the longest path that a table with the column "file" is to show
  std::string text(unsigned int index, std::size_t fileWidth = 0);
  static std::string textHeader(const FrameTable& table, std::size_t fileWidth = 0);

 private:
  /// Empty if it is absent.
  std::string cell(const FrameColumn& column);
  std::string factText(const FrameFact& fact);
  std::string storedText(FrameFact::Source source);
  std::string hashText(HashKind kind);
  std::string canJson();

  const Recording& recording_;
  const FrameTable& table_;
  FrameNews* news_;
  FrameFacts facts_;
  StoredFrames frames_;
  unsigned int index_ = 0;
  bool hasCan_ = false;
};

}  // namespace velmar::toolkit

#endif
