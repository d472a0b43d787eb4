#ifndef VELMAR_TOOLKIT_FRAME_CONDITION_H
#define VELMAR_TOOLKIT_FRAME_CONDITION_H

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// Something that frames have to fulfil. It is asked about one recording after the other, by one
/// thread at a time.
class FrameCondition {
 public:
  virtual ~FrameCondition() = default;

  /// The frames asked for next are those of `recording`, which has to outlive that.
  virtual void begin(const Recording& recording) = 0;
  virtual bool holds(unsigned int frame) = 0;
  /// Whether what it asks of a frame depends on the next one.
  virtual bool needsNeighbours() const = 0;
  /// What the frames that were asked for lack, if none of them could fulfil it for that; otherwise
  /// empty.
  virtual std::string lack() const = 0;
};

/// The same condition for several threads. A condition that nobody asks any more is kept for the
/// next recording.
class SharedCondition {
 public:
  using Make = std::function<std::unique_ptr<FrameCondition>()>;

  /// \param make  makes one that is like all others
  explicit SharedCondition(Make make) : make_(std::move(make)) { idle_.push_back(make_()); }

  std::unique_ptr<FrameCondition> take() {
    const std::lock_guard lock(mutex_);
    if (idle_.empty()) return make_();
    auto taken = std::move(idle_.back());
    idle_.pop_back();
    return taken;
  }
  void giveBack(std::unique_ptr<FrameCondition> condition) {
    const std::lock_guard lock(mutex_);
    idle_.push_back(std::move(condition));
  }

 private:
  Make make_;
  std::mutex mutex_;
  std::vector<std::unique_ptr<FrameCondition>> idle_;
};

}  // namespace velmar::toolkit

#endif
