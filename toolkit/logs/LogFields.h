/// What a log of a drive can have, and how options name it.
#ifndef VELMAR_TOOLKIT_LOG_FIELDS_H
#define VELMAR_TOOLKIT_LOG_FIELDS_H

#include <optional>
#include <string>
#include <vector>

#include "toolkit/text/Unit.h"

namespace velmar::toolkit {

struct LogField {
  /// How values between two rows come about.
  enum class Between { Line, ShorterArc, LastValue };

  bool isNamed(const std::string& text) const;

  /// "time", "lat", "lng", "alt", or that of a TagColumn.
  std::string name;
  std::vector<std::string> otherNames;
  Dimension dimension = Dimension::None;
  /// Of a column that names none. A time without one is RFC 3339.
  std::optional<Unit> plainUnit = {};
  Between between = Between::Line;
  /// What the values lie in, if that is narrower than the field of a tag.
  double lowest = -1e300, highest = 1e300;
};

const std::vector<LogField>& logFields();

/// "speed=SPEED_KMH:km/h": the field is in that column. Which part names the column and which the
/// unit is up to the columns that a log has.
struct LogMapping {
  const LogField* field;
  std::string column;

  std::string text() const { return field->name + "=" + column; }
};

/// Throws UsageError.
LogMapping parseLogMapping(const std::string& text);

}  // namespace velmar::toolkit

#endif
