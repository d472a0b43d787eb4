#include "TimesCsv.h"

#include <map>
#include <optional>
#include <utility>

#include "Failure.h"
#include "TimeText.h"

namespace {

constexpr std::string_view kHeader = "file,sensor_time_us,arrived_time_us";
constexpr std::size_t kAmbiguous = static_cast<std::size_t>(-1);

/// Takes what stands behind the last comma off `text`, with the comma.
std::string_view takeLastField(std::string_view& text) {
  const std::size_t comma = text.rfind(',');
  if (comma == text.npos) return {};
  const std::string_view field = text.substr(comma + 1);
  text = text.substr(0, comma);
  return field;
}

/// A field in quotation marks without them; doubled ones inside stand for one.
std::string unquoted(std::string_view field) {
  if (field.size() < 2 || field.front() != '"' || field.back() != '"') return std::string(field);
  std::string text;
  for (std::size_t i = 1; i + 1 < field.size(); ++i) {
    text += field[i];
    if (field[i] == '"' && field[i + 1] == '"') ++i;
  }
  return text;
}

/// Which file a name stands for.
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

}  // namespace

TimesCsv::TimesCsv(std::string name, const std::string& text) : name_(std::move(name)) {
  std::string_view rest = text;
  for (std::size_t line = 1; !rest.empty(); ++line) {
    const std::size_t end = rest.find('\n');
    std::string_view row = rest.substr(0, end);
    rest.remove_prefix(end == rest.npos ? rest.size() : end + 1);
    if (row.ends_with('\r')) row.remove_suffix(1);
    if (line == 1) {
      if (row != kHeader) fail(line, "the header has to be " + std::string(kHeader));
    } else if (!row.empty()) {
      addRow(line, row);
    }
  }
}

void TimesCsv::addRow(std::size_t line, std::string_view text) {
  // From the back, since only the file's name may contain commas.
  const auto arrived = parseNumber(takeLastField(text));
  const auto sensor = parseNumber(takeLastField(text));
  if (!sensor || !arrived) fail(line, "it takes a file and two times in microseconds");
  rows_.push_back({line, unquoted(text), {*sensor, *arrived}});
}

std::vector<FrameTimes> TimesCsv::match(const std::vector<std::string>& files) const {
  const FilesByName names = nameFiles(files);
  std::vector<const Row*> rowOfFile(files.size());
  for (const Row& row : rows_) {
    const auto found = names.find(row.file);
    if (found == names.end()) fail(row.line, "there is no frame " + row.file);
    if (found->second == kAmbiguous) fail(row.line, "there are several frames " + row.file);
    const Row*& taken = rowOfFile[found->second];
    if (taken != nullptr) {
      fail(row.line, row.file + " has a row already, line " + std::to_string(taken->line));
    }
    taken = &row;
  }
  std::vector<FrameTimes> times;
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (rowOfFile[i] == nullptr) {
      throw Failure(name_, "it has no row for " + files[i], VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
    }
    times.push_back(rowOfFile[i]->times);
  }
  return times;
}

void TimesCsv::fail(std::size_t line, const std::string& words) const {
  throw Failure(name_, "line " + std::to_string(line) + ": " + words,
                VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}
