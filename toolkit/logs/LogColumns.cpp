#include "toolkit/logs/LogColumns.h"

#include <algorithm>
#include <optional>

#include "toolkit/text/Joined.h"
#include "toolkit/text/Suggestion.h"

namespace velmar::toolkit {

namespace {

class ColumnFinder {
 public:
  explicit ColumnFinder(const CsvTable& table) : table_(table) {}

  std::vector<LogColumn> columns() && { return std::move(columns_); }

  // False if the table has no such column.
  bool map(const LogMapping& mapping) {
    const std::string& text = mapping.column;
    for (std::size_t end = text.size(); end != text.npos && end > 0;
         end = text.rfind(':', end - 1)) {
      const auto column = table_.column(plainName(text.substr(0, end)));
      if (!column) continue;
      const auto same = std::find_if(columns_.begin(), columns_.end(),
                                     [&mapping](auto& one) { return one.field == mapping.field; });
      if (same != columns_.end()) {
        table_.fail(1, "--log-map names the " + mapping.field->name + " twice, in " +
                           table_.columns()[same->at] + " and in " + table_.columns()[*column]);
      }
      const std::string unit = end < text.size() ? text.substr(end + 1) : "";
      add(unit.empty() ? plain(mapping, *column) : withUnit(mapping, *column, unit));
      isMapped_.push_back(*column);
      return true;
    }
    return false;
  }

  // What the names of the other columns say.
  void recognize() {
    const std::vector<LogColumn> mapped = columns_;
    for (std::size_t i = 0; i < table_.columns().size(); ++i) {
      if (std::find(isMapped_.begin(), isMapped_.end(), i) != isMapped_.end()) continue;
      const auto found = recognized(i);
      const auto isMapped = [&found](auto& one) { return one.field == found->field; };
      if (found && std::none_of(mapped.begin(), mapped.end(), isMapped)) add(*found);
    }
  }

 private:
  void add(const LogColumn& column) {
    for (const LogColumn& other : columns_) {
      if (other.field != column.field) continue;
      const std::string both = table_.columns()[other.at] + " and " + table_.columns()[column.at];
      table_.fail(1, "both columns, " + both + ", are the " + column.field->name +
                         "; --log-map chooses one");
    }
    columns_.push_back(column);
  }

  LogColumn plain(const LogMapping& mapping, std::size_t column) const {
    const LogField& field = *mapping.field;
    // Its own name may have the unit.
    if (const auto parts = splitUnit(table_.plainNames()[column], field.dimension)) {
      return {&field, column, parts->second, formatOf(parts->second)};
    }
    if (field.plainUnit) return {&field, column, *field.plainUnit, {}};
    if (field.dimension == Dimension::Time) return {&field, column, {}, {}};
    table_.fail(1, "--log-map " + mapping.text() +
                       ": a unit is missing behind a colon; there are " +
                       joined(unitNames(field.dimension)));
  }

  LogColumn withUnit(const LogMapping& mapping, std::size_t column, const std::string& name) const {
    const LogField& field = *mapping.field;
    if (field.dimension == Dimension::None) {
      table_.fail(1, "--log-map " + mapping.text() + ": the " + field.name +
                         " is stored as it stands, without a unit");
    }
    const auto unit = unitNamed(field.dimension, name);
    if (unit) return {&field, column, *unit, formatOf(*unit)};
    const auto format = TimeFormat::named(name);
    if (format && field.dimension == Dimension::Time) return {&field, column, {}, *format};
    const auto names = unitNames(field.dimension);
    table_.fail(
        1, "--log-map " + mapping.text() + ": " + name + " is no unit of " +
               dimensionName(field.dimension) + suggestion(name, names) + "; there are " +
               joined(names) +
               (field.dimension == Dimension::Time ? ", and patterns such as %d.%m.%Y %T" : ""));
  }

  std::optional<LogColumn> recognized(std::size_t column) const {
    const std::string& name = table_.plainNames()[column];
    for (const LogField& field : logFields()) {
      const bool isTime = field.dimension == Dimension::Time;
      if (field.isNamed(name) && (isTime || field.plainUnit)) {
        return LogColumn{&field, column, field.plainUnit.value_or(Unit{}), {}};
      }
      const auto parts = splitUnit(name, field.dimension);
      if (!parts || !field.isNamed(parts->first)) continue;
      return LogColumn{&field, column, parts->second, formatOf(parts->second)};
    }
    return std::nullopt;
  }

  static TimeFormat formatOf(const Unit& unit) {
    return unit.dimension == Dimension::Time ? TimeFormat(unit) : TimeFormat();
  }

  const CsvTable& table_;
  std::vector<LogColumn> columns_;
  std::vector<std::size_t> isMapped_;
};

}  // namespace

std::string LogColumn::text(const CsvTable& table) const {
  const bool isTime = field->dimension == Dimension::Time;
  const std::string in = isTime ? format.name() : std::string(unit.name);
  return field->name + " from " + table.columns()[at] + (in.empty() ? "" : " (" + in + ")");
}

std::vector<LogColumn> understoodColumns(const CsvTable& table,
                                         const std::vector<LogMapping>& mappings,
                                         std::vector<bool>& used) {
  ColumnFinder finder(table);
  for (std::size_t i = 0; i < mappings.size(); ++i) {
    if (finder.map(mappings[i])) used[i] = true;
  }
  finder.recognize();
  return std::move(finder).columns();
}

}  // namespace velmar::toolkit
