#include "toolkit/logs/LogReader.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "toolkit/base/Failure.h"
#include "toolkit/files/InputFile.h"
#include "toolkit/logs/GpxTable.h"
#include "toolkit/logs/LogColumns.h"
#include "toolkit/text/Joined.h"
#include "toolkit/text/NumberText.h"
#include "toolkit/text/Suggestion.h"
#include "toolkit/text/TimeText.h"

namespace velmar::toolkit {

namespace {

bool isNothing(const std::string& cell) {
  return cell.empty() || (cell.size() == 3 && plainName(cell) == "nan");
}

// The numbers of a column. They have decimal points or commas, not both: one of them would be there
// to group digits.
class ColumnReader {
 public:
  // \param target  null if the field does not go into tags as it is
  ColumnReader(const CsvTable& table, const LogColumn& column, const TagColumn* target)
      : table_(table), column_(column), target_(target) {}

  std::optional<double> value(const CsvTable::Row& row) {
    const std::string cell(trimmed(row.fields[column_.at]));
    if (isNothing(cell)) return std::nullopt;
    checkDecimals(row, cell);
    const std::size_t sign = cell.starts_with('+') ? 1 : 0;
    const auto number = numberOf<double>(withDecimalPoint(cell).substr(sign));
    if (!number || !std::isfinite(*number)) fail(row, cell);
    const double value = *number * column_.unit.size;
    if (value < column_.field->lowest || value > column_.field->highest) fail(row, cell);
    const bool isDirection = column_.field->between == LogField::Between::ShorterArc;
    const double stored = isDirection && value < 0 ? value + 360 : value;
    if (target_ != nullptr && !target_->setValue(scratch_, stored)) fail(row, cell);
    return stored;
  }

 private:
  [[noreturn]] void fail(const CsvTable::Row& row, const std::string& cell) const {
    const std::string unit(column_.unit.name);
    table_.fail(row.line, table_.columns()[column_.at] + " cannot be " + cell +
                              (unit.empty() ? "" : " " + unit));
  }

  void checkDecimals(const CsvTable::Row& row, const std::string& cell) {
    const std::size_t found = cell.find_first_of(".,");
    if (found == cell.npos) return;
    if (sign_ == 0) {
      sign_ = cell[found];
      line_ = row.line;
    }
    if (cell[found] == sign_) return;
    table_.fail(row.line, table_.columns()[column_.at] + " is " + cell + ", but line " +
                              std::to_string(line_) + " has the other decimal sign");
  }

  const CsvTable& table_;
  const LogColumn column_;
  const TagColumn* target_;
  FrameTag scratch_;
  char sign_ = 0;         // a point or a comma, once there was one
  std::size_t line_ = 0;  // where it was
};

bool needsUnit(const LogField& field) {
  return field.dimension != Dimension::Time && !field.plainUnit;
}

class TableReader {
 public:
  TableReader(const CsvTable& table, std::vector<LogColumn> columns)
      : table_(table), columns_(std::move(columns)) {
    const auto time = std::find_if(columns_.begin(), columns_.end(), [](auto& column) {
      return column.field->dimension == Dimension::Time;
    });
    if (table_.columns().empty()) table_.fail(1, "it is empty");
    if (time == columns_.end()) {
      table_.fail(1, "no column is the time; --log-map time=COLUMN:UNIT names it; there are " +
                         joined(table_.columns()));
    }
    time_ = *time;
  }

  ReadLog read(std::int64_t offset, const std::vector<TagColumn>& targets) {
    if (table_.rows().empty()) table_.fail(1, "there is no row behind the header");
    readTimes(offset);
    ReadLog log{table_.name(), times_.front(), times_.back(), {}, "", {}};
    std::vector<std::string> understood;
    std::vector<std::size_t> read;
    for (const LogColumn& column : columns_) {
      if (column.at == time_.at && column.field == time_.field) continue;
      LogSeries series = readColumn(column, targets);
      if (series.samples.empty()) continue;
      understood.push_back(column.text(table_));
      read.push_back(column.at);
      log.series.push_back(std::move(series));
    }
    if (log.series.empty()) {
      table_.fail(1,
                  "no column with values is a field; --log-map FIELD=COLUMN:UNIT names one; "
                  "there are " +
                      joined(table_.columns()));
    }
    describe(log, std::move(understood), read);
    return log;
  }

