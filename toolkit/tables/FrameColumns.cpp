#include "toolkit/tables/FrameColumns.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "toolkit/files/InputFile.h"
#include "toolkit/text/Joined.h"

namespace velmar::toolkit {

namespace {

template <typename T>
double valueAt(const can_data_io& can, const CanField& field) {
  T value;
  std::memcpy(&value, reinterpret_cast<const unsigned char*>(&can) + field.offset, sizeof value);
  return value;
}

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

// Whether it is a column of frames in another unit than frameColumns() has.
bool hasOtherUnit(const std::string& name) {
  if (dimensionOf(name) == Dimension::Time) return true;
  constexpr std::array kAll = {Dimension::Time, Dimension::Speed, Dimension::Angle,
                               Dimension::Length};
  return std::any_of(kAll.begin(), kAll.end(), [&name](Dimension dimension) {
    const auto parts = splitUnit(name, dimension);
    return parts && dimensionOf(parts->first) == dimension &&
           (dimension == Dimension::Time || isFrameColumn(parts->first));
  });
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

double signalValue(const can_data_io& can, const CanField& signal) {
  // A float that is absent is not a number.
  if (signal.type == CanFieldType::Float) return valueAt<float>(can, signal);
  if (canFieldIsAbsent(can, signal)) return kAbsent;
  switch (signal.type) {
    case CanFieldType::Unsigned8:
      return valueAt<unsigned char>(can, signal);
    case CanFieldType::Unsigned16:
      return valueAt<unsigned short>(can, signal);
    default:
      return valueAt<unsigned int>(can, signal);
  }
}

void makeAbsent(can_data_io& can, const CanField& signal) {
  can_data_io absent;
  can_data_io_purge(&absent);
  std::memcpy(reinterpret_cast<unsigned char*>(&can) + signal.offset,
              reinterpret_cast<const unsigned char*>(&absent) + signal.offset, signal.size());
}

bool isFrameColumn(const std::string& plainName) {
  static const std::vector<std::string> names = allNames();
  return std::find(names.begin(), names.end(), plainName) != names.end();
}

Dimension dimensionOf(std::string_view name) {
  if (name == "sensor_time" || name == "arrived_time") return Dimension::Time;
  if (name == "direction" || name.ends_with("_angle")) return Dimension::Angle;
  if (name == "speed" || name == "vehicle_speed" || name.starts_with("wheel_speed_")) {
    return Dimension::Speed;
  }
  const bool isLength = name == "x" || name == "y" || name == "z" || name.ends_with("_distance");
  return isLength ? Dimension::Length : Dimension::None;
}

CsvTable readFrameTable(const std::string& path, Job& job, const std::vector<std::string>& others) {
  CsvTable table(path, readFile(path));
  std::vector<std::string> known = others;
  for (const std::string& name : table.plainNames()) {
    if (isFrameColumn(name) || hasOtherUnit(name)) known.push_back(name);
  }
  const std::vector<std::string> unknown = table.columnsBeside(known);
  if (!unknown.empty()) job.note(path, "columns that are not read: " + joined(unknown));
  return table;
}

}  // namespace velmar::toolkit
