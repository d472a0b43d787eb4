#ifndef VELMAR_TOOLKIT_LOG_READER_H
#define VELMAR_TOOLKIT_LOG_READER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "toolkit/logs/LogFields.h"
#include "toolkit/tables/TagsCsv.h"

namespace velmar::toolkit {

/// Logs of one drive, and how to read them.
struct LogRequest {
  std::vector<std::string> files;  ///< tables (CsvTable) and GPX documents; "-": standard input
  std::vector<LogMapping> mappings;
  std::int64_t maxAge = 1000000;  ///< of a signal's last value, microseconds
  std::int64_t offset = 0;        ///< to add to the times of the logs, microseconds
};

struct LogSample {
  std::int64_t time;  ///< microseconds since 1970, with the offset
  double value;       ///< in m/s, degrees, metres, or as it stands
  std::size_t row;    ///< of the log, from 0
  std::size_t line;   ///< where that is
};

/// The values of a field in their order; there is one at least.
struct LogSeries {
  const LogField* field;
  std::vector<LogSample> samples;
};

struct ReadLog {
  std::string name;
  std::int64_t first, last;  ///< times of its rows
  std::vector<LogSeries> series;
  std::string understood;                 ///< the columns that are read, in words
  std::vector<std::string> otherColumns;  ///< those that are not
};

/// Reads the logs. Throws Failure with the line for what does not fit, also for what the tags of
/// the columns do not hold.
std::vector<ReadLog> readLogs(const LogRequest& request, const std::vector<TagColumn>& columns);

}  // namespace velmar::toolkit

#endif
