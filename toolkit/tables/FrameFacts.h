#ifndef VELMAR_TOOLKIT_FRAME_FACTS_H
#define VELMAR_TOOLKIT_FRAME_FACTS_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/recording/Recording.h"
#include "toolkit/tables/Track.h"

namespace velmar::toolkit {

/// A number that is known of a frame, in one of the units that it can be given in.
struct FrameFact {
  enum class Source {
    Index,
    Size,
    ElapsedTime,  ///< since frame 0
    SensorTime,
    ArrivedTime,
    Duration,  ///< of the recording
    TimeFlag,
    X,
    Y,
    Z,
    Distance,
    Speed,
    Direction,
    Lng,
    Lat,
    Alt,
    Acceleration,
    Signal,
  };

  std::string name;
  Source source;
  double unit = 1;  ///< in microseconds, metres, degrees or metres a second
  const CanField* signal = nullptr;

  /// Whether only an rtv has it.
  bool isOfTag() const { return source >= Source::TimeFlag; }
  /// Whether the frame's number and its recording's length do not tell it.
  bool isOwn() const { return source != Source::Index && source != Source::Duration; }
  /// Whether it depends on the next frame.
  bool needsNeighbours() const { return source == Source::Acceleration; }
};

/// The fact of a name with a unit, such as "speed_km_h", or of one that needs none: "index",
/// "size", "time" (seconds since frame 0), "direction" (degrees), "acceleration_m_s2" and the CAN
/// signals.
std::optional<FrameFact> factNamed(std::string_view name);

/// Each fact that a frame has by itself, once, in the unit of size 1: microseconds, metres, degrees
/// and metres a second.
const std::vector<FrameFact>& ownFacts();

/// Why there is no fact of that name, and which may be meant: one of the facts or of `others`.
std::string unknownFactWords(const std::string& name, const std::vector<std::string>& others = {});

/// Looks facts up, frame by frame. Pictures are not read.
class FrameFacts {
 public:
  /// The recording must outlive it.
  explicit FrameFacts(const Recording& recording);

  /// The frame that the others are about. Throws Failure if its tag cannot be read.
  void enter(unsigned int frame);

  /// kAbsent if the frame does not have it.
  double value(const FrameFact& fact);
  /// Nothing in an img, and in an rtv that is being recorded, whose start is not known yet.
  std::optional<Place> place();
  const FrameTag& tag();
  /// That, perhaps without CAN signals.
  const FrameTag& motion();
  /// When it was captured, microseconds since 1970.
  std::uint64_t time() const;

 private:
  struct Moment {
    std::uint64_t time;
    int speed;  ///< as stored
  };

  double valueOfTag(const FrameFact& fact);
  double acceleration();

  const Recording& recording_;
  std::optional<Track> track_;  ///< of an rtv that is finished
  bool isVersion02_ = false;
  std::uint64_t start_ = 0;
  unsigned int frame_ = 0;
  std::optional<FrameTag> tag_;
  std::optional<FrameTag> motion_;
  std::optional<Place> place_;
  std::vector<Moment> moments_;  ///< of all frames, once they are needed
};

}  // namespace velmar::toolkit

#endif
