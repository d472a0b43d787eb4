#include "toolkit/copying/Concatenation.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "toolkit/base/Failure.h"
#include "toolkit/copying/CopyFrames.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/text/Joined.h"

namespace velmar::toolkit {

namespace {

struct Difference {
  std::string what, one, other;
};

std::string deviceText(const Recording& recording) {
  const std::string id = recording.deviceId();
  return id.empty() ? "none" : id;
}

// What one recording cannot have twice.
std::vector<Difference> differences(const Recording& oneRecording, const Recording& otherRecording,
                                    const Strip& strip) {
  RecordingDescription one = oneRecording.description();
  RecordingDescription other = otherRecording.description();
  strip.applyTo(one);
  strip.applyTo(other);
  // Two that are known are no difference: the frames' positions are counted from one of them.
  const auto position = [](const RecordingDescription& description) {
    return hasStartPosition(description) ? "known" : "not known";
  };
  std::vector<Difference> all = {
      {"size", toText(one.size()), toText(other.size())},
      {"codec", velmarCodec2String(one.codec), velmarCodec2String(other.codec)},
      {"device", strip.ids ? "" : deviceText(oneRecording),
       strip.ids ? "" : deviceText(otherRecording)},
      {"start position", position(one), position(other)},
  };
  std::erase_if(all,
                [](const Difference& difference) { return difference.one == difference.other; });
  return all;
}

// What is taken from the winner without asking.
std::string quietDifferences(const RecordingDescription& one, const RecordingDescription& other) {
  std::vector<std::string> list;
  const auto note = [&list](bool differs, const char* what) {
    if (differs) list.emplace_back(what);
  };
  note(one.cameraParams != other.cameraParams, "camera parameters");
  note(one.extendedInfo != other.extendedInfo, "extended information");
  note(one.undistorted != other.undistorted, "mark of undistorted frames");
  note(one.taggingFlags != other.taggingFlags, "tagging flags");
  note(one.format != other.format, "frame format");
  return joined(list);
}

void compare(const Recording& winner, const Recording& other, const Joint& joint, Job& job) {
  const bool isAsked = joint.winner != nullptr;
  const RecordingDescription kept = winner.description();
  const RecordingDescription left = other.description();
  if (winner.isRtv() && kept.version != left.version) {
    throw Failure(
        other.path(),
        "its version is another one than that of " + winner.path() + "; convert can change it",
        VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  for (const Difference& difference : differences(winner, other, joint.strip)) {
    const std::string words = "its " + difference.what + " is " + difference.other + ", that of " +
                              winner.path() + " is " + difference.one;
    if (!isAsked) {
      throw Failure(other.path(), words + "; --force=INPUT says which one wins",
                    VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
    }
    job.lose(other.path(), words);
  }
  const std::string quiet = quietDifferences(kept, left);
  if (!quiet.empty()) job.lose(other.path(), "not kept: its " + quiet);
}

// Where one start position is not known, positions stay as they are.
Rebase rebaseTo(const RecordingDescription& description, const Recording& recording) {
  const RecordingDescription from = recording.description();
  if (!hasStartPosition(from) || !hasStartPosition(description)) return {};
  return {from, description};
}

// The frames to take of recordings that come one behind the other.
class Overlap {
 public:
  explicit Overlap(bool drops) : drops_(drops) {}

  std::vector<unsigned int> framesOf(const Recording& recording) {
    std::vector<unsigned int> frames = allFrames(recording);
    const std::optional<std::uint64_t> end = end_;
    const auto isEarly = [&](unsigned int frame) {
      return end && recording.sensorTime(frame) <= *end;
    };
    const auto early = std::count_if(frames.begin(), frames.end(), isEarly);
    for (const unsigned int frame : frames) {
      end_ = std::max(end_.value_or(0), recording.sensorTime(frame));
    }
    if (early == 0) return frames;
    const std::string count = std::to_string(frames.size());
    const bool areAll = static_cast<std::size_t>(early) == frames.size();
    words_.emplace_back(recording.path(),
                        (areAll ? "all of its " : std::to_string(early) + " of its ") + count +
                            " frames were captured before the recordings in front of it end" +
                            (drops_ ? ", and are left out" : ""));
    if (drops_) std::erase_if(frames, isEarly);
    return frames;
  }

  void tell(Job& job) const {
    for (const auto& [file, words] : words_) job.note(file, words);
  }

 private:
  bool drops_;
  std::vector<std::pair<std::string, std::string>> words_;  // of a file
  std::optional<std::uint64_t> end_;                        // the latest capture so far
};

}  // namespace

std::uint64_t captureStart(const Recording& recording) {
  return recording.framesCount() > 0 ? recording.sensorTime(0) : UINT64_MAX;
}

void concatenate(const std::vector<const Recording*>& recordings, const Joint& joint,
                 const std::string& output, Job& job) {
  const Recording& winner = joint.winner != nullptr ? *joint.winner : *recordings.front();
  RecordingDescription description = winner.description();
  if (!joint.strip.ids) checkDeviceId(winner, job);
  std::vector<FrameRange> ranges;
  Overlap overlap(joint.dropsOverlap);
  for (const Recording* recording : recordings) {
    compare(winner, *recording, joint, job);
    description.startTime = std::min(description.startTime, recording->description().startTime);
    ranges.push_back({recording, overlap.framesOf(*recording),
                      joint.strip.positions ? Rebase() : rebaseTo(description, *recording)});
  }
  std::erase_if(ranges, [](const FrameRange& range) { return range.frames.empty(); });
  copyFrames(ranges, output, description, job, joint.strip);
  overlap.tell(job);
}

}  // namespace velmar::toolkit
