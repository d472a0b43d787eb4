#include "toolkit/frames/RangesFile.h"

#include <json/json.h>

#include "toolkit/base/Failure.h"
#include "toolkit/files/InputFile.h"
#include "toolkit/text/CsvTable.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/TimeText.h"

namespace velmar::toolkit {

namespace {

void add(NamedRanges& all, const std::string& file, FrameSpan range) {
  FrameSpans& ranges = all.ranges[file];
  if (ranges.empty()) all.files.push_back(file);
  ranges.push_back(range);
}

void readJsonLines(const std::string& path, const std::string& text, NamedRanges& all) {
  std::size_t number = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const std::string line = text.substr(at, end - at);
    at = end + 1;
    ++number;
    if (trimmed(line).empty()) continue;
    const Json::Value value = parseJson(line);
    const Json::Value range = value.isObject() ? value["range"] : Json::Value();
    const bool isRange = range.isArray() && range.size() == 2 && range[0].isUInt() &&
                         range[1].isUInt() && range[0].asUInt() < range[1].asUInt();
    if (!isRange || !value["file"].isString()) {
      throw Failure(path,
                    "line " + std::to_string(number) +
                        R"( is not like {"file": "drive.img", "range": [100, 130]})",
                    VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
    }
    add(all, value["file"].asString(), {range[0].asUInt(), range[1].asUInt()});
  }
}

void readTable(const std::string& path, const std::string& text, NamedRanges& all) {
  const CsvTable table(path, text);
  const std::size_t file = table.requiredColumn("file");
  const std::size_t first = table.requiredColumn("first");
  const std::size_t behind = table.requiredColumn("behind");
  for (const CsvTable::Row& row : table.rows()) {
    const auto begin = parseNumber(row.fields[first]);
    const auto end = parseNumber(row.fields[behind]);
    if (!begin || !end || *begin >= *end) {
      table.fail(row.line, "first and behind are frame numbers, the second of them larger");
    }
    add(all, row.fields[file], {*begin, *end});
  }
}

}  // namespace

NamedRanges readRanges(const std::string& path) {
  const std::string text = readFile(path);
  NamedRanges all;
  const std::string_view start = trimmed(text);
  // Nothing found is no table, either.
  if (start.empty()) return all;
  if (start.starts_with('{')) {
    readJsonLines(path, text, all);
  } else {
    readTable(path, text, all);
  }
  for (auto& [file, ranges] : all.ranges) sortRanges(ranges);
  return all;
}

}  // namespace velmar::toolkit
