#ifndef VELMAR_TOOLKIT_CSV_TABLE_H
#define VELMAR_TOOLKIT_CSV_TABLE_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmar::toolkit {

/// A table of text: a header with the columns' names, then rows with as many fields. Between them
/// are commas, semicolons, tabs or vertical bars, whichever the header has most of. Fields in
/// quotation marks may hold separators, line ends and, doubled, quotation marks. Empty lines count
/// for nothing. Columns may come in any order; capitals and blanks in their names make no
/// difference.
class CsvTable {
 public:
  struct Row {
    std::size_t line;
    std::vector<std::string> fields;
  };

  /// \param name  of the table, for messages
  /// Throws Failure that names the line.
  CsvTable(std::string name, const std::string& text);
  /// What was text of another kind. Each row has as many fields as there are columns.
  CsvTable(std::string name, std::vector<std::string> columns, std::vector<Row> rows);

  const std::string& name() const { return name_; }
  /// Their names as they stand in the header.
  const std::vector<std::string>& columns() const { return columns_; }
  /// The same as plainName() gives them.
  const std::vector<std::string>& plainNames() const { return plainNames_; }
  /// Throws Failure if the column is there twice.
  std::optional<std::size_t> column(const std::string& name) const;
  /// Throws Failure, which names the columns that are there, if this one is not.
  std::size_t requiredColumn(const std::string& name) const;
  /// The names of those that are not `known`, as they stand in the header.
  std::vector<std::string> columnsBeside(const std::vector<std::string>& known) const;
  /// That there is no such column, but others.
  [[noreturn]] void failWithout(const std::string& columns) const;
  const std::vector<Row>& rows() const { return rows_; }
  /// Throws Failure with the line and what is wrong with it.
  [[noreturn]] void fail(std::size_t line, const std::string& words) const;

 private:
  void setColumns(std::vector<std::string> columns);
  [[noreturn]] void failWithFields(std::size_t line, std::size_t count, char separator) const;

  std::string name_;
  std::vector<std::string> columns_;
  std::vector<std::string> plainNames_;  // of the same columns
  std::vector<Row> rows_;
};

/// What two names of the same column have in common: in small letters, without blanks.
std::string plainName(const std::string& name);

/// A cell: in quotes where a comma, say, would end it.
std::string csvText(const std::string& text);

/// Without the blanks around it.
std::string_view trimmed(std::string_view text);

/// The row of each frame, in the frames' order. Rows name their frame in the column "file", by the
/// path as it is in `files` or by its last part, or else in the column "index", from 0. Throws
/// Failure unless rows and frames match one to one.
std::vector<const CsvTable::Row*> rowsOfFrames(const CsvTable& table,
                                               const std::vector<std::string>& files);

}  // namespace velmar::toolkit

#endif
