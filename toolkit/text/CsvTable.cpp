#include "toolkit/text/CsvTable.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <string_view>
#include <utility>

#include "toolkit/base/Failure.h"
#include "toolkit/text/Joined.h"
#include "toolkit/text/TimeText.h"

namespace velmar::toolkit {

namespace {

constexpr std::size_t kAmbiguous = static_cast<std::size_t>(-1);

// Takes rows off the front of a text.
class CsvScanner {
 public:
  CsvScanner(std::string_view text, char separator) : rest_(text), separator_(separator) {}

  bool finished() const { return rest_.empty(); }
  std::size_t line() const { return line_; }

  // The fields up to the end of the line; nothing if a quotation mark is not closed.
  std::optional<std::vector<std::string>> row() {
    std::vector<std::string> fields(1);
    bool quoted = false;
    while (!rest_.empty()) {
      const char character = take();
      if (character == '"' && quoted && rest_.starts_with('"')) {
        fields.back() += take();
      } else if (character == '"' && (quoted || fields.back().empty())) {
        quoted = !quoted;
      } else if (character == separator_ && !quoted) {
        fields.emplace_back();
      } else if (character == '\n' && !quoted) {
        break;
      } else if (quoted || character != '\r' || !(rest_.empty() || rest_.starts_with('\n'))) {
        fields.back() += character;
      }
    }
    if (quoted) return std::nullopt;
    return fields;
  }

 private:
  char take() {
    const char character = rest_.front();
    rest_.remove_prefix(1);
    if (character == '\n') ++line_;
    return character;
  }

  std::string_view rest_;
  char separator_;
  std::size_t line_ = 1;
};

// The one that the header has most of.
char separatorOf(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of("\r\n"), text.size()));
  constexpr std::string_view kSeparators = ",;\t|";
  std::array<int, kSeparators.size()> counts{};
  bool quoted = false;
  for (const char character : text) {
    if (character == '\n' && !quoted) break;
    if (character == '"') quoted = !quoted;
    const std::size_t found = kSeparators.find(character);
    if (found != kSeparators.npos && !quoted) ++counts[found];
  }
  const auto* const most = std::max_element(counts.begin(), counts.end());
  return kSeparators[static_cast<std::size_t>(most - counts.begin())];
}

// A line of commas, which spreadsheets write for rows that were cleared, is empty as well.
bool isEmpty(const std::vector<std::string>& fields) {
  return std::all_of(fields.begin(), fields.end(), [](auto& field) { return field.empty(); });
}

// Which file a name stands for.
using FilesByName = std::map<std::string, std::size_t, std::less<>>;

FilesByName nameFiles(const std::vector<std::string>& files) {
  FilesByName paths;
  FilesByName baseNames;
  for (std::size_t i = 0; i < files.size(); ++i) {
    const auto add = [i](FilesByName& names, const std::string& name) {
      const auto [known, isNew] = names.emplace(name, i);
      if (!isNew) known->second = kAmbiguous;
    };
    add(paths, files[i]);
    add(baseNames, files[i].substr(files[i].rfind('/') + 1));
  }
  paths.merge(baseNames);  // a path as it is given goes before a base name
  return paths;
}

// The frame that a row names, in either way.
class FrameFinder {
 public:
  FrameFinder(const CsvTable& table, const std::vector<std::string>& files)
      : table_(table),
        names_(nameFiles(files)),
        count_(files.size()),
        file_(table.column("file")),
        index_(table.column("index")) {
    if (!file_ && !index_) table.failWithout("file or index");
  }

  std::size_t frameOf(const CsvTable::Row& row) const {
    if (!file_) {
      const auto index = parseNumber(trimmed(row.fields[*index_]));
      if (!index || *index >= count_) {
        table_.fail(row.line, "there is no frame " + row.fields[*index_]);
      }
      return *index;
    }
    const std::string& file = row.fields[*file_];
    const auto found = names_.find(file);
    if (found == names_.end()) table_.fail(row.line, "there is no frame " + file);
    if (found->second == kAmbiguous) table_.fail(row.line, "there are several frames " + file);
    return found->second;
  }

 private:
  const CsvTable& table_;
  FilesByName names_;
  std::size_t count_;
  std::optional<std::size_t> file_;
  std::optional<std::size_t> index_;
};

}  // namespace

