#ifndef VELMAR_TOOL_TIMES_CSV_H
#define VELMAR_TOOL_TIMES_CSV_H

#include <string>
#include <vector>

#include "CsvTable.h"
#include "FrameTimes.h"

/// The times of the files, in their order, from a table with the columns file, sensor_time_us and
/// arrived_time_us; see rowsOfFrames(). Throws Failure.
std::vector<FrameTimes> readTimes(const CsvTable& table, const std::vector<std::string>& files);

#endif
