#ifndef VELMAR_TOOLKIT_LOG_COLUMNS_H
#define VELMAR_TOOLKIT_LOG_COLUMNS_H

#include <cstddef>
#include <string>
#include <vector>

#include "toolkit/logs/LogFields.h"
#include "toolkit/text/CsvTable.h"
#include "toolkit/text/TimeFormat.h"

namespace velmar::toolkit {

/// A column of a log that is understood.
struct LogColumn {
  const LogField* field;
  std::size_t at;
  Unit unit;          ///< unless it is the time
  TimeFormat format;  ///< of the time

  /// "speed from SPEED_KMH (km/h)"
  std::string text(const CsvTable& table) const;
};

/// What the columns of a log are: by the mappings that name one of them, else by their names and
/// the unit at the end of those (speed_kmh, lat, heading_deg). Sets `used` of each such mapping.
/// Throws Failure for a unit that is missing or unknown, and for a field with two columns.
std::vector<LogColumn> understoodColumns(const CsvTable& table,
                                         const std::vector<LogMapping>& mappings,
                                         std::vector<bool>& used);

}  // namespace velmar::toolkit

#endif
