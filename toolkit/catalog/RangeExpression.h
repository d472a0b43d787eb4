#ifndef VELMAR_TOOLKIT_RANGE_EXPRESSION_H
#define VELMAR_TOOLKIT_RANGE_EXPRESSION_H

#include <string>
#include <vector>

#include "toolkit/tables/ExpressionParser.h"

namespace velmar::toolkit {

/// What is known of several frames of a recording.
struct KnownFrames {
  std::vector<ValueRange> facts;      ///< of RangeExpression::facts()
  std::optional<PlaceBox> place;      ///< none if no frame has a position
  std::string file;                   ///< absolute
  std::optional<std::string> device;  ///< nothing if it has to be asked itself
};

/// The condition of FrameExpression over ranges: whether it may hold for any of the frames. Who is
/// told that it may not need not look at them. Use it from one thread at a time.
class RangeExpression {
 public:
  /// Throws UsageError.
  explicit RangeExpression(const std::string& text);

  /// What it asks for, with names that may be there twice.
  std::vector<FrameFact> facts() const;
  bool asksPlace() const { return asksPlace_; }
  /// Where it may hold, whatever else is known.
  const PlaceBoxes& places() const { return places_; }
  bool mayHold(const KnownFrames& known);

 private:
  ValueRange truthIn(const PlaceBoxes& boxes);

  static double mayBeNear(void* expression, double lat, double lng, double metres);
  static double mayBeWithin(void* expression, double lng1, double lat1, double lng2, double lat2);
  static double mayBeFile(void* expression, const char* pattern);
  static double mayBeDevice(void* expression, const char* id);

  ExpressionParser parser_;
  bool isOpen_;  ///< it may be anything
  bool asksPlace_ = false;
  PlaceBoxes places_;
  const KnownFrames* known_ = nullptr;  ///< nothing is known otherwise
};

/// A fact's range by that of the own fact of its kind; see ownFacts().
ValueRange inUnitOf(const FrameFact& fact, const ValueRange& range);

}  // namespace velmar::toolkit

#endif
