#ifndef VELMAR_TOOLKIT_REBASE_H
#define VELMAR_TOOLKIT_REBASE_H

#include <optional>

#include "container/rtv/EllipsoidRadii.h"
#include "toolkit/recording/FrameTag.h"
#include "toolkit/recording/RecordingDescription.h"

namespace velmar::toolkit {

/// Counts the positions of frames from the start position of another rtv of the same version, by
/// the ellipsoid method: each frame stays where it was.
class Rebase {
 public:
  /// Leaves positions as they are.
  Rebase() = default;
  Rebase(const RecordingDescription& from, const RecordingDescription& to);

  bool changesNothing() const { return !isMoved_ && rise_ == 0; }
  /// The tag from the other start on; nothing if the version's fields cannot hold that.
  std::optional<FrameTag> apply(const FrameTag& tag) const;

 private:
  struct Start {
    static Start of(const RecordingDescription& description);

    double lng, lat;  ///< degrees
    detail::EllipsoidRadii radii;
  };

  bool isMoved_ = false;
  Start from_{};
  Start to_{};
  long rise_ = 0;  ///< hundredths of a metre to add to z
  bool isVersion02_ = false;
};

}  // namespace velmar::toolkit

#endif
