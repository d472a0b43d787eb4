#ifndef VELMAR_TOOLKIT_TIME_FORMAT_H
#define VELMAR_TOOLKIT_TIME_FORMAT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "toolkit/text/Unit.h"

namespace velmar::toolkit {

/// How a table writes times: as numbers in a unit, as RFC 3339, or by a pattern of strptime(3).
class TimeFormat {
 public:
  /// RFC 3339.
  TimeFormat() = default;
  explicit TimeFormat(const Unit& unit) : name_(unit.name), unit_(unit) {}
  /// A unit's name, or a pattern: that has a percent sign. In a pattern, seconds may have a
  /// fraction. Without %z and without a Z at its end, times are local ones by the time zone of the
  /// system (TZ). Nothing for other texts, nor for a pattern with %Z: names of zones are ambiguous.
  static std::optional<TimeFormat> named(const std::string& name);

  const std::string& name() const { return name_; }
  /// Microseconds since 1970, or since where a number counts from. Digits beyond them are cut.
  std::optional<std::int64_t> parse(std::string_view text) const;

 private:
  std::optional<std::int64_t> parsePattern(const std::string& text) const;

  std::string name_ = "RFC 3339";
  std::optional<Unit> unit_;
  std::string pattern_;  ///< without a fraction; empty if there is none
};

}  // namespace velmar::toolkit

#endif
