#include "toolkit/tables/FrameFacts.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/RecordingInfo.h"
#include "toolkit/text/Joined.h"
#include "toolkit/text/Suggestion.h"
#include "toolkit/text/Unit.h"

namespace velmar::toolkit {

namespace {

using Source = FrameFact::Source;

struct Quantity {
  std::string_view name;
  Dimension dimension;
  Source source;
  /// The unit of its name alone. Where files store another one than tables show, the name alone
  /// would be misunderstood, and has none.
  std::string_view plainUnit = "";
};

constexpr std::array kQuantities = {
    Quantity{"index", Dimension::None, Source::Index},
    Quantity{"size", Dimension::None, Source::Size},
    Quantity{"time", Dimension::Time, Source::ElapsedTime, "s"},
    Quantity{"sensor_time", Dimension::Time, Source::SensorTime},
    Quantity{"arrived_time", Dimension::Time, Source::ArrivedTime},
    Quantity{"duration", Dimension::Time, Source::Duration, "s"},
    Quantity{"time_flag", Dimension::Time, Source::TimeFlag},
    Quantity{"x", Dimension::Length, Source::X},
    Quantity{"y", Dimension::Length, Source::Y},
    Quantity{"z", Dimension::Length, Source::Z},
    Quantity{"distance", Dimension::Length, Source::Distance},
    Quantity{"relative_distance", Dimension::Length, Source::Distance},
    Quantity{"speed", Dimension::Speed, Source::Speed},
    Quantity{"direction", Dimension::Angle, Source::Direction, "deg"},
    Quantity{"lng", Dimension::Angle, Source::Lng},
    Quantity{"lat", Dimension::Angle, Source::Lat},
    Quantity{"alt", Dimension::Length, Source::Alt},
    Quantity{"acceleration_m_s2", Dimension::None, Source::Acceleration},
};

double sizeOf(const Unit& unit) {
  return unit.dimension == Dimension::Time ? std::pow(10, unit.exponent) : unit.size;
}

// Of a stored number in another unit, rounded: 24 m/s are 86.4 km/h, not 86.39999999999999.
double ofHundredths(double hundredths, double unit) {
  constexpr double kDigits = 1e6;
  return std::round(hundredths / 100 / unit * kDigits) / kDigits;
}

std::vector<std::string> namesWithUnits(const Quantity& quantity) {
  std::vector<std::string> names;
  for (const std::string& suffix : unitSuffixes(quantity.dimension)) {
    names.push_back(std::string(quantity.name) + "_" + suffix);
  }
  return names;
}

std::vector<std::string> allNames() {
  std::vector<std::string> names;
  for (const Quantity& quantity : kQuantities) {
    if (quantity.dimension == Dimension::None || !quantity.plainUnit.empty()) {
      names.emplace_back(quantity.name);
    }
    const auto others = namesWithUnits(quantity);
    names.insert(names.end(), others.begin(), others.end());
  }
  for (const CanField& signal : canSignals()) names.emplace_back(signal.name);
  return names;
}

std::optional<FrameFact> factOf(const Quantity& quantity, std::string_view name) {
  const FrameFact plain{std::string(name), quantity.source};
  if (quantity.dimension == Dimension::None) {
    return name == quantity.name ? std::optional(plain) : std::nullopt;
  }
  std::optional<Unit> unit;
  if (name == quantity.name) {
    unit = unitNamed(quantity.dimension, quantity.plainUnit);
  } else if (const auto parts = splitUnit(name, quantity.dimension)) {
    if (parts->first == quantity.name) unit = parts->second;
  }
  if (!unit) return std::nullopt;
  return FrameFact{std::string(name), quantity.source, sizeOf(*unit)};
}

}  // namespace

std::optional<FrameFact> factNamed(std::string_view name) {
  for (const Quantity& quantity : kQuantities) {
    if (auto fact = factOf(quantity, name)) return fact;
  }
  for (const CanField& signal : canSignals()) {
    if (name == signal.name) return FrameFact{std::string(name), Source::Signal, 1, &signal};
  }
  return std::nullopt;
}

const std::vector<FrameFact>& ownFacts() {
  static const std::vector<FrameFact> facts = [] {
    std::vector<FrameFact> own;
    const auto add = [&own](const std::string& name) {
      const auto fact = factNamed(name);
      const bool isNew = fact && fact->unit == 1 && fact->isOwn() &&
                         std::none_of(own.begin(), own.end(), [&](const FrameFact& other) {
                           return other.source == fact->source && other.signal == fact->signal;
                         });
      if (isNew) own.push_back(*fact);
    };
    for (const Quantity& quantity : kQuantities) {
      if (quantity.dimension == Dimension::None) add(std::string(quantity.name));
      for (const std::string& name : namesWithUnits(quantity)) add(name);
    }
    for (const CanField& signal : canSignals()) add(signal.name);
    return own;
  }();
  return facts;
}

std::string unknownFactWords(const std::string& name, const std::vector<std::string>& others) {
  for (const Quantity& quantity : kQuantities) {
    if (name == quantity.name) {
      return name + " needs a unit: " + joined(namesWithUnits(quantity), " or ");
    }
  }
  std::vector<std::string> names = allNames();
  names.insert(names.end(), others.begin(), others.end());
  return "there is no " + name + suggestion(name, names);
}

FrameFacts::FrameFacts(const Recording& recording) : recording_(recording) {
  if (recording.framesCount() > 0) start_ = recording.sensorTime(0);
  if (!recording.isRtv()) return;
  if (recording.isFinished()) track_.emplace(recording);
  isVersion02_ = recording.description().version == RTV_VER_02;
}

void FrameFacts::enter(unsigned int frame) {
  frame_ = frame;
  tag_.reset();
  motion_.reset();
  place_.reset();
}

const FrameTag& FrameFacts::tag() {
  if (!tag_) tag_ = recording_.tag(frame_);
  return *tag_;
}

const FrameTag& FrameFacts::motion() {
  if (tag_) return *tag_;
  if (!motion_) motion_ = recording_.motion(frame_);
  return *motion_;
}

std::uint64_t FrameFacts::time() const {
  return frame_ < moments_.size() ? moments_[frame_].time : recording_.sensorTime(frame_);
}

std::optional<Place> FrameFacts::place() {
  if (track_ && !place_) place_ = track_->at(motion());
  return place_;
}

double FrameFacts::value(const FrameFact& fact) {
  switch (fact.source) {
    case Source::Index:
      return frame_;
    case Source::Size:
      return recording_.frameSize(frame_);
    case Source::ElapsedTime:
      return static_cast<double>(static_cast<std::int64_t>(time() - start_)) / fact.unit;
    case Source::SensorTime:
      return static_cast<double>(time()) / fact.unit;
    case Source::ArrivedTime:
      return static_cast<double>(recording_.arrivedTime(frame_)) / fact.unit;
    case Source::Duration:
      return static_cast<double>(durationOf(recording_)) / fact.unit;
    default:
      return recording_.isRtv() ? valueOfTag(fact) : kAbsent;
  }
}

double FrameFacts::valueOfTag(const FrameFact& fact) {
  switch (fact.source) {
    case Source::TimeFlag:
      return static_cast<double>(recording_.timeFlag(frame_)) * kMillisecond / fact.unit;
    case Source::X:
      return ofHundredths(motion().x, fact.unit);
    case Source::Y:
      return ofHundredths(motion().y, fact.unit);
    case Source::Z:
      return ofHundredths(motion().z, fact.unit);
    case Source::Distance:
      // Signed in version 02, which has it as 24 bits.
      return ofHundredths(isVersion02_
                              ? static_cast<double>(static_cast<int>(motion().relativeDistance))
                              : static_cast<double>(motion().relativeDistance),
                          fact.unit);
    case Source::Speed:
      return ofHundredths(motion().speed, fact.unit);
    case Source::Direction:
      return motion().direction / fact.unit;
    case Source::Lng:
      return track_ ? place()->lng / fact.unit : kAbsent;
    case Source::Lat:
      return track_ ? place()->lat / fact.unit : kAbsent;
    case Source::Alt:
      return track_ ? place()->alt / fact.unit : kAbsent;
    case Source::Acceleration:
      return acceleration();
    default:
      return signalValue(tag().can, *fact.signal);
  }
}

// Between the frames before and behind it; at the ends between the frame and its only neighbour.
double FrameFacts::acceleration() {
  const unsigned int count = recording_.framesCount();  // there may be more than before
  for (auto i = static_cast<unsigned int>(moments_.size()); i < count; ++i) {
    moments_.push_back({recording_.sensorTime(i), recording_.motion(i).speed});
  }
  const Moment& before = moments_[frame_ > 0 ? frame_ - 1 : frame_];
  const Moment& behind = moments_[frame_ + 1 < count ? frame_ + 1 : frame_];
  const auto micros = static_cast<std::int64_t>(behind.time - before.time);
  if (micros <= 0) return kAbsent;
  return (behind.speed - before.speed) * 1e4 / static_cast<double>(micros);
}

}  // namespace velmar::toolkit
