#include "toolkit/tables/TagsCsv.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <optional>
#include <utility>

#include "toolkit/tables/FrameColumns.h"
#include "toolkit/text/Joined.h"
#include "toolkit/text/NumberText.h"
#include "toolkit/text/TimeText.h"

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
  TagColumn known;
  std::optional<Unit> unit;  // of the file if not set

  bool set(FrameTag& tag, const std::string& cell) const {
    if (!unit) return known.set(tag, withDecimalPoint(cell));
    const auto value = numberOf<double>(withDecimalPoint(cell));
    return value && known.setValue(tag, *value * unit->size);
  }
};

// The column of that name, or, for lack of it, with a unit behind the name.
std::optional<Use> useOf(const CsvTable& table, const TagColumn& known) {
  std::optional<Use> found;
  if (const auto column = table.column(known.name)) found = {*column, known, std::nullopt};
  for (std::size_t i = 0; i < table.columns().size(); ++i) {
    const auto parts = splitUnit(table.plainNames()[i], known.dimension);
    if (!parts || parts->first != known.name) continue;
    // The tables of frames have it in both units.
    if (found && !found->unit && isFrameColumn(table.plainNames()[i])) continue;
    if (found) {
      table.fail(1, "both columns, " + table.columns()[found->column] + " and " +
                        table.columns()[i] + ", are the " + known.name + "; leave one out");
    }
    found = {i, known, parts->second};
  }
  return found;
}

void setValues(const CsvTable& table, const CsvTable::Row& row, const std::vector<Use>& uses,
               FrameTag& tag) {
  for (const Use& use : uses) {
    const std::string cell(trimmed(row.fields[use.column]));
    use.known.clear(tag);
    if (cell.empty() || use.set(tag, cell)) continue;
    table.fail(row.line, table.columns()[use.column] + " cannot be " + cell);
  }
}

std::vector<Use> usesOf(const CsvTable& table, version_e version) {
  std::vector<Use> uses;
  for (const TagColumn& known : tagColumns(version)) {
    if (auto use = useOf(table, known)) uses.push_back(std::move(*use));
  }
  if (uses.empty()) {
    table.fail(1,
               "no column belongs to a tag (x, y, z, relative_distance, speed, direction, or a CAN "
               "signal); there are " +
                   joined(table.columns()));
  }
  return uses;
}

TagColumn numberColumn(const std::string& name, const Setter& set, double perUnit) {
  const auto clear = [set](FrameTag& tag) { set(tag, "0"); };
  return {name, set, clear, dimensionOf(name), perUnit, true};
}

TagColumn signalColumn(const CanField& field) {
  const auto set = [&field](FrameTag& tag, const std::string& text) {
    return setCanField(tag.can, field, text);
  };
  const auto clear = [&field](FrameTag& tag) { makeAbsent(tag.can, field); };
  const Dimension dimension = dimensionOf(field.name);
  const bool rounds = dimension != Dimension::None && field.type != CanFieldType::Float;
  return {field.name, set, clear, dimension, 1, rounds};
}

}  // namespace

bool TagColumn::setValue(FrameTag& tag, double value) const {
  constexpr double kLargest = 1e15;  // beyond all fields, and exact below
  double stored = value * perUnit;
  if (rounds) stored = std::round(stored);
  const bool isInteger = std::abs(stored) < kLargest && stored == std::trunc(stored);
  return set(tag, isInteger ? numberText(static_cast<long>(stored)) : numberText(stored));
}

std::vector<TagColumn> tagColumns(version_e version) {
  constexpr double kHundredths = 100;
  const bool is02 = version == RTV_VER_02;
  const long low = is02 ? kLowest24Bits : std::numeric_limits<int>::min();
  const long high = is02 ? kHighest24Bits : std::numeric_limits<int>::max();
  std::vector<TagColumn> columns = {
      numberColumn("x", numberSetter(&FrameTag::x, low, high), kHundredths),
      numberColumn("y", numberSetter(&FrameTag::y, low, high), kHundredths),
      numberColumn("z",
                   numberSetter(&FrameTag::z, std::numeric_limits<int>::min(),
                                std::numeric_limits<int>::max()),
                   kHundredths),
      numberColumn("relative_distance",
                   is02 ? Setter(setDistance02)
                        : numberSetter(&FrameTag::relativeDistance, 0,
                                       std::numeric_limits<unsigned int>::max()),
                   kHundredths),
      numberColumn("speed", numberSetter(&FrameTag::speed, 0, 65535), kHundredths),
      numberColumn("direction", numberSetter(&FrameTag::direction, 0, 65535), 1),
  };
  for (const CanField& field : canSignals()) columns.push_back(signalColumn(field));
  return columns;
}

std::vector<FrameTag> readTags(const CsvTable& table, const std::vector<std::string>& files,
                               version_e version) {
  const std::vector<Use> uses = usesOf(table, version);
  std::vector<FrameTag> tags;
  for (const CsvTable::Row* row : rowsOfFrames(table, files)) {
    setValues(table, *row, uses, tags.emplace_back());
  }
  return tags;
}

void changeTags(const CsvTable& table, version_e version, std::vector<FrameTag>& tags) {
  const std::vector<Use> uses = usesOf(table, version);
  const std::size_t index = table.requiredColumn("index");
  std::vector<bool> isChanged(tags.size());
  for (const CsvTable::Row& row : table.rows()) {
    const auto frame = parseNumber(trimmed(row.fields[index]));
    if (!frame || *frame >= tags.size()) {
      table.fail(row.line, "there is no frame " + row.fields[index] + ", only " +
                               std::to_string(tags.size()) + " frames");
    }
    if (isChanged[*frame]) table.fail(row.line, "frame " + row.fields[index] + " is there twice");
    isChanged[*frame] = true;
    setValues(table, row, uses, tags[*frame]);
  }
}

void TagContents::add(const FrameTag& tag) {
  hasHeights = hasHeights || tag.z != 0;
  hasCan = hasCan || tag.hasCan();
}

std::string TagContents::lostBy(version_e version) const {
  std::vector<std::string> lost;
  if (hasHeights && version == RTV_VER_02) lost.emplace_back("heights");
  if (hasCan && version != RTV_VER_04) lost.emplace_back("CAN signals");
  return joined(lost);
}

}  // namespace velmar::toolkit
