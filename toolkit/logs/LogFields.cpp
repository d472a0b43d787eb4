#include "toolkit/logs/LogFields.h"

#include <algorithm>

#include "toolkit/base/Failure.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/text/Suggestion.h"

namespace velmar::toolkit {

namespace {

using Between = LogField::Between;

// The names in the format are misspelt, or long.
std::vector<std::string> otherNames(const std::string& signal) {
  const std::string misspelt = "acceleraion_";
  if (signal.starts_with(misspelt)) return {"acceleration_" + signal.substr(misspelt.size())};
  if (signal == "steering_wheel_steering_angle") return {"steering_wheel_angle"};
  return {};
}

std::vector<LogField> makeFields() {
  constexpr double kRounding = 0.1;  // of a full circle in radians, degrees
  constexpr double kHighest = 2e7;   // as hundredths in the 32 bits of a start position
  const Unit degrees = *unitNamed(Dimension::Angle, "deg");
  const Unit metres = *unitNamed(Dimension::Length, "m");
  std::vector<LogField> fields = {
      {"time", {"timestamp", "sensor_time"}, Dimension::Time},
      {"lat", {"latitude"}, Dimension::Angle, degrees, Between::Line, -90, 90},
      {"lng", {"lon", "long", "longitude"}, Dimension::Angle, degrees, Between::Line, -180, 180},
      {"alt",
       {"altitude", "ele", "elevation"},
       Dimension::Length,
       metres,
       Between::Line,
       -kHighest,
       kHighest},
      {"x", {}, Dimension::Length},
      {"y", {}, Dimension::Length},
      {"z", {}, Dimension::Length},
      {"relative_distance", {"distance"}, Dimension::Length},
      {"speed", {}, Dimension::Speed},
      {"direction",
       {"heading", "course", "bearing"},
       Dimension::Angle,
       degrees,
       Between::ShorterArc,
       -180 - kRounding,
       360 + kRounding},
  };
  for (const CanField& signal : canSignals()) {
    const Dimension dimension = dimensionOf(signal.name);
    fields.push_back({signal.name, otherNames(signal.name), dimension, Unit{dimension, "", ""},
                      Between::LastValue});
  }
  return fields;
}

}  // namespace

bool LogField::isNamed(const std::string& text) const {
  return text == name || std::find(otherNames.begin(), otherNames.end(), text) != otherNames.end();
}

const std::vector<LogField>& logFields() {
  static const std::vector<LogField> fields = makeFields();
  return fields;
}

LogMapping parseLogMapping(const std::string& text) {
  const std::size_t equals = text.find('=');
  if (equals == text.npos || equals + 1 == text.size()) {
    throw UsageError("--log-map is FIELD=COLUMN or FIELD=COLUMN:UNIT, not " + text);
  }
  const std::string name = text.substr(0, equals);
  std::vector<std::string> names;
  for (const LogField& field : logFields()) {
    if (field.isNamed(name)) return {&field, text.substr(equals + 1)};
    names.push_back(field.name);
    names.insert(names.end(), field.otherNames.begin(), field.otherNames.end());
  }
  throw UsageError("--log-map: there is no field " + name + suggestion(name, names));
}

}  // namespace velmar::toolkit
