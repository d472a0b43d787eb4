#include "toolkit/tables/ValueRange.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace velmar::toolkit {

namespace {

// Each box is a question of its own; beyond these one for all is cheaper.
constexpr std::size_t kMostBoxes = 32;

PlaceBoxes intersection(const PlaceBoxes& one, const PlaceBoxes& other) {
  if (!one) return other;
  if (!other) return one;
  std::vector<PlaceBox> boxes;
  for (const PlaceBox& a : *one) {
    for (const PlaceBox& b : *other) {
      if (!a.overlaps(b)) continue;
      boxes.push_back({std::max(a.west, b.west), std::min(a.east, b.east),
                       std::max(a.south, b.south), std::min(a.north, b.north)});
    }
  }
  return boxes.size() > kMostBoxes ? one : boxes;
}

PlaceBoxes united(PlaceBoxes one, const PlaceBoxes& other) {
  if (!one || !other || one->size() + other->size() > kMostBoxes) return std::nullopt;
  one->insert(one->end(), other->begin(), other->end());
  return one;
}

bool areBothThere(const ValueRange& one, const ValueRange& other) {
  return one.mayBeThere && other.mayBeThere;
}

ValueRange compared(const ValueRange& one, const ValueRange& other, bool mayBeTrue,
                    bool mayBeFalse) {
  const bool areThere = areBothThere(one, other);
  return ValueRange::truth(areThere && mayBeTrue, areThere && mayBeFalse,
                           one.mayBeAbsent || other.mayBeAbsent);
}

// Of arithmetic whose extremes are among these.
ValueRange ofCorners(const ValueRange& one, const ValueRange& other,
                     std::initializer_list<double> corners) {
  if (!areBothThere(one, other)) return ValueRange::absent();
  for (const double corner : corners) {
    // What is computed with it may be no number.
    if (!std::isfinite(corner)) return ValueRange::anything();
  }
  return ValueRange::between(std::min(corners), std::max(corners),
                             one.mayBeAbsent || other.mayBeAbsent);
}

}  // namespace

ValueRange ValueRange::exactly(double value) {
  return std::isnan(value) ? absent() : between(value, value, false);
}

ValueRange ValueRange::truth(bool mayBeTrue, bool mayBeFalse, bool mayBeAbsent) {
  return {mayBeFalse ? 0.0 : 1.0, mayBeTrue ? 1.0 : 0.0, mayBeTrue || mayBeFalse, mayBeAbsent, {}};
}

ValueRange both(const ValueRange& one, const ValueRange& other) {
  const auto isOpen = [](const ValueRange& a, const ValueRange& b) {
    return a.mayBeAbsent && (b.mayBeTrue() || b.mayBeAbsent);
  };
  ValueRange result = ValueRange::truth(one.mayBeTrue() && other.mayBeTrue(),
                                        one.mayBeFalse() || other.mayBeFalse(),
                                        isOpen(one, other) || isOpen(other, one));
  result.places = intersection(one.placesIfTrue(), other.placesIfTrue());
  return result;
}

ValueRange either(const ValueRange& one, const ValueRange& other) {
  const auto isOpen = [](const ValueRange& a, const ValueRange& b) {
    return a.mayBeAbsent && (b.mayBeFalse() || b.mayBeAbsent);
  };
  ValueRange result = ValueRange::truth(one.mayBeTrue() || other.mayBeTrue(),
                                        one.mayBeFalse() && other.mayBeFalse(),
                                        isOpen(one, other) || isOpen(other, one));
  result.places = united(one.placesIfTrue(), other.placesIfTrue());
  return result;
}

ValueRange less(const ValueRange& one, const ValueRange& other) {
  return compared(one, other, one.least < other.greatest, one.greatest >= other.least);
}

ValueRange lessOrEqual(const ValueRange& one, const ValueRange& other) {
  return compared(one, other, one.least <= other.greatest, one.greatest > other.least);
}

ValueRange equal(const ValueRange& one, const ValueRange& other) {
  const bool isOne = one.least == one.greatest && other.least == other.greatest;
  return compared(one, other, one.least <= other.greatest && other.least <= one.greatest,
                  !isOne || one.least != other.least);
}

ValueRange sum(const ValueRange& one, const ValueRange& other) {
  return ofCorners(one, other, {one.least + other.least, one.greatest + other.greatest});
}

ValueRange difference(const ValueRange& one, const ValueRange& other) {
  return ofCorners(one, other, {one.least - other.greatest, one.greatest - other.least});
}

ValueRange product(const ValueRange& one, const ValueRange& other) {
  return ofCorners(one, other,
                   {one.least * other.least, one.least * other.greatest, one.greatest * other.least,
                    one.greatest * other.greatest});
}

ValueRange quotient(const ValueRange& one, const ValueRange& other) {
  if (other.mayBeFalse()) return ValueRange::anything();
  return ofCorners(one, other,
                   {one.least / other.least, one.least / other.greatest, one.greatest / other.least,
                    one.greatest / other.greatest});
}

// Only the powers that people write: squares and the like.
ValueRange power(const ValueRange& base, const ValueRange& exponent) {
  constexpr double kMost = 16;
  const double by = exponent.least;
  if (!exponent.isExact() || by < 1 || by > kMost || by != std::floor(by)) {
    return ValueRange::anything();
  }
  const double one = std::pow(base.least, by);
  const double other = std::pow(base.greatest, by);
  const double zero = base.mayBeFalse() ? 0 : one;
  ValueRange result = ofCorners(base, exponent, {one, other, zero});
  // It is not rounded to the nearest in every case.
  result.least = std::nextafter(result.least, -HUGE_VAL);
  result.greatest = std::nextafter(result.greatest, HUGE_VAL);
  return result;
}

ValueRange negated(const ValueRange& value) {
  return ValueRange::truth(value.mayBeFalse(), value.mayBeTrue(), value.mayBeAbsent);
}

ValueRange opposite(const ValueRange& value) {
  return {-value.greatest, -value.least, value.mayBeThere, value.mayBeAbsent, {}};
}

ValueRange magnitude(const ValueRange& value) {
  const auto [least, greatest] = std::minmax({std::fabs(value.least), std::fabs(value.greatest)});
  return {value.mayBeFalse() ? 0 : least, greatest, value.mayBeThere, value.mayBeAbsent, {}};
}

ValueRange absence(const ValueRange& value) {
  return ValueRange::truth(value.mayBeAbsent, value.mayBeThere, false);
}

}  // namespace velmar::toolkit
