#include "toolkit/tables/TimesCsv.h"

#include "toolkit/base/Failure.h"
#include "toolkit/text/TimeText.h"

namespace velmar::toolkit {

namespace {

FrameTimes timesOf(const CsvTable& table, const CsvTable::Row& row, std::size_t sensorColumn,
                   std::size_t arrivedColumn) {
  const auto sensor = parseNumber(trimmed(row.fields[sensorColumn]));
  const auto arrived = parseNumber(trimmed(row.fields[arrivedColumn]));
  if (!sensor || !arrived) table.fail(row.line, "its times are not microseconds");
  return {*sensor, *arrived};
}

}  // namespace

std::vector<FrameTimes> readTimes(const CsvTable& table, const std::vector<std::string>& files) {
  const std::size_t sensor = table.requiredColumn("sensor_time_us");
  const std::size_t arrived = table.requiredColumn("arrived_time_us");
  std::vector<FrameTimes> times;
  for (const CsvTable::Row* row : rowsOfFrames(table, files)) {
    times.push_back(timesOf(table, *row, sensor, arrived));
  }
  return times;
}

std::vector<FrameTimes> readAllTimes(const CsvTable& table) {
  const std::size_t sensor = table.requiredColumn("sensor_time_us");
  const auto arrived = table.column("arrived_time_us");
  const auto index = table.column("index");
  std::vector<FrameTimes> times;
  for (const CsvTable::Row& row : table.rows()) {
    if (index && parseNumber(trimmed(row.fields[*index])) != times.size()) {
      table.fail(row.line, "the row of frame " + std::to_string(times.size()) + " is missing");
    }
    times.push_back(timesOf(table, row, sensor, arrived.value_or(sensor)));
  }
  return times;
}

}  // namespace velmar::toolkit
