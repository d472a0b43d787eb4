#include "toolkit/tables/FrameColumns.h"

#include <algorithm>

#include "toolkit/base/InputFile.h"
#include "toolkit/text/Joined.h"

namespace velmar::toolkit {

namespace {

std::vector<std::string> allNames() {
  std::vector<std::string> names;
  const std::string columns = frameColumns(true, true) + ",";
  for (std::size_t begin = 0; begin < columns.size();) {
    const std::size_t end = columns.find(',', begin);
    names.push_back(columns.substr(begin, end - begin));
    begin = end + 1;
  }
  return names;
}

}  // namespace

std::string frameColumns(bool ofRtv, bool hasCan) {
  std::string names = "index,sensor_time_us,arrived_time_us,size";
  if (ofRtv) {
    names +=
        ",time_flag_ms,x,y,z,relative_distance,speed,direction,lng_deg,lat_deg,distance_m,"
        "speed_m_s";
  }
  if (hasCan) {
    for (const CanField& field : canSignals()) names.append(",").append(field.name);
  }
  return names;
}

const std::vector<CanField>& canSignals() {
  static const std::vector<CanField> signals = [] {
    std::vector<CanField> fields(canFields().begin(), canFields().end());
    std::erase_if(fields, [](const CanField& field) { return field.offset == 0; });
    return fields;
  }();
  return signals;
}

CsvTable readFrameTable(const std::string& path, Job& job, const std::vector<std::string>& others) {
  CsvTable table(path, readFile(path));
  std::vector<std::string> known = allNames();
  known.insert(known.end(), others.begin(), others.end());
  const std::vector<std::string> unknown = table.columnsBeside(known);
  if (!unknown.empty()) job.note(path, "columns that are not read: " + joined(unknown));
  return table;
}

}  // namespace velmar::toolkit
