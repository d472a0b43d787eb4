#include "toolkit/catalog/RangeExpression.h"

#include <cmath>

#include "toolkit/tables/FrameExpression.h"

namespace velmar::toolkit {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// By the way that distances are computed; a little larger, for what is rounded.
std::vector<PlaceBox> boxesAround(double lat, double lng, double metres) {
  constexpr double kMargin = 1e-7;
  const GroundScale ground(lat);
  const double north = metres / std::fabs(ground.metresPerDegreeNorth()) + kMargin;
  const double east = metres / std::fabs(ground.metresPerDegreeEast()) * (1 + kMargin) + kMargin;
  const double south = lat - north;
  if (!(east < 180)) return {{-kInfinity, kInfinity, south, lat + north}};
  const double centre = std::remainder(lng, 360);
  std::vector<PlaceBox> boxes = {{centre - east, centre + east, south, lat + north}};
  if (centre - east < -180) boxes.push_back({centre - east + 360, 180, south, lat + north});
  if (centre + east > 180) boxes.push_back({-180, centre + east - 360, south, lat + north});
  return boxes;
}

std::vector<PlaceBox> boxesWithin(double lng1, double lat1, double lng2, double lat2) {
  const auto [west, east] = std::minmax(lng1, lng2);
  const auto [south, north] = std::minmax(lat1, lat2);
  if (!isAcrossMeridian(lng1, lng2)) return {{west, east, south, north}};
  return {{-kInfinity, west, south, north}, {east, kInfinity, south, north}};
}

bool areNumbers(std::initializer_list<double> values) {
  for (const double value : values) {
    if (!std::isfinite(value)) return false;  // handles among them
  }
  return true;
}

}  // namespace

RangeExpression::RangeExpression(const std::string& text)
    : parser_(text, ExpressionParser::Values::Ranges), isOpen_(parser_.hasChoice()) {
  parser_.define("near", mayBeNear, this);
  parser_.define("within", mayBeWithin, this);
  parser_.define("file", mayBeFile, this);
  parser_.define("device", mayBeDevice, this);
  parser_.parse();
  if (isOpen_) return;
  forgetRanges();
  for (auto& variable : parser_.variables()) variable.value = handleOf(ValueRange::anything());
  places_ = rangeOf(parser_.value()).placesIfTrue();
}

std::vector<FrameFact> RangeExpression::facts() const {
  std::vector<FrameFact> facts;
  for (const auto& variable : parser_.variables()) facts.push_back(variable.fact);
  return facts;
}

bool RangeExpression::mayHold(const KnownFrames& known) {
  if (isOpen_) return true;
  forgetRanges();
  known_ = &known;
  for (std::size_t i = 0; i < known.facts.size(); ++i) {
    parser_.variables()[i].value = handleOf(known.facts[i]);
  }
  return rangeOf(parser_.value()).mayBeTrue();
}

ValueRange RangeExpression::truthIn(const PlaceBoxes& boxes) {
  asksPlace_ = true;
  ValueRange truth = ValueRange::truth(true, true, true);
  if (known_ == nullptr) {
    truth.places = boxes;
    return truth;
  }
  if (!known_->place) return ValueRange::absent();
  const bool mayBe =
      !boxes || std::any_of(boxes->begin(), boxes->end(),
                            [this](const PlaceBox& box) { return box.overlaps(*known_->place); });
  return ValueRange::truth(mayBe, true, true);
}

double RangeExpression::mayBeNear(void* expression, double lat, double lng, double metres) {
  auto& self = *static_cast<RangeExpression*>(expression);
  const bool isFixed = areNumbers({lat, lng, metres});
  return handleOf(self.truthIn(isFixed ? PlaceBoxes(boxesAround(lat, lng, metres)) : std::nullopt));
}

double RangeExpression::mayBeWithin(void* expression, double lng1, double lat1, double lng2,
                                    double lat2) {
  auto& self = *static_cast<RangeExpression*>(expression);
  const bool isFixed = areNumbers({lng1, lat1, lng2, lat2});
  return handleOf(
      self.truthIn(isFixed ? PlaceBoxes(boxesWithin(lng1, lat1, lng2, lat2)) : std::nullopt));
}

double RangeExpression::mayBeFile(void* expression, const char* pattern) {
  const auto& self = *static_cast<RangeExpression*>(expression);
  if (self.known_ == nullptr) return handleOf(ValueRange::truth(true, true, false));
  return fileMatches(pattern, self.known_->file) ? 1 : 0;
}

double RangeExpression::mayBeDevice(void* expression, const char* id) {
  const auto& self = *static_cast<RangeExpression*>(expression);
  if (self.known_ == nullptr || !self.known_->device) {
    return handleOf(ValueRange::truth(true, true, false));
  }
  return deviceMatches(id, *self.known_->device) ? 1 : 0;
}

ValueRange inUnitOf(const FrameFact& fact, const ValueRange& range) {
  if (fact.unit == 1 || !range.mayBeThere) return range;
  // Facts are rounded in their units.
  const auto margin = [](double value) { return 1e-6 + 1e-12 * std::fabs(value); };
  ValueRange scaled = range;
  scaled.least = range.least / fact.unit;
  scaled.greatest = range.greatest / fact.unit;
  scaled.least -= margin(scaled.least);
  scaled.greatest += margin(scaled.greatest);
  return scaled;
}

}  // namespace velmar::toolkit
