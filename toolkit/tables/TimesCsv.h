#ifndef VELMAR_TOOLKIT_TIMES_CSV_H
#define VELMAR_TOOLKIT_TIMES_CSV_H

#include <string>
#include <vector>

#include "toolkit/recording/FrameTimes.h"
#include "toolkit/text/CsvTable.h"

namespace velmar::toolkit {

/// The times of the files, in their order, from a table with the columns sensor_time_us and
/// arrived_time_us whose rows name their frame; see rowsOfFrames(). Other units at the end of a
/// name (sensor_time_s) are understood; without one, times are RFC 3339. Throws Failure.
std::vector<FrameTimes> readTimes(const CsvTable& table, const std::vector<std::string>& files);

/// Rows in the frames' order with the column sensor_time_us and perhaps arrived_time_us, or with
/// other units; other columns count for nothing, but an index has to be right. Throws Failure.
std::vector<FrameTimes> readAllTimes(const CsvTable& table);

}  // namespace velmar::toolkit

#endif
