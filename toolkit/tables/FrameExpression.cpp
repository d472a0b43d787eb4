#include "toolkit/tables/FrameExpression.h"

#include <fnmatch.h>

#include <cmath>
#include <filesystem>
#include <optional>
#include <vector>

#include "toolkit/tables/ExpressionParser.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/text/Joined.h"

namespace velmar::toolkit {

namespace {

class FrameExpression final : public FrameCondition {
 public:
  explicit FrameExpression(const std::string& text)
      : parser_(text, ExpressionParser::Values::Exact) {
    parser_.define("near", isNear, this);
    parser_.define("within", isWithin, this);
    parser_.define("file", isFile, this);
    parser_.define("device", isDevice, this);
    parser_.parse();
  }

  void begin(const Recording& recording) override {
    recording_ = &recording;
    file_.clear();
    device_.reset();
    facts_.emplace(recording);
    hasFacts_ = false;
  }

  bool holds(unsigned int frame) override {
    facts_->enter(frame);
    for (ExpressionParser::Variable& variable : parser_.variables()) {
      const double value = facts_->value(variable.fact);
      variable.value = std::isfinite(value) ? value : kAbsent;
      hasFacts_ = hasFacts_ || (variable.fact.isOfTag() && std::isfinite(value));
    }
    const double value = parser_.value();
    return value != 0 && !std::isnan(value);
  }

  bool needsNeighbours() const override {
    const auto& variables = parser_.variables();
    return std::any_of(variables.begin(), variables.end(),
                       [](const auto& variable) { return variable.fact.needsNeighbours(); });
  }

  std::string lack() const override {
    std::vector<std::string> asked;
    for (const ExpressionParser::Variable& variable : parser_.variables()) {
      if (variable.fact.isOfTag()) asked.push_back(variable.fact.name);
    }
    if (asksPlace_) asked.emplace_back("a position");
    return hasFacts_ || asked.empty() ? "" : "none of the frames has " + joined(asked, " or ");
  }

 private:
  std::optional<Place> place() {
    asksPlace_ = true;
    auto place = facts_ ? facts_->place() : std::nullopt;
    hasFacts_ = hasFacts_ || place;
    // Near the poles it can be more than once round the earth from the start.
    if (place && std::fabs(place->lng) > 180) place->lng = std::remainder(place->lng, 360);
    return place;
  }

  // What the parser calls. It does so once before there is a recording.

  static double isNear(void* expression, double lat, double lng, double metres) {
    auto& self = *static_cast<FrameExpression*>(expression);
    const auto place = self.place();
    if (!place) return kAbsent;
    // As a rule it is the same latitude for all frames.
    if (self.ground_.lat() != lat) self.ground_ = GroundScale(lat);
    const double distance = self.ground_.distance(*place, {lng, lat, 0});
    if (std::isnan(distance) || std::isnan(metres)) return kAbsent;
    return distance <= metres ? 1 : 0;
  }

  static double isWithin(void* expression, double lng1, double lat1, double lng2, double lat2) {
    const auto place = static_cast<FrameExpression*>(expression)->place();
    if (!place) return kAbsent;
    const auto [west, east] = std::minmax(lng1, lng2);
    const auto [south, north] = std::minmax(lat1, lat2);
    const bool isBetween = place->lng >= west && place->lng <= east;
    const bool isBeyond = place->lng <= west || place->lng >= east;
    const bool isInside = isAcrossMeridian(lng1, lng2) ? isBeyond : isBetween;
    return isInside && place->lat >= south && place->lat <= north ? 1 : 0;
  }

  static double isFile(void* expression, const char* pattern) {
    auto& self = *static_cast<FrameExpression*>(expression);
    if (self.recording_ == nullptr) return 0;
    if (self.file_.empty()) self.file_ = absolutePath(self.recording_->path());
    return fileMatches(pattern, self.file_) ? 1 : 0;
  }

  static double isDevice(void* expression, const char* id) {
    auto& self = *static_cast<FrameExpression*>(expression);
    if (self.recording_ == nullptr || !self.recording_->isFinished()) return 0;
    if (!self.device_) self.device_ = self.recording_->deviceId();
    return deviceMatches(id, *self.device_) ? 1 : 0;
  }

  ExpressionParser parser_;
  const Recording* recording_ = nullptr;
  std::string file_;                   // of the recording, once it is asked for
  std::optional<std::string> device_;  // the same
  std::optional<FrameFacts> facts_;
  GroundScale ground_{0};
  bool asksPlace_ = false;
  bool hasFacts_ = false;  // of those that it asks for, beside what every recording has
};

}  // namespace

std::unique_ptr<FrameCondition> parseFrameExpression(const std::string& text) {
  return std::make_unique<FrameExpression>(text);
}

std::string absolutePath(const std::string& path) {
  // What ".." is behind a link only the file system knows; the file itself keeps its name.
  const std::filesystem::path whole = std::filesystem::absolute(path);
  std::error_code error;
  const auto folder = std::filesystem::weakly_canonical(whole.parent_path(), error);
  return error ? whole.lexically_normal() : folder / whole.filename();
}

bool deviceMatches(const char* pattern, const std::string& id) {
  return ::fnmatch(pattern, id.c_str(), FNM_CASEFOLD) == 0;
}

bool fileMatches(const char* pattern, const std::string& path) {
  const std::size_t name = path.rfind('/') + 1;
  return ::fnmatch(pattern, path.c_str(), 0) == 0 ||
         ::fnmatch(pattern, path.c_str() + name, 0) == 0;
}

}  // namespace velmar::toolkit
