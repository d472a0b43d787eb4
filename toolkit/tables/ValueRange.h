#ifndef VELMAR_TOOLKIT_VALUE_RANGE_H
#define VELMAR_TOOLKIT_VALUE_RANGE_H

#include <limits>
#include <optional>
#include <vector>

namespace velmar::toolkit {

/// Degrees.
struct PlaceBox {
  double west;
  double east;
  double south;
  double north;

  bool overlaps(const PlaceBox& other) const {
    return west <= other.east && east >= other.west && south <= other.north && north >= other.south;
  }
};

/// Nothing stands for everywhere.
using PlaceBoxes = std::optional<std::vector<PlaceBox>>;

/// What a value may be for any of several frames: a number from the least to the greatest, or
/// absent. It may be wider than it has to be, never narrower.
struct ValueRange {
  static ValueRange anything() { return {}; }
  static ValueRange absent() { return {0, 0, false, true, {}}; }
  /// Not a number stands for absent.
  static ValueRange exactly(double value);
  static ValueRange between(double least, double greatest, bool mayBeAbsent) {
    return {least, greatest, true, mayBeAbsent, {}};
  }
  /// Of a condition.
  static ValueRange truth(bool mayBeTrue, bool mayBeFalse, bool mayBeAbsent);

  bool mayBeTrue() const { return mayBeThere && !(least == 0 && greatest == 0); }
  bool mayBeFalse() const { return mayBeThere && least <= 0 && greatest >= 0; }
  bool isExact() const { return mayBeThere && !mayBeAbsent && least == greatest; }
  /// Where it may be true.
  PlaceBoxes placesIfTrue() const { return mayBeTrue() ? places : PlaceBoxes(std::in_place); }

  double least = -std::numeric_limits<double>::infinity();
  double greatest = std::numeric_limits<double>::infinity();
  bool mayBeThere = true;
  bool mayBeAbsent = true;
  PlaceBoxes places;  ///< it is true in none but these
};

// What operators and functions make of ranges.
ValueRange both(const ValueRange& one, const ValueRange& other);
ValueRange either(const ValueRange& one, const ValueRange& other);
ValueRange less(const ValueRange& one, const ValueRange& other);
ValueRange lessOrEqual(const ValueRange& one, const ValueRange& other);
ValueRange equal(const ValueRange& one, const ValueRange& other);
ValueRange sum(const ValueRange& one, const ValueRange& other);
ValueRange difference(const ValueRange& one, const ValueRange& other);
ValueRange product(const ValueRange& one, const ValueRange& other);
ValueRange quotient(const ValueRange& one, const ValueRange& other);
ValueRange power(const ValueRange& base, const ValueRange& exponent);
ValueRange negated(const ValueRange& value);  ///< by !
ValueRange opposite(const ValueRange& value);
ValueRange magnitude(const ValueRange& value);
ValueRange absence(const ValueRange& value);

}  // namespace velmar::toolkit

#endif