CsvTable::CsvTable(std::string name, const std::string& text) : name_(std::move(name)) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // which spreadsheets write
  std::string_view content = text;
  if (content.starts_with(kByteOrderMark)) content.remove_prefix(kByteOrderMark.size());
  if (content.starts_with("\xFF\xFE") || content.starts_with("\xFE\xFF")) {
    fail(1, "it is UTF-16; save it as UTF-8");
  }
  const char separator = separatorOf(content);
  CsvScanner scanner(content, separator);
  while (!scanner.finished()) {
    const std::size_t line = scanner.line();
    const auto fields = scanner.row();
    if (!fields) fail(line, "a quotation mark is not closed");
    if (isEmpty(*fields)) continue;
    if (columns_.empty()) {
      setColumns(*fields);
    } else if (fields->size() == columns_.size()) {
      rows_.push_back({line, *fields});
    } else {
      failWithFields(line, fields->size(), separator);
    }
  }
}

CsvTable::CsvTable(std::string name, std::vector<std::string> columns, std::vector<Row> rows)
    : name_(std::move(name)), rows_(std::move(rows)) {
  setColumns(std::move(columns));
}

void CsvTable::setColumns(std::vector<std::string> columns) {
  columns_ = std::move(columns);
  std::transform(columns_.begin(), columns_.end(), std::back_inserter(plainNames_), plainName);
}

void CsvTable::failWithFields(std::size_t line, std::size_t count, char separator) const {
  const bool mayBeDecimals = separator == ',' && count > columns_.size();
  fail(line, "it has " + std::to_string(count) + " fields, the header " +
                 std::to_string(columns_.size()) +
                 (mayBeDecimals
                      ? "; numbers with a decimal comma need quotation marks or another separator"
                      : ""));
}

std::optional<std::size_t> CsvTable::column(const std::string& name) const {
  const auto found = std::find(plainNames_.begin(), plainNames_.end(), name);
  if (found == plainNames_.end()) return std::nullopt;
  if (std::find(found + 1, plainNames_.end(), name) != plainNames_.end()) {
    fail(1, "the column " + name + " is there twice");
  }
  return static_cast<std::size_t>(found - plainNames_.begin());
}

std::size_t CsvTable::requiredColumn(const std::string& name) const {
  const auto found = column(name);
  if (!found) failWithout(name);
  return *found;
}

std::vector<std::string> CsvTable::columnsBeside(const std::vector<std::string>& known) const {
  std::vector<std::string> others;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const std::string& plain = plainNames_[i];
    if (plain.empty() || std::find(known.begin(), known.end(), plain) != known.end()) continue;
    others.push_back(columns_[i]);
  }
  return others;
}

void CsvTable::failWithout(const std::string& columns) const {
  fail(1, "there is no column " + columns +
              (columns_.empty() ? "; the table is empty" : "; there are " + joined(columns_)));
}

void CsvTable::fail(std::size_t line, const std::string& words) const {
  throw Failure(name_, "line " + std::to_string(line) + ": " + words,
                VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

std::string plainName(const std::string& name) {
  std::string plain;
  for (const char character : name) {
    if (character == ' ' || character == '\t') continue;
    plain += character >= 'A' && character <= 'Z' ? static_cast<char>(character | 0x20) : character;
  }
  return plain;
}

std::string csvText(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == text.npos) return text;
  std::string quoted = "\"";
  for (const char character : text) quoted.append(character == '"' ? 2 : 1, character);
  return quoted + "\"";
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
  return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

std::vector<const CsvTable::Row*> rowsOfFrames(const CsvTable& table,
                                               const std::vector<std::string>& files) {
  const FrameFinder finder(table, files);
  std::vector<const CsvTable::Row*> rows(files.size());
  for (const CsvTable::Row& row : table.rows()) {
    const CsvTable::Row*& taken = rows[finder.frameOf(row)];
    if (taken != nullptr) {
      table.fail(row.line, "its frame has a row already, line " + std::to_string(taken->line));
    }
    taken = &row;
  }
  const auto missing = std::find(rows.begin(), rows.end(), nullptr);
  if (missing != rows.end()) {
    throw Failure(table.name(),
                  "it has no row for " + files[static_cast<std::size_t>(missing - rows.begin())],
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  return rows;
}

}  // namespace velmar::toolkit
