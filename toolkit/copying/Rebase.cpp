#include "toolkit/copying/Rebase.h"

#include <cmath>
#include <limits>

#include "velmar_video/rtv/RecordFileToolkit.h"

namespace velmar::toolkit {

namespace {

constexpr double kHundredths = 100;

// Metres in hundredths; nothing beyond what the field holds, nor for what is not a number.
std::optional<int> hundredths(double metres, bool is24Bits) {
  const double value = std::round(metres * kHundredths);
  const double low = is24Bits ? kLowest24Bits : std::numeric_limits<int>::min();
  const double high = is24Bits ? kHighest24Bits : std::numeric_limits<int>::max();
  if (!(value >= low && value <= high)) return std::nullopt;
  return static_cast<int>(value);
}

}  // namespace

Rebase::Start Rebase::Start::of(const RecordingDescription& description) {
  const double lat = RecordFileToolkit::NDS2Degree(description.lat);
  return {RecordFileToolkit::NDS2Degree(description.lng), lat, detail::EllipsoidRadii::at(lat)};
}

Rebase::Rebase(const RecordingDescription& from, const RecordingDescription& to)
    : isMoved_(from.lng != to.lng || from.lat != to.lat),
      from_(Start::of(from)),
      to_(Start::of(to)),
      isVersion02_(to.version == RTV_VER_02) {
  const int perMetre = altitudesPerMetre(to.version);
  if (perMetre != 0) rise_ = (long{from.alt} - to.alt) * (100 / perMetre);
}

std::optional<FrameTag> Rebase::apply(const FrameTag& tag) const {
  FrameTag moved = tag;
  const long z = tag.z + rise_;
  if (z < std::numeric_limits<int>::min() || z > std::numeric_limits<int>::max()) return {};
  moved.z = static_cast<int>(z);
  if (!isMoved_) return moved;
  double lng = 0, lat = 0, x = 0, y = 0;
  // Each way with the radii at its own start, as readers of either recording go.
  from_.radii.rel2Abs(from_.lng, from_.lat, tag.x / kHundredths, tag.y / kHundredths, lng, lat);
  to_.radii.abs2Rel(to_.lng, to_.lat, lng, lat, x, y);
  const auto east = hundredths(x, isVersion02_);
  const auto north = hundredths(y, isVersion02_);
  if (!east || !north) return {};
  moved.x = *east;
  moved.y = *north;
  return moved;
}

}  // namespace velmar::toolkit
