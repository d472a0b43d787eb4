#include "toolkit/tables/FrameLine.h"

#include <cmath>
#include <string_view>

#include "toolkit/tables/FrameColumns.h"
#include "toolkit/text/NumberText.h"
#include "toolkit/text/TimeText.h"

namespace velmar::toolkit {

namespace {

// Empty if it is absent, and for infinity, which no signal can have and JSON cannot say.
std::string signalText(const can_data_io& can, const CanField& signal) {
  const double value = signalValue(can, signal);
  if (!std::isfinite(value)) return "";
  if (signal.type == CanFieldType::Float) return numberText(static_cast<float>(value));
  return numberText(static_cast<unsigned int>(value));
}

std::string canJson(const can_data_io& can) {
  std::string text;
  for (const CanField& field : canSignals()) {
    if (canFieldIsAbsent(can, field)) continue;
    const std::string value = signalText(can, field);
    text.append(text.empty() ? "\"" : ",\"").append(field.name).append("\":");
    text += value.empty() ? "null" : value;
  }
  return text.insert(0, 1, '{').append(1, '}');
}

std::string canCsv(const can_data_io& can) {
  std::string text;
  for (const CanField& field : canSignals()) {
    text.append(",").append(signalText(can, field));
  }
  return text;
}

std::string column(const std::string& text, std::size_t width) {
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

std::string textLine(const std::string& index, const std::string& sensor,
                     const std::string& arrived, const std::string& size) {
  return column(index, 10) + column(sensor, 29) + column(arrived, 29) + column(size, 12) + "\n";
}

// Numbers in the order of the columns, between names or without them.
class LineBuilder {
 public:
  LineBuilder(std::string_view columns, bool named) : columns_(columns), named_(named) {}

  template <typename T>
  LineBuilder& operator<<(T value) {
    return *this << numberText(value);
  }
  LineBuilder& operator<<(const std::string& value) {
    if (!text_.empty()) text_ += ',';
    const std::size_t end = columns_.find(',');
    if (named_) text_.append("\"").append(columns_.substr(0, end)).append("\":");
    columns_.remove_prefix(end == columns_.npos ? columns_.size() : end + 1);
    text_ += value;
    return *this;
  }

  const std::string& text() const { return text_; }

 private:
  std::string_view columns_;
  bool named_;
  std::string text_;
};

}  // namespace

FrameLine::FrameLine(const Recording& recording) : recording_(recording) {
  if (!recording.isRtv()) return;
  const version_e version = recording.description().version;
  track_.emplace(recording);
  hasCan_ = version == RTV_VER_04;
  isVersion02_ = version == RTV_VER_02;
}

std::string FrameLine::values(unsigned int index, const FrameTag& tag, bool named) const {
  static const std::string columns = frameColumns(true, false);
  LineBuilder line(columns, named);
  const FrameTimes times = recording_.times(index);
  line << index << times.sensor << times.arrived << recording_.frameSize(index);
  if (track_) {
    line << recording_.timeFlag(index) << tag.x << tag.y << tag.z << tag.relativeDistance
         << tag.speed << tag.direction;
    const Place place = track_->at(tag);
    // Signed in version 02, which has it as 24 bits.
    const double distance = isVersion02_ ? static_cast<int>(tag.relativeDistance)
                                         : static_cast<double>(tag.relativeDistance);
    line << degreesText(place.lng) << degreesText(place.lat) << fixedText(distance / 100, 2)
         << fixedText(tag.speed / 100.0, 2);
  }
  return line.text();
}

std::string FrameLine::json(unsigned int index) const {
  const FrameTag tag = recording_.tag(index);
  std::string line = values(index, tag, true);
  if (hasCan_) line.append(",\"can\":").append(canJson(tag.can));
  return line.insert(0, 1, '{').append("}\n");
}

std::string FrameLine::csv(unsigned int index) const {
  const FrameTag tag = recording_.tag(index);
  std::string line = values(index, tag, false);
  if (hasCan_) line += canCsv(tag.can);
  return line + "\n";
}

std::string FrameLine::csvHeader() const {
  return frameColumns(track_.has_value(), hasCan_) + "\n";
}

std::string FrameLine::text(unsigned int index) const {
  const FrameTimes times = recording_.times(index);
  return textLine(std::to_string(index), formatTime(times.sensor), formatTime(times.arrived),
                  std::to_string(recording_.frameSize(index)));
}

std::string FrameLine::textHeader() { return textLine("frame", "captured", "arrived", "bytes"); }

}  // namespace velmar::toolkit
