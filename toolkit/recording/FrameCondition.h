#ifndef VELMAR_TOOLKIT_FRAME_CONDITION_H
#define VELMAR_TOOLKIT_FRAME_CONDITION_H

#include <string>

#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// Something that frames have to fulfil. It is asked about one recording after the other.
class FrameCondition {
 public:
  virtual ~FrameCondition() = default;

  /// The frames asked for next are those of `recording`, which has to outlive that.
  virtual void begin(const Recording& recording) = 0;
  virtual bool holds(unsigned int frame) = 0;
  /// What the frames that were asked for lack, if none of them could fulfil it for that; otherwise
  /// empty.
  virtual std::string lack() const = 0;
};

}  // namespace velmar::toolkit

#endif
