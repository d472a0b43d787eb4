#include "toolkit/tables/TagsCsv.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

#include "toolkit/tables/FrameColumns.h"
#include "toolkit/text/Joined.h"
#include "toolkit/text/NumberText.h"

namespace velmar::toolkit {

namespace {

using Setter = decltype(TagColumn::set);

// A number of the tag within limits, which version 02 has narrower.
template <typename T>
Setter numberSetter(T FrameTag::*field, long lowest, long highest) {
  return [=](FrameTag& tag, const std::string& text) {
    const auto value = numberOf<long>(text);
    if (!value || *value < lowest || *value > highest) return false;
    tag.*field = static_cast<T>(*value);
    return true;
  };
}

template <typename T>
bool setSignal(can_data_io& can, const CanField& field, const std::string& text) {
  const auto value = numberOf<T>(text);
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

// Version 02 has it as 24 bits with a sign, which tables show as 32 without one.
bool setDistance02(FrameTag& tag, const std::string& text) {
  const auto value = numberOf<unsigned int>(text);
  const auto distance = static_cast<int>(value.value_or(0));
  if (!value || distance < kLowest24Bits || distance > kHighest24Bits) return false;
  tag.relativeDistance = *value;
  return true;
}

// What to do with the cells of a column of the table.
struct Use {
  std::size_t column;
  Setter set;
};

std::vector<Use> usesOf(const CsvTable& table, version_e version) {
  std::vector<Use> uses;
  for (const TagColumn& known : tagColumns(version)) {
    if (const auto column = table.column(known.name)) uses.push_back({*column, known.set});
  }
  if (uses.empty()) {
    table.fail(1,
               "no column belongs to a tag (x, y, z, relative_distance, speed, direction, or a CAN "
               "signal); there are " +
                   joined(table.columns()));
  }
  return uses;
}

}  // namespace

std::vector<TagColumn> tagColumns(version_e version) {
  const bool is02 = version == RTV_VER_02;
  const long low = is02 ? kLowest24Bits : std::numeric_limits<int>::min();
  const long high = is02 ? kHighest24Bits : std::numeric_limits<int>::max();
  std::vector<TagColumn> columns = {
      {"x", numberSetter(&FrameTag::x, low, high)},
      {"y", numberSetter(&FrameTag::y, low, high)},
      {"z", numberSetter(&FrameTag::z, std::numeric_limits<int>::min(),
                         std::numeric_limits<int>::max())},
      {"relative_distance", is02 ? Setter(setDistance02)
                                 : numberSetter(&FrameTag::relativeDistance, 0,
                                                std::numeric_limits<unsigned int>::max())},
      {"speed", numberSetter(&FrameTag::speed, 0, 65535)},
      {"direction", numberSetter(&FrameTag::direction, 0, 65535)},
  };
  for (const CanField& field : canSignals()) {
    columns.push_back({field.name, [&field](FrameTag& tag, const std::string& text) {
                         return setCanField(tag.can, field, text);
                       }});
  }
  return columns;
}

std::vector<FrameTag> readTags(const CsvTable& table, const std::vector<std::string>& files,
                               version_e version) {
  const std::vector<Use> uses = usesOf(table, version);
  std::vector<FrameTag> tags;
  for (const CsvTable::Row* row : rowsOfFrames(table, files)) {
    FrameTag& tag = tags.emplace_back();
    for (const auto& [column, set] : uses) {
      const std::string cell(trimmed(row->fields[column]));
      if (cell.empty() || set(tag, cell)) continue;
      table.fail(row->line, table.columns()[column] + " cannot be " + cell);
    }
  }
  return tags;
}

std::string lostFromTags(const std::vector<FrameTag>& tags, version_e version) {
  const auto any = [&tags](auto has) { return std::any_of(tags.begin(), tags.end(), has); };
  std::vector<std::string> lost;
  if (version == RTV_VER_02 && any([](auto& tag) { return tag.z != 0; })) {
    lost.emplace_back("heights");
  }
  if (version != RTV_VER_04 && any([](auto& tag) { return tag.hasCan(); })) {
    lost.emplace_back("CAN signals");
  }
  return joined(lost);
}

}  // namespace velmar::toolkit
