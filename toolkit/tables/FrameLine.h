#ifndef VELMAR_TOOLKIT_FRAME_LINE_H
#define VELMAR_TOOLKIT_FRAME_LINE_H

#include <optional>
#include <string>

#include "toolkit/recording/Recording.h"
#include "toolkit/tables/Track.h"

namespace velmar::toolkit {

/// Shows the frames of a recording, each as a line of text. JSON keys and CSV columns are alike; a
/// frame of an rtv has more of them, one of version 04 the CAN signals, too.
class FrameLine {
 public:
  explicit FrameLine(const Recording& recording);

  /// One JSON object; absent CAN signals are left out.
  std::string json(unsigned int index) const;
  /// Values with commas; absent CAN signals are empty.
  std::string csv(unsigned int index) const;
  std::string csvHeader() const;
  /// Aligned, for people.
  std::string text(unsigned int index) const;
  static std::string textHeader();

 private:
  /// The numbers, with their names if `named`.
  std::string values(unsigned int index, const FrameTag& tag, bool named) const;

  const Recording& recording_;
  std::optional<Track> track_;  ///< of an rtv
  bool hasCan_ = false;
  bool isVersion02_ = false;
};

}  // namespace velmar::toolkit

#endif
