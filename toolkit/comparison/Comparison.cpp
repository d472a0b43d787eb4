#include "toolkit/comparison/Comparison.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <unordered_map>

#include "toolkit/base/ContentHash.h"
#include "toolkit/frames/StoredFrame.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/Track.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/NumberText.h"

namespace velmar::toolkit {

namespace {

// Numbers pictures: those with the same bytes have the same number.
class PictureNumbers {
 public:
  std::uint64_t of(const std::string& bytes) {
    return numbers_.try_emplace(contentHash(HashKind::Xxh3, bytes), numbers_.size()).first->second;
  }
  // For one that cannot be read: no other has it.
  std::uint64_t ofUnread() { return kUnread + unread_++; }
  static bool isUnread(std::uint64_t number) { return number >= kUnread; }

 private:
  static constexpr std::uint64_t kUnread = std::uint64_t{1} << 63;
  std::unordered_map<std::string, std::uint64_t> numbers_;
  std::uint64_t unread_ = 0;
};

// One of two recordings that are compared.
struct Side {
  explicit Side(const Recording& compared)
      : recording(compared), description(compared.description()) {}

  bool isRtv() const { return recording.isRtv(); }
  bool isVersion02() const { return isRtv() && description.version == RTV_VER_02; }
  bool hasCan() const { return isRtv() && description.version == RTV_VER_04; }
  unsigned int count() const { return recording.framesCount(); }

  const Recording& recording;
  RecordingDescription description;
  FrameKeys keys;
  std::vector<FrameTag> tags;  // of an rtv
};

// As an rtv holds it if one of the two is one.
std::string comparableId(const Side& side, bool isPadded) {
  if (!isPadded) return side.recording.deviceId();
  std::string id = side.description.deviceId;
  id.resize(kRtvDeviceIdSize);
  return id;
}

// In the larger of the two units; version 02 has no altitude.
bool startTogether(const RecordingDescription& a, const RecordingDescription& b) {
  if (a.lng != b.lng || a.lat != b.lat) return false;
  const int perMetre = std::min(altitudesPerMetre(a.version), altitudesPerMetre(b.version));
  if (perMetre == 0) return true;
  return a.alt / (altitudesPerMetre(a.version) / perMetre) ==
         b.alt / (altitudesPerMetre(b.version) / perMetre);
}

std::vector<HeaderDifference> compareHeaders(const Side& a, const Side& b) {
  const RecordingDescription& one = a.description;
  const RecordingDescription& other = b.description;
  std::vector<HeaderDifference> found;
  const auto compare = [&found](const char* name, const Json::Value& ofA, const Json::Value& ofB) {
    if (ofA != ofB) found.push_back({name, ofA, ofB});
  };
  compare("frames_count", a.count(), b.count());
  compare("width", one.width, other.width);
  compare("height", one.height, other.height);
  compare("frame_format", velmarFormat2String(one.format), velmarFormat2String(other.format));
  compare("frame_codec", velmarCodec2String(one.codec), velmarCodec2String(other.codec));
  const bool is02 = a.isVersion02() || b.isVersion02();
  if (!is02) compare("undistorted", one.undistorted, other.undistorted);
  const bool isPadded = a.isRtv() || b.isRtv();
  if (comparableId(a, isPadded) != comparableId(b, isPadded)) {
    found.push_back({"device_id", a.recording.deviceId(), b.recording.deviceId()});
  }
  if (a.isRtv() != b.isRtv()) return found;
  compare("start_time_us", Json::UInt64{one.startTime}, Json::UInt64{other.startTime});
  if (a.isRtv()) {
    if (!startTogether(one, other)) {
      found.push_back({"start_position", startPositionText(one), startPositionText(other)});
    }
    if (!is02) compare("tagging_flags", one.taggingFlags, other.taggingFlags);
  } else {
    compare("camera_params", parseJson(one.cameraParams), parseJson(other.cameraParams));
    compare("extended_info", parseJson(one.extendedInfo), parseJson(other.extendedInfo));
  }
  return found;
}

// A number of a tag, by its name in the JSON of frames.
struct TagValue {
  std::string name;
  std::function<double(const FrameTag&)> of;
};

// Null for what is absent, and for infinity, which JSON cannot say. Signals are floats, which have
// fewer digits than a double shows.
Json::Value jsonOf(double number) {
  if (!std::isfinite(number)) return {};
  const auto single = static_cast<float>(number);
  return single == number ? *numberOf<double>(numberText(single)) : number;
}

// Those that the fields of both have room for.
std::vector<TagValue> tagValues(const Side& a, const Side& b) {
  constexpr double kHundredths = 100;
  if (!a.isRtv() || !b.isRtv()) return {};
  const bool is02 = a.isVersion02() || b.isVersion02();
  std::vector<TagValue> values = {
      {"x_m", [](const FrameTag& tag) { return tag.x / kHundredths; }},
      {"y_m", [](const FrameTag& tag) { return tag.y / kHundredths; }},
      {"z_m", [](const FrameTag& tag) { return tag.z / kHundredths; }},
      {"distance_m",
       [is02](const FrameTag& tag) {  // with a sign in version 02
         const unsigned int distance = tag.relativeDistance;
         return (is02 ? double{1} * static_cast<int>(distance) : distance) / kHundredths;
       }},
      {"speed_m_s", [](const FrameTag& tag) { return tag.speed / kHundredths; }},
      {"direction", [](const FrameTag& tag) { return double{1} * tag.direction; }},
  };
  if (is02) std::erase_if(values, [](auto& value) { return value.name == "z_m"; });
  if (a.hasCan() && b.hasCan()) {
    for (const CanField& signal : canSignals()) {
      values.push_back(
          {signal.name, [&signal](const FrameTag& tag) { return signalValue(tag.can, signal); }});
    }
  }
  return values;
}

class Comparer {
 public:
  Comparer(const Recording& a, const Recording& b, Job& job) : a_(a), b_(b), job_(job) {}