 private:
  void describe(ReadLog& log, std::vector<std::string> words,
                const std::vector<std::size_t>& read) const {
    words.insert(words.begin(), time_.text(table_));
    log.understood = joined(words);
    for (std::size_t i = 0; i < table_.columns().size(); ++i) {
      const bool isRead = i == time_.at || std::find(read.begin(), read.end(), i) != read.end();
      const std::string& name = table_.plainNames()[i];
      if (isRead || name.empty() || isEmpty(i)) continue;
      const bool lacksUnit =
          std::any_of(logFields().begin(), logFields().end(),
                      [&name](auto& field) { return field.isNamed(name) && needsUnit(field); });
      log.otherColumns.push_back(table_.columns()[i] + (lacksUnit ? " (without a unit)" : ""));
    }
  }

  bool isEmpty(std::size_t column) const {
    return std::all_of(table_.rows().begin(), table_.rows().end(),
                       [column](auto& row) { return trimmed(row.fields[column]).empty(); });
  }

  [[noreturn]] void failAtTime(const CsvTable::Row& row, const std::string& cell) const {
    const std::string& name = table_.columns()[time_.at];
    std::string words = name + " cannot be " + (cell.empty() ? "empty" : cell);
    words += "; it is read as " + time_.format.name();
    words += ", unless --log-map time=" + name;
    table_.fail(row.line, words + ":UNIT says otherwise");
  }

  void readTimes(std::int64_t offset) {
    constexpr auto kLast = static_cast<std::int64_t>(kLastFormattedTime);
    for (const CsvTable::Row& row : table_.rows()) {
      const std::string cell(trimmed(row.fields[time_.at]));
      const auto time = time_.format.parse(cell);
      std::int64_t moved = 0;
      if (!time || __builtin_add_overflow(*time, offset, &moved) || moved > kLast ||
          moved < -kLast) {
        failAtTime(row, cell);
      }
      if (!times_.empty() && moved < times_.back()) {
        table_.fail(row.line, "the time goes backwards: " + cell);
      }
      times_.push_back(moved);
    }
  }

  LogSeries readColumn(const LogColumn& column, const std::vector<TagColumn>& targets) const {
    const auto target = std::find_if(targets.begin(), targets.end(), [&column](auto& one) {
      return one.name == column.field->name;
    });
    ColumnReader reader(table_, column, target == targets.end() ? nullptr : &*target);
    LogSeries series{column.field, {}};
    for (std::size_t i = 0; i < times_.size(); ++i) {
      const CsvTable::Row& row = table_.rows()[i];
      if (const auto value = reader.value(row)) {
        series.samples.push_back({times_[i], *value, i, row.line});
      }
    }
    return series;
  }

  const CsvTable& table_;
  const std::vector<LogColumn> columns_;
  LogColumn time_{};
  std::vector<std::int64_t> times_;
};

void checkMappings(const LogRequest& request, const std::vector<bool>& used,
                   const std::vector<std::string>& columns) {
  const auto unused = std::find(used.begin(), used.end(), false);
  if (unused == used.end()) return;
  const LogMapping& mapping = request.mappings[static_cast<std::size_t>(unused - used.begin())];
  const std::string name = mapping.column.substr(0, mapping.column.find(':'));
  throw Failure(joined(request.files),
                "line 1: --log-map " + mapping.text() + ": there is no column " + name +
                    suggestion(name, columns) + "; there are " + joined(columns),
                VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

}  // namespace

std::vector<ReadLog> readLogs(const LogRequest& request, const std::vector<TagColumn>& columns) {
  std::vector<CsvTable> tables;
  std::vector<std::vector<LogColumn>> understood;
  std::vector<bool> used(request.mappings.size());
  std::vector<std::string> names;
  for (const std::string& file : request.files) {
    const std::string text = readFile(file);
    tables.push_back(isXml(text) ? readGpx(file, text) : CsvTable(file, text));
    understood.push_back(understoodColumns(tables.back(), request.mappings, used));
    names.insert(names.end(), tables.back().columns().begin(), tables.back().columns().end());
  }
  checkMappings(request, used, names);
  std::vector<ReadLog> logs;
  for (std::size_t i = 0; i < tables.size(); ++i) {
    logs.push_back(TableReader(tables[i], understood[i]).read(request.offset, columns));
  }
  return logs;
}

}  // namespace velmar::toolkit
