#include "TagsCsv.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <optional>

namespace {

template <typename T>
std::optional<T> parse(const std::string& text) {
  T value{};
  const char* end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return value;
}

/// Puts a cell's value into a tag; false if it does not fit.
using Setter = std::function<bool(FrameTag& tag, const std::string& text)>;

/// A number of the tag within limits, which version 02 has narrower.
template <typename T>
Setter numberSetter(T FrameTag::*field, long lowest, long highest) {
  return [=](FrameTag& tag, const std::string& text) {
    const auto value = parse<long>(text);
    if (!value || *value < lowest || *value > highest) return false;
    tag.*field = static_cast<T>(*value);
    return true;
  };
}

template <typename T>
bool setSignal(can_data_io& can, const CanField& field, const std::string& text) {
  const auto value = parse<T>(text);
  if (!value) return false;
  std::memcpy(reinterpret_cast<unsigned char*>(&can) + field.offset, &*value, sizeof *value);
  // The largest value means absence; that is an empty cell.
  return !canFieldIsAbsent(can, field);
}

bool setCanField(can_data_io& can, const CanField& field, const std::string& text) {
  switch (field.type) {
    case CanFieldType::Float:
      return setSignal<float>(can, field, text);
    case CanFieldType::Unsigned8:
      return setSignal<unsigned char>(can, field, text);
    case CanFieldType::Unsigned16:
      return setSignal<unsigned short>(can, field, text);
    default:
      return setSignal<unsigned int>(can, field, text);
  }
}

struct Column {
  std::string name;
  Setter set;
};

std::vector<Column> columnsOf(version_e version) {
  constexpr long k24Bits = 1L << 23;
  const bool is02 = version == RTV_VER_02;
  const long low = is02 ? -k24Bits : std::numeric_limits<int>::min();
  const long high = is02 ? k24Bits - 1 : std::numeric_limits<int>::max();
  const long farthest = is02 ? k24Bits - 1 : std::numeric_limits<unsigned int>::max();
  std::vector<Column> columns = {{"x", numberSetter(&FrameTag::x, low, high)},
                                 {"y", numberSetter(&FrameTag::y, low, high)}};
  if (!is02) columns.push_back({"z", numberSetter(&FrameTag::z, low, high)});
  columns.push_back({"relative_distance", numberSetter(&FrameTag::relativeDistance, 0, farthest)});
  columns.push_back({"speed", numberSetter(&FrameTag::speed, 0, 65535)});
  columns.push_back({"direction", numberSetter(&FrameTag::direction, 0, 65535)});
  if (version != RTV_VER_04) return columns;
  for (const CanField& field : canFields()) {
    columns.push_back({field.name, [&field](FrameTag& tag, const std::string& text) {
                         return setCanField(tag.can, field, text);
                       }});
  }
  return columns;
}

/// For each column of the table what to do with its cells; nothing for those that name the frame.
std::vector<Setter> settersOf(const CsvTable& table, version_e version) {
  const std::vector<Column> known = columnsOf(version);
  std::vector<Setter> setters;
  for (const std::string& name : table.columns()) {
    Setter setter;
    for (const Column& column : known) {
      if (column.name == name) setter = column.set;
    }
    if (!setter && name != "file" && name != "index") {
      table.fail(
          1, "unknown column " + name + "; known are file or index, " + knownTagColumns(version));
    }
    setters.push_back(setter);
  }
  return setters;
}

}  // namespace

std::string knownTagColumns(version_e version) {
  std::string names;
  for (const Column& column : columnsOf(version)) names += (names.empty() ? "" : " ") + column.name;
  return names;
}

std::vector<FrameTag> readTags(const CsvTable& table, const std::vector<std::string>& files,
                               version_e version) {
  const std::vector<Setter> setters = settersOf(table, version);
  std::vector<FrameTag> tags;
  for (const CsvTable::Row* row : rowsOfFrames(table, files)) {
    FrameTag& tag = tags.emplace_back();
    for (std::size_t i = 0; i < setters.size(); ++i) {
      const std::string& cell = row->fields[i];
      if (!setters[i] || cell.empty()) continue;
      if (!setters[i](tag, cell)) {
        table.fail(row->line, table.columns()[i] + " cannot be " + cell);
      }
    }
  }
  return tags;
}
