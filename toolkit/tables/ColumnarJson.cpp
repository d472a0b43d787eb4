#include "toolkit/tables/ColumnarJson.h"

#include <algorithm>
#include <cmath>

#include "toolkit/base/Failure.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/FrameFacts.h"
#include "toolkit/tables/FrameLine.h"
#include "toolkit/text/JsonText.h"

namespace velmar::toolkit {

namespace {

bool isNumber(const FrameColumn& column) {
  return column.kind == FrameColumn::Kind::Fact || column.kind == FrameColumn::Kind::Stored;
}

std::string numbersOf(FrameLine& line, const FrameColumn& column, unsigned int count) {
  std::string numbers;
  for (unsigned int index = 0; index < count; ++index) {
    const std::string value = line.cell(index, column);
    numbers.append(index == 0 ? "" : ",").append(value.empty() ? "null" : value);
  }
  return numbers;
}

}  // namespace

std::string columnarJson(const Recording& recording, const FrameTable& table) {
  FrameLine line(recording, table);
  std::string columns;
  for (const FrameColumn& column : table) {
    if (!isNumber(column)) {
      throw Failure(recording.path(), "the column " + column.name + " has no numbers",
                    VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
    }
    columns += (columns.empty() ? "" : ",") + toJsonText(column.name) + ":[" +
               numbersOf(line, column, recording.framesCount()) + "]";
  }
  return "{\"frames\":" + std::to_string(recording.framesCount()) + ",\"columns\":{" + columns +
         "}}";
}

std::vector<std::string> columnsWithValues(const Recording& recording) {
  std::vector<std::string> names{"speed_m_s", "direction", "alt_m", "acceleration_m_s2"};
  const std::size_t motion = names.size();
  for (const CanField& signal : canSignals()) names.emplace_back(signal.name);
  std::vector<bool> isThere(names.size());
  for (unsigned int index = 0; recording.isRtv() && index < recording.framesCount(); ++index) {
    const FrameTag tag = recording.tag(index);
    if (tag.hasPosition()) std::fill_n(isThere.begin(), motion, true);
    for (std::size_t i = motion; i < names.size(); ++i) {
      if (!isThere[i]) isThere[i] = !std::isnan(signalValue(tag.can, canSignals()[i - motion]));
    }
  }
  std::vector<std::string> found;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (isThere[i]) found.push_back(names[i]);
  }
  return found;
}

}  // namespace velmar::toolkit
