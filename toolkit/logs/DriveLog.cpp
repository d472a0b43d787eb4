#include "toolkit/logs/DriveLog.h"

#include <algorithm>
#include <cmath>

#include "container/rtv/EllipsoidRadii.h"
#include "toolkit/base/Failure.h"
#include "toolkit/text/Joined.h"
#include "toolkit/text/TimeText.h"
#include "velmar_video/rtv/RecordFileToolkit.h"

namespace velmar::toolkit {

namespace {

constexpr double kFullCircle = 360;

[[noreturn]] void refuse(const std::string& log, const std::string& words) {
  throw Failure(log, words, VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

[[noreturn]] void refuse(const std::string& log, std::size_t line, const std::string& words) {
  refuse(log, "line " + std::to_string(line) + ": " + words);
}

const LogSeries* find(const ReadLog& log, const std::string& name) {
  const auto found = std::find_if(log.series.begin(), log.series.end(),
                                  [&name](auto& series) { return series.field->name == name; });
  return found == log.series.end() ? nullptr : &*found;
}

std::string timeText(std::int64_t time) {
  return time < 0 ? std::to_string(time) + "us" : formatTime(static_cast<std::uint64_t>(time));
}

// A row that has both.
struct Fix {
  std::int64_t time;
  double lng, lat;
  std::size_t row, line;
};

// Receivers that know no position write 0, 0.
std::vector<Fix> fixesOf(ReadLog& log, const LogSeries& lng, const LogSeries& lat) {
  std::vector<Fix> fixes;
  std::size_t zeros = 0;
  auto other = lat.samples.begin();
  for (const LogSample& sample : lng.samples) {
    while (other != lat.samples.end() && other->row < sample.row) ++other;
    if (other == lat.samples.end() || other->row != sample.row) continue;
    if (sample.value == 0 && other->value == 0) {
      ++zeros;
    } else {
      fixes.push_back({sample.time, sample.value, other->value, sample.row, sample.line});
    }
  }
  if (fixes.empty()) {
    refuse(log.name, lng.samples.front().line, "no row has both, lat and lng, other than 0, 0");
  }
  if (zeros > 0) {
    log.understood += "; " + std::to_string(zeros) + " rows at 0, 0, which is taken for no fix";
  }
  return fixes;
}

void startAt(const Fix& fix, const LogSeries* heights, RecordingDescription& description) {
  description.lng = nearestNds(fix.lng);
  description.lat = nearestNds(fix.lat);
  if (heights == nullptr) return;
  const auto above = std::find_if(heights->samples.begin(), heights->samples.end(),
                                  [&fix](auto& sample) { return sample.row >= fix.row; });
  const double metres =
      above == heights->samples.end() ? heights->samples.back().value : above->value;
  description.alt = static_cast<int>(std::lround(metres * altitudesPerMetre(description.version)));
}

}  // namespace

DriveLog::DriveLog(const LogRequest& request, RecordingDescription& description)
    : maxAge_(request.maxAge),
      version_(description.version),
      columns_(tagColumns(description.version)),
      logs_(readLogs(request, columns_)) {
  for (ReadLog& log : logs_) {
    addPositions(log, description);
    for (const LogSeries& series : log.series) {
      const std::string& name = series.field->name;
      if (name != "lat" && name != "lng" && name != "alt") add(log, series, name);
    }
  }
}

void DriveLog::add(const ReadLog& log, const LogSeries& series, const std::string& name) {
  const auto column = std::find_if(columns_.begin(), columns_.end(),
                                   [&name](auto& one) { return one.name == name; });
  FrameTag scratch;
  for (const LogSample& sample : series.samples) {
    if (column->setValue(scratch, sample.value)) continue;
    refuse(log.name, sample.line, "it is too far from the start position");
  }
  auto target = std::find_if(targets_.begin(), targets_.end(),
                             [&name](auto& one) { return one.column.name == name; });
  if (target == targets_.end()) target = targets_.insert(target, {*column, {}});
  for (const Part& part : target->parts) {
    if (part.end < log.first || log.last < part.begin) continue;
    refuse(log.name, 1, "the " + name + " of the same time is in " + part.log + " already");
  }
  target->parts.push_back({series.field->between, series.samples, log.name, log.first, log.last});
}

void DriveLog::addPositions(ReadLog& log, RecordingDescription& description) {
  const LogSeries* const lat = find(log, "lat");
  const LogSeries* const lng = find(log, "lng");
  const LogSeries* const alt = find(log, "alt");
  if ((lat == nullptr) != (lng == nullptr)) {
    refuse(log.name, 1,
           std::string("it has ") + (lat == nullptr ? "lng, but no lat" : "lat, but no lng"));
  }
  if (lat != nullptr) {
    const std::vector<Fix> fixes = fixesOf(log, *lng, *lat);
    if (!hasStartPosition(description)) startAt(fixes.front(), alt, description);
    // As readers go back.
    const double startLng = RecordFileToolkit::NDS2Degree(description.lng);
    const double startLat = RecordFileToolkit::NDS2Degree(description.lat);
    const auto radii = detail::EllipsoidRadii::at(startLat);
    LogSeries x{lng->field, {}};
    LogSeries y{lat->field, {}};
    for (const Fix& fix : fixes) {
      double east = 0, north = 0;
      radii.abs2Rel(startLng, startLat, fix.lng, fix.lat, east, north);
      x.samples.push_back({fix.time, east, fix.row, fix.line});
      y.samples.push_back({fix.time, north, fix.row, fix.line});
    }
    add(log, x, "x");
    add(log, y, "y");
  }
  if (alt != nullptr) {
    LogSeries z = *alt;
    const int perMetre = altitudesPerMetre(description.version);
    const double start = perMetre == 0 ? 0 : double{1} * description.alt / perMetre;
    for (LogSample& sample : z.samples) sample.value -= start;
    add(log, z, "z");
  }
}

// A direction is rounded here: what is nearest to 360 degrees is 0.
std::optional<double> DriveLog::valueAt(const Part& part, std::uint64_t frameTime) const {
  const auto time = static_cast<std::int64_t>(frameTime);
  const auto next =
      std::upper_bound(part.samples.begin(), part.samples.end(), time,
                       [](std::int64_t moment, auto& sample) { return moment < sample.time; });
  if (next == part.samples.begin() || time > part.end) return std::nullopt;
  const LogSample& before = next[-1];
  if (part.between == LogField::Between::LastValue) {
    if (time - before.time > maxAge_) return std::nullopt;
    return before.value;
  }
  if (before.time != time && next == part.samples.end()) return std::nullopt;
  const bool isArc = part.between == LogField::Between::ShorterArc;
  double value = before.value;
  if (before.time != time) {
    double way = next->value - before.value;
    if (isArc) way = std::remainder(way, kFullCircle);
    value += way * static_cast<double>(time - before.time) /
             static_cast<double>(next->time - before.time);
  }
  return isArc ? std::fmod(std::round(value) + kFullCircle, kFullCircle) : value;
}

void DriveLog::checkOverlap() const {
  for (const ReadLog& log : logs_) {
    const bool isBefore = log.last < 0 || static_cast<std::uint64_t>(log.last) < earliest_;
    const bool isBehind = log.first >= 0 && static_cast<std::uint64_t>(log.first) > latest_;
    if (!isBefore && !isBehind) continue;
    refuse(log.name, "it goes from " + timeText(log.first) + " to " + timeText(log.last) +
                         ", the frames from " + formatTime(earliest_) + " to " +
                         formatTime(latest_) + "; --log-offset moves the log");
  }
}

void DriveLog::tell(Job& job) const {
  for (const ReadLog& log : logs_) {
    job.note(log.name, log.understood);
    if (log.otherColumns.empty()) continue;
    job.note(log.name, "columns that are not read: " + joined(log.otherColumns));
  }
}

// By the part that has a value, since they do not overlap.
bool DriveLog::set(const Target& target, FrameTag& tag, std::uint64_t time) const {
  for (const Part& part : target.parts) {
    if (const auto value = valueAt(part, time)) return target.column.setValue(tag, *value);
  }
  return false;
}

void DriveLog::fill(FrameTag& tag, std::uint64_t time) {
  ++frames_;
  earliest_ = std::min(earliest_, time);
  latest_ = std::max(latest_, time);
  for (Target& target : targets_) {
    if (!set(target, tag, time)) ++target.missing;
  }
  contents_.add(tag);
}

void DriveLog::finish(const std::string& recording, Job& job) const {
  if (frames_ > 0) checkOverlap();
  tellMissing(job);
  const std::string lost = contents_.lostBy(version_);
  if (!lost.empty()) job.lose(recording, "it does not hold " + lost);
}

void DriveLog::tellMissing(Job& job) const {
  std::vector<std::string> missing;
  for (const Target& target : targets_) {
    if (target.missing == 0) continue;
    missing.push_back(target.column.name + " " + std::to_string(target.missing));
  }
  if (missing.empty()) return;
  std::vector<std::string> names;
  for (const ReadLog& log : logs_) names.push_back(log.name);
  job.note(joined(names),
           "frames without a value, of " + std::to_string(frames_) + ": " + joined(missing));
}

void DriveLog::fillAll(std::vector<FrameTag>& tags, const std::vector<std::uint64_t>& times,
                       const std::string& recording, Job& job) {
  for (std::size_t i = 0; i < times.size(); ++i) fill(tags[i], times[i]);
  if (frames_ > 0) checkOverlap();
  tell(job);
  finish(recording, job);
}

}  // namespace velmar::toolkit
