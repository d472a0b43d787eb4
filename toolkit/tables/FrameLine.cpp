#include "toolkit/tables/FrameLine.h"

#include <algorithm>
#include <cmath>

#include "toolkit/tables/FrameColumns.h"
#include "toolkit/text/CsvTable.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/NumberText.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/text/TimeText.h"

namespace velmar::toolkit {

namespace {

using Kind = FrameColumn::Kind;
using Source = FrameFact::Source;

bool isSignal(const FrameColumn& column) {
  return column.kind == Kind::Fact && column.fact->source == Source::Signal;
}

// Empty if it is absent, and for infinity, which no signal can have and JSON cannot say.
std::string signalText(const can_data_io& can, const CanField& signal) {
  const double value = signalValue(can, signal);
  if (!std::isfinite(value)) return "";
  if (signal.type == CanFieldType::Float) return numberText(static_cast<float>(value));
  return numberText(static_cast<unsigned int>(value));
}

std::size_t widthOf(const FrameColumn& column, std::size_t fileWidth) {
  switch (column.kind) {
    case Kind::File:
      return std::max<std::size_t>(fileWidth, column.title.size());
    case Kind::Captured:
    case Kind::Arrived:
      return 29;
    case Kind::Hash:
      return column.hash == HashKind::Sha256 ? 66 : 34;
    default:
      break;
  }
  if (column.name == "index") return 10;
  return std::max<std::size_t>(column.title.size() + 2, column.name == "size" ? 12 : 14);
}

std::string aligned(const std::string& text, std::size_t width) {
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

}  // namespace

FrameLine::FrameLine(const Recording& recording, const FrameTable& table, FrameNews* news)
    : recording_(recording), table_(table), news_(news), facts_(recording), frames_(recording) {
  hasCan_ = recording.isRtv() && recording.description().version == RTV_VER_04;
}

std::string FrameLine::json(unsigned int index) {
  index_ = index;
  facts_.enter(index);
  std::string line;
  const auto add = [&line](const std::string& name, const std::string& value) {
    line.append(line.empty() ? "\"" : ",\"").append(name).append("\":").append(value);
  };
  bool isCanDone = !hasCan_;
  for (const FrameColumn& column : table_) {
    if (isSignal(column)) {
      if (!isCanDone) add("can", canJson());
      isCanDone = true;
      continue;
    }
    const std::string value = cell(column);
    if (value.empty()) continue;
    const bool isNumber = column.kind == Kind::Fact || column.kind == Kind::Stored;
    add(column.name, isNumber ? value : toJsonText(value));
  }
  return "{" + line + "}\n";
}

std::string FrameLine::canJson() {
  std::string text;
  for (const FrameColumn& column : table_) {
    if (!isSignal(column) || canFieldIsAbsent(facts_.tag().can, *column.fact->signal)) continue;
    const std::string value = cell(column);
    text.append(text.empty() ? "\"" : ",\"").append(column.name).append("\":");
    text += value.empty() ? "null" : value;
  }
  return "{" + text + "}";
}

std::string FrameLine::csv(unsigned int index) {
  index_ = index;
  facts_.enter(index);
  std::string line;
  for (const FrameColumn& column : table_) {
    if (&column != table_.data()) line += ',';
    line += column.kind == Kind::File ? csvText(recording_.path()) : cell(column);
  }
  return line + "\n";
}

std::string FrameLine::cell(unsigned int index, const FrameColumn& column) {
  index_ = index;
  facts_.enter(index);
  return cell(column);
}

std::string FrameLine::text(unsigned int index, std::size_t fileWidth) {
  index_ = index;
  facts_.enter(index);
  std::string line;
  for (const FrameColumn& column : table_) {
    line += aligned(printable(cell(column)), widthOf(column, fileWidth));
  }
  return line + "\n";
}

std::string FrameLine::textHeader(const FrameTable& table, std::size_t fileWidth) {
  std::string line;
  for (const FrameColumn& column : table) {
    line += aligned(column.title, widthOf(column, fileWidth));
  }
  return line + "\n";
}

std::string FrameLine::cell(const FrameColumn& column) {
  switch (column.kind) {
    case Kind::File:
      return recording_.path();
    case Kind::Captured:
      return formatTime(recording_.sensorTime(index_));
    case Kind::Arrived:
      return formatTime(recording_.arrivedTime(index_));
    case Kind::Hash:
      return hashText(column.hash);
    case Kind::Stored:
      return recording_.isRtv() ? storedText(column.fact->source) : "";
    default:
      return factText(*column.fact);
  }
}

// As it is stored where it has no other unit, which a double may not hold.
std::string FrameLine::factText(const FrameFact& fact) {
  if (fact.isOfTag() && !recording_.isRtv()) return "";
  switch (fact.source) {
    case Source::SensorTime:
      if (fact.unit == 1) return numberText(recording_.sensorTime(index_));
      break;
    case Source::ArrivedTime:
      if (fact.unit == 1) return numberText(recording_.arrivedTime(index_));
      break;
    case Source::Signal:
      return signalText(facts_.tag().can, *fact.signal);
    default:
      break;
  }
  const double value = facts_.value(fact);
  if (!std::isfinite(value)) return "";
  if (fact.unit != 1) return plainText(value);
  const bool isPlace = fact.source == Source::Lng || fact.source == Source::Lat;
  if (isPlace) return degreesText(value);
  const bool isFixed = fact.source == Source::Distance || fact.source == Source::Speed;
  return isFixed ? fixedText(value, 2) : plainText(value);
}

std::string FrameLine::storedText(Source source) {
  const FrameTag& tag = facts_.motion();
  switch (source) {
    case Source::X:
      return numberText(tag.x);
    case Source::Y:
      return numberText(tag.y);
    case Source::Z:
      return numberText(tag.z);
    case Source::Distance:
      return numberText(tag.relativeDistance);
    default:
      return numberText(tag.speed);
  }
}

std::string FrameLine::hashText(HashKind kind) {
  std::string bytes;
  const FrameFlaw flaw = frames_.read(index_, bytes);
  if (!flaw || flaw.hasBytes) return contentHash(kind, bytes);
  if (news_ != nullptr) news_->add(index_, index_, "without a hash: " + flaw.text());
  return "";
}

}  // namespace velmar::toolkit
