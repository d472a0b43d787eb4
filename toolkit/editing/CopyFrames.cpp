#include "toolkit/editing/CopyFrames.h"

#include <algorithm>
#include <numeric>

#include "toolkit/base/Failure.h"
#include "toolkit/base/Progress.h"
#include "toolkit/base/StopSignal.h"
#include "toolkit/recording/RecordingWriter.h"
#include "toolkit/recording/StoredFrame.h"

namespace {

std::size_t countOf(const std::vector<FrameRange>& ranges) {
  return std::accumulate(
      ranges.begin(), ranges.end(), std::size_t{0},
      [](std::size_t sum, const FrameRange& range) { return sum + range.frames.size(); });
}

void checkTimes(const std::vector<FrameRange>& ranges, const std::string& output,
                const RecordingDescription& description) {
  std::vector<FrameTimes> times;
  for (const FrameRange& range : ranges) {
    for (const unsigned int index : range.frames) times.push_back(range.recording->times(index));
  }
  checkRtvTimes(output, description, times);
}

void checkPositions(const std::vector<FrameRange>& ranges, version_e version) {
  // What 24 and 32 bits hold of hundredths of a metre.
  const std::string limit = version == RTV_VER_02 ? "83 km" : "21474 km";
  for (const FrameRange& range : ranges) {
    if (range.rebase.changesNothing()) continue;
    for (const unsigned int index : range.frames) {
      if (range.rebase.apply(range.recording->tag(index))) continue;
      throw Failure(range.recording->path(),
                    "frame " + std::to_string(index) + " lies more than " + limit +
                        " from the start position of the output; its version holds no more",
                    VELMAR_ERROR_CODE_OUT_RANGE_E);
    }
  }
}

/// Whether times relative to the start mean the same in both.
bool sharesStart(const Recording& recording, const RecordingDescription& description) {
  return recording.parser() != nullptr &&
         recording.description().startTime == description.startTime;
}

/// Copies one frame or says why not. What is no picture is copied as well: nothing of a recording
/// is lost that can be had.
void copyFrame(const FrameRange& range, unsigned int index, bool keepsTimeFlag,
               RecordingWriter& writer, FrameRanges& ranges) {
  const Recording& recording = *range.recording;
  std::string jpeg;
  const FrameFlaw flaw = readStoredFrame(recording, index, jpeg);
  if (flaw) {
    ranges.add(index, index, (flaw.hasBytes ? "copied unchanged: " : "left out: ") + flaw.words);
  }
  if (flaw && !flaw.hasBytes) return;
  FrameTag tag = range.rebase.apply(recording.tag(index)).value();
  if (keepsTimeFlag) tag.timeFlag = recording.timeFlag(index);
  writer.add(jpeg, recording.times(index), tag);
}

}  // namespace

std::vector<unsigned int> allFrames(const Recording& recording) {
  std::vector<unsigned int> frames(recording.framesCount());
  std::iota(frames.begin(), frames.end(), 0U);
  return frames;
}

void checkDeviceId(const Recording& recording, Losses& losses) {
  if (recording.hasPlainDeviceId()) return;
  losses.add(recording.path(),
             "its device id is not hexadecimal text as a recording is given it, "
             "and changes");
}

std::uint64_t earliestSensorTime(const Recording& recording) {
  const unsigned int count = recording.framesCount();
  std::uint64_t earliest = count > 0 ? recording.sensorTime(0) : 0;
  for (unsigned int i = 1; i < count; ++i) earliest = std::min(earliest, recording.sensorTime(i));
  return earliest;
}

void copyFrames(const std::vector<FrameRange>& ranges, const std::string& output,
                const RecordingDescription& description, bool quiet, Losses& losses) {
  const std::size_t count = countOf(ranges);
  checkFramesCount(output, count);
  checkTimes(ranges, output, description);
  checkPositions(ranges, description.version);
  StopSignal stop;
  RecordingWriter writer(output, description, static_cast<unsigned int>(count),
                         RecordingWriter::OnFailure::RemoveFrames);
  Progress progress(output, count, quiet);
  std::size_t done = 0;
  for (const FrameRange& range : ranges) {
    const bool keepsTimeFlag = sharesStart(*range.recording, description);
    FrameRanges flaws(range.recording->path(), losses);
    for (const unsigned int index : range.frames) {
      if (stop.requested()) break;
      copyFrame(range, index, keepsTimeFlag, writer, flaws);
      progress.update(++done);
    }
    flaws.finish();
  }
  writer.finish();
  if (done < count) {
    losses.addStopped(output, done, count);
  }
}
