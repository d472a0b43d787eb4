#include "toolkit/tables/TimesCsv.h"

#include <optional>

#include "toolkit/text/TimeFormat.h"
#include "toolkit/text/TimeText.h"

namespace velmar::toolkit {

namespace {

// The column NAME_us, or the same in another unit, or without one as RFC 3339.
struct TimeColumn {
  std::size_t at;
  std::optional<TimeFormat> format;  // unless microseconds, of which there are 64 bits

  std::uint64_t of(const CsvTable& table, const CsvTable::Row& row) const {
    const std::string cell(trimmed(row.fields[at]));
    if (!format) {
      if (const auto time = parseNumber(cell)) return *time;
    } else if (const auto time = format->parse(cell); time && *time >= 0) {
      return static_cast<std::uint64_t>(*time);
    }
    table.fail(row.line, table.columns()[at] + " cannot be " + cell);
  }
};

std::optional<TimeFormat> formatOf(const std::string& column, const std::string& name) {
  if (column == name) return TimeFormat();
  const auto parts = splitUnit(column, Dimension::Time);
  if (!parts || parts->first != name) return std::nullopt;
  return TimeFormat(parts->second);
}

std::optional<TimeColumn> timeColumn(const CsvTable& table, const std::string& name) {
  const std::string plain = name + "_us";
  std::optional<TimeColumn> found;
  if (const auto column = table.column(plain)) found = {*column, std::nullopt};
  for (std::size_t i = 0; i < table.columns().size(); ++i) {
    const auto format = formatOf(table.plainNames()[i], name);
    if (!format || table.plainNames()[i] == plain) continue;
    if (found) {
      table.fail(1, "both columns, " + table.columns()[found->at] + " and " + table.columns()[i] +
                        ", are the " + name + "; leave one out");
    }
    found = {i, format};
  }
  return found;
}

TimeColumn requiredTimeColumn(const CsvTable& table, const std::string& name) {
  const auto found = timeColumn(table, name);
  if (!found) table.failWithout(name + "_us");
  return *found;
}

}  // namespace

std::vector<FrameTimes> readTimes(const CsvTable& table, const std::vector<std::string>& files) {
  const TimeColumn sensor = requiredTimeColumn(table, "sensor_time");
  const TimeColumn arrived = requiredTimeColumn(table, "arrived_time");
  std::vector<FrameTimes> times;
  for (const CsvTable::Row* row : rowsOfFrames(table, files)) {
    times.push_back({sensor.of(table, *row), arrived.of(table, *row)});
  }
  return times;
}

std::vector<FrameTimes> readAllTimes(const CsvTable& table) {
  const TimeColumn sensor = requiredTimeColumn(table, "sensor_time");
  const TimeColumn arrived = timeColumn(table, "arrived_time").value_or(sensor);
  const auto index = table.column("index");
  std::vector<FrameTimes> times;
  for (const CsvTable::Row& row : table.rows()) {
    if (index && parseNumber(trimmed(row.fields[*index])) != times.size()) {
      table.fail(row.line, "the row of frame " + std::to_string(times.size()) + " is missing");
    }
    times.push_back({sensor.of(table, row), arrived.of(table, row)});
  }
  return times;
}

}  // namespace velmar::toolkit
