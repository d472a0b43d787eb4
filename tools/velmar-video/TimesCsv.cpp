#include "TimesCsv.h"

#include "Failure.h"
#include "TimeText.h"

std::vector<FrameTimes> readTimes(const CsvTable& table, const std::vector<std::string>& files) {
  const std::vector<std::string> header = {"file", "sensor_time_us", "arrived_time_us"};
  if (table.columns() != header) {
    table.fail(1, "the header has to be file,sensor_time_us,arrived_time_us");
  }
  std::vector<FrameTimes> times;
  for (const CsvTable::Row* row : rowsOfFrames(table, files)) {
    const auto sensor = parseNumber(row->fields[1]);
    const auto arrived = parseNumber(row->fields[2]);
    if (!sensor || !arrived) table.fail(row->line, "its times are not microseconds");
    times.push_back({*sensor, *arrived});
  }
  return times;
}
