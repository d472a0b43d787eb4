#ifndef VELMAR_TOOLKIT_FRAME_TAG_H
#define VELMAR_TOOLKIT_FRAME_TAG_H

#include <optional>

#include "velmar_video/rtv/CanData.h"
#include "velmar_video/rtv/RecordFile.h"

namespace velmar::toolkit {

/// What the fields of 24 bits that version 02 of rtv has for position and distance hold.
constexpr int kLowest24Bits = -(1 << 23);
constexpr int kHighest24Bits = (1 << 23) - 1;

/// What an rtv recording knows of a frame beside its picture and its time, as stored.
struct FrameTag {
  FrameTag() { can_data_io_purge(&can); }
  /// Position, distance, speed and direction of a stored tag.
  static FrameTag of(const frametag03Ver_t& stored) {
    FrameTag tag;
    tag.x = stored.x;
    tag.y = stored.y;
    tag.z = stored.z;
    tag.relativeDistance = stored.relative_distance;
    tag.speed = stored.speed;
    tag.direction = stored.direction;
    return tag;
  }

  bool hasPosition() const {
    return x != 0 || y != 0 || z != 0 || relativeDistance != 0 || speed != 0 || direction != 0;
  }
  /// Also of what leads from one place to the next: distances and direction.
  void clearPosition() {
    x = y = z = 0;
    relativeDistance = 0;
    direction = 0;
    can.travelled_distance = FrameTag().can.travelled_distance;
  }
  bool hasCan() const {
    for (const CanField& field : canFields()) {
      if (field.offset > 0 && !canFieldIsAbsent(can, field)) return true;
    }
    return false;
  }

  int x = 0, y = 0, z = 0;            ///< hundredths of a metre from the start position
  unsigned int relativeDistance = 0;  ///< hundredths of a metre
  unsigned short speed = 0;           ///< hundredths of a metre a second
  unsigned short direction = 0;       ///< degrees
  can_data_io can;
  /// Milliseconds since the start as another rtv with the same start has them; they may be negative
  /// there. By the capture time if not set.
  std::optional<int> timeFlag;
};

}  // namespace velmar::toolkit

#endif