  Comparison run() {
    result_.header = compareHeaders(a_, b_);
    const std::size_t total = std::size_t{a_.count()} + b_.count();
    const auto stage = job_.begin(a_.recording.path(), total);
    result_.isWhole = read(a_, result_.unreadOfA, *stage) && read(b_, result_.unreadOfB, *stage);
    if (!result_.isWhole) {
      job_.loseRest(a_.recording.path(), done_, total);
      return std::move(result_);
    }
    result_.frames = alignFrames(a_.keys, b_.keys);
    comparePictures();
    compareTimes();
    for (const TagValue& value : tagValues(a_, b_)) compareTags(value);
    return std::move(result_);
  }

 private:
  // False if it is to stop.
  bool read(Side& side, std::vector<Finding>& unread, Job::Stage& stage) {
    FindingMerger merger([&unread](const Finding& finding) { unread.push_back(finding); });
    StoredFrames frames(side.recording);
    std::string bytes;
    for (unsigned int i = 0; i < side.count(); ++i) {
      const FrameFlaw flaw = frames.read(i, bytes);
      const bool isRead = !flaw || flaw.hasBytes;
      if (!isRead) merger.add({Finding::Severity::Error, i, {}, flaw.words});
      side.keys.pictures.push_back(isRead ? pictures_.of(bytes) : pictures_.ofUnread());
      side.keys.times.push_back(comparable(side.recording.sensorTime(i)));
      if (side.isRtv()) side.tags.push_back(side.recording.tag(i));
      stage.advance(++done_);
      if (stage.stopRequested()) return false;
    }
    merger.finish();
    return true;
  }

  // An rtv has whole milliseconds.
  std::uint64_t comparable(std::uint64_t time) const {
    return a_.isRtv() == b_.isRtv() ? time : time / kMillisecond * kMillisecond;
  }

  // Notes the runs of paired frames that differ.
  template <typename Differ, typename ValueOfA, typename ValueOfB>
  void note(const std::string& name, const Differ& differ, const ValueOfA& valueOfA,
            const ValueOfB& valueOfB) {
    for (const FramePairs& run : result_.frames) {
      bool isOpen = false;
      for (unsigned int k = 0; run.isPaired() && k < run.a.count; ++k) {
        const unsigned int i = run.a.first + k;
        const unsigned int j = run.b.first + k;
        const bool wasOpen = isOpen;
        isOpen = differ(i, j);
        if (!isOpen) continue;
        if (!wasOpen) {
          result_.frameDifferences.push_back({name, {{i, 0}, {j, 0}}, valueOfA(i), valueOfB(j)});
        }
        ++result_.frameDifferences.back().frames.a.count;
        ++result_.frameDifferences.back().frames.b.count;
      }
    }
  }

  void comparePictures() {
    const auto differ = [this](unsigned int i, unsigned int j) {
      const std::uint64_t one = a_.keys.pictures[i];
      const std::uint64_t other = b_.keys.pictures[j];
      return one != other && !PictureNumbers::isUnread(one) && !PictureNumbers::isUnread(other);
    };
    const auto none = [](unsigned int) { return Json::Value(); };
    note("picture", differ, none, none);
  }

  void compareTimes() {
    const auto sensorDiffers = [this](unsigned int i, unsigned int j) {
      return a_.keys.times[i] != b_.keys.times[j];
    };
    const auto sensorOf = [](const Side& side) {
      return [&side](unsigned int i) { return Json::Value(Json::UInt64{side.keys.times[i]}); };
    };
    note("sensor_time_us", sensorDiffers, sensorOf(a_), sensorOf(b_));
    if (a_.isRtv() || b_.isRtv()) return;
    const auto arrived = [](const Side& side, unsigned int i) {
      return std::uint64_t{side.recording.arrivedTime(i)};
    };
    const auto arrivedDiffers = [&](unsigned int i, unsigned int j) {
      return arrived(a_, i) != arrived(b_, j);
    };
    const auto arrivedOf = [&arrived](const Side& side) {
      return [&](unsigned int i) { return Json::Value(Json::UInt64{arrived(side, i)}); };
    };
    note("arrived_time_us", arrivedDiffers, arrivedOf(a_), arrivedOf(b_));
  }

  void compareTags(const TagValue& value) {
    const auto differ = [&](unsigned int i, unsigned int j) {
      const double one = value.of(a_.tags[i]);
      const double other = value.of(b_.tags[j]);
      return one != other && !(std::isnan(one) && std::isnan(other));
    };
    const auto valueOf = [&value](const Side& side) {
      return [&](unsigned int i) { return jsonOf(value.of(side.tags[i])); };
    };
    note(value.name, differ, valueOf(a_), valueOf(b_));
  }

  Side a_, b_;
  Job& job_;
  PictureNumbers pictures_;
  std::size_t done_ = 0;
  Comparison result_;
};

}  // namespace

bool Comparison::isSame() const {
  return header.empty() && frameDifferences.empty() && unreadOfA.empty() && unreadOfB.empty() &&
         std::all_of(frames.begin(), frames.end(), [](auto& run) { return run.isPaired(); });
}

Comparison compareRecordings(const Recording& a, const Recording& b, Job& job) {
  return Comparer(a, b, job).run();
}

}  // namespace velmar::toolkit
