#include "toolkit/catalog/RecordingSummary.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cmath>

#include "toolkit/base/Failure.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/FrameExpression.h"
#include "toolkit/tables/FrameFacts.h"
#include "toolkit/tables/RecordingInfo.h"

namespace velmar::toolkit {

namespace {

constexpr std::uint64_t kLength = 1000000;  // microseconds
// Degrees; nobody drives that far from one frame to the next.
constexpr double kJump = 0.01;
constexpr PlaceBox kWorld = {-180, 180, -90, 90};

// What the frames of a stretch are told apart by.
struct FrameValues {
  std::uint64_t time = 0;
  std::optional<double> direction;
  std::optional<Place> place;
  std::vector<double> facts;
};

bool isKnown(const Place& place) { return std::isfinite(place.lng) && std::isfinite(place.lat); }

void widen(std::optional<PlaceBox>& box, const Place& place) {
  if (!isKnown(place)) {
    if (!box) box = kWorld;
    *box = {std::min(box->west, kWorld.west), std::max(box->east, kWorld.east), kWorld.south,
            kWorld.north};
    return;
  }
  if (!box) box = {place.lng, place.lng, place.lat, place.lat};
  *box = {std::min(box->west, place.lng), std::max(box->east, place.lng),
          std::min(box->south, place.lat), std::max(box->north, place.lat)};
  // Near the poles longitudes can be beyond the world's; they mean any.
  if (box->west < -180 || box->east > 180) {
    box->west = std::min(box->west, kWorld.west);
    box->east = std::max(box->east, kWorld.east);
  }
}

// Degrees, as the heading turned from one frame to the next.
double turn(const FrameValues& frame, const FrameValues& last) {
  if (!frame.direction || !last.direction) return 0;
  return std::remainder(*frame.direction - *last.direction, 360);
}

// Collects frames into stretches.
class Collector {
 public:
  void begin(unsigned int frame) {
    stretch_ = {};
    stretch_.first = stretch_.behind = frame;
    stretch_.least.assign(ownFacts().size(), kAbsent);
    stretch_.greatest = stretch_.least;
  }

  // \param turned  from the frame before, degrees
  void add(const FrameValues& frame, double turned) {
    if (isEmpty()) {
      start_ = frame.time;
    } else {
      stretch_.headingChange += turned;
    }
    for (std::size_t i = 0; i < frame.facts.size(); ++i) {
      const double value = frame.facts[i];
      if (!std::isfinite(value)) {
        stretch_.lacking |= std::uint64_t{1} << i;
        continue;
      }
      // Also if there is none yet.
      if (!(stretch_.least[i] <= value)) stretch_.least[i] = value;
      if (!(stretch_.greatest[i] >= value)) stretch_.greatest[i] = value;
    }
    if (frame.place) widen(stretch_.place, *frame.place);
    ++stretch_.behind;
  }

  // Whether the next frame belongs to another one.
  bool isOver(const FrameValues& next, const FrameValues& last) const {
    if (isEmpty()) return false;
    if (next.time < last.time || next.time - start_ >= kLength) return true;
    if (!next.place || !last.place) return false;
    return std::fabs(next.place->lng - last.place->lng) > kJump ||
           std::fabs(next.place->lat - last.place->lat) > kJump;
  }

  bool isEmpty() const { return stretch_.behind == stretch_.first; }
  Stretch& get() { return stretch_; }

 private:
  Stretch stretch_;
  std::uint64_t start_ = 0;
};

void readFrame(const Recording& recording, FrameFacts& facts, unsigned int index,
               FrameValues& values) {
  facts.enter(index);
  // All of the tag at once, before its parts are asked for.
  if (recording.isRtv()) values.direction = facts.tag().direction;
  values.time = facts.time();
  values.place = facts.place();
  const std::vector<FrameFact>& own = ownFacts();
  values.facts.resize(own.size());
  for (std::size_t i = 0; i < own.size(); ++i) values.facts[i] = facts.value(own[i]);
}

// All of them in one.
Stretch spanOf(const std::vector<Stretch>& stretches) {
  Stretch span = stretches.front();
  for (const Stretch& one : stretches) {
    for (std::size_t i = 0; i < span.least.size(); ++i) {
      span.least[i] = std::fmin(span.least[i], one.least[i]);
      span.greatest[i] = std::fmax(span.greatest[i], one.greatest[i]);
    }
    span.lacking |= one.lacking;
  }
  span.behind = stretches.back().behind;
  return span;
}

void addStretches(const Recording& recording, RecordingSummary& summary) {
  FrameFacts facts(recording);
  Collector one;
  one.begin(0);
  double headingChange = 0;
  FrameValues values;
  FrameValues last;
  for (unsigned int i = 0; i < summary.frames; ++i) {
    readFrame(recording, facts, i, values);
    const double turned = i > 0 ? turn(values, last) : 0;
    headingChange += turned;
    if (one.isOver(values, last)) {
      summary.stretches.push_back(std::move(one.get()));
      one.begin(i);
    }
    one.add(values, turned);
    std::swap(values, last);
  }
  if (!one.isEmpty()) summary.stretches.push_back(std::move(one.get()));
  if (summary.stretches.empty()) return;
  summary.span = spanOf(summary.stretches);
  summary.span->headingChange = headingChange;
}

}  // namespace

std::optional<FileState> fileStateOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0) {
    constexpr std::int64_t kSecond = 1000000000;
    return FileState{status.st_size, status.st_mtim.tv_sec * kSecond + status.st_mtim.tv_nsec,
                     static_cast<std::int64_t>(status.st_ino)};
  }
  if (errno == ENOENT || errno == ENOTDIR) return std::nullopt;
  throw Failure::ofSystem(path, "cannot be looked at", errno);
}

RecordingSummary summaryOf(const Recording& recording) {
  const RecordingInfo info(recording);
  RecordingSummary summary;
  summary.container = info.container;
  summary.version = velmarVersion2String(info.version);
  summary.deviceId = info.deviceId;
  summary.frames = info.framesCount;
  summary.duration = info.duration;
  summary.info = info.json();
  if (summary.frames > 0) {
    summary.start = recording.sensorTime(0);
    summary.end = recording.sensorTime(summary.frames - 1);
  }
  addStretches(recording, summary);
  return summary;
}

}  // namespace velmar::toolkit
