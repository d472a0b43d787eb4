#include <cstddef>
#include <set>

#include "container/img/FrameIndex.h"
#include "container/rtv/RtvLayout.h"
#include "toolkit/base/Failure.h"
#include "toolkit/editing/EditDraft.h"
#include "toolkit/text/TimeText.h"

namespace velmar::toolkit {

namespace {

// In the index of an img the two times are one behind the other.
static_assert(offsetof(FrameIndex, arrivedTime) ==
              offsetof(FrameIndex, sensorTime) + sizeof FrameIndex::sensorTime);

void checkIndex(const std::string& option, unsigned int index, const EditDraft& draft) {
  const unsigned int count = draft.recording.framesCount();
  if (index < count) return;
  throw Failure(draft.recording.path(),
                option + ": there is no frame " + std::to_string(index) + ", only " +
                    std::to_string(count) + " frames",
                VELMAR_ERROR_CODE_OUT_RANGE_E);
}

void planStartTime(std::uint64_t time, EditDraft& draft) {
  if (!draft.recording.isRtv()) {
    draft.refuse("--start-time",
                 "an img starts when its frame 0 arrived; --arrived-time 0=... sets that");
  }
  if (time % kMillisecond != 0) draft.refuse("--start-time", "an rtv holds whole milliseconds");
  const std::string before = formatTime(draft.description.startTime);
  draft.description.startTime = time;
  if (!rtvStartTime(draft.description))
    draft.refuse("--start-time", "version 02 of rtv begins in 2015");
  draft.add("start time", before, formatTime(time),
            [stored = time - rtvEpoch(draft.description.version)](auto& modifier) {
              unsigned long value = stored;
              return modifier.modifyStartTime(value);
            });
}

void planSensorTime(const std::string& option, EditRequest::FrameTime change, bool said,
                    EditDraft& draft) {
  checkIndex(option, change.index, draft);
  const bool rtv = draft.recording.isRtv();
  if (rtv && change.time % kMillisecond != 0)
    draft.refuse(option, "an rtv holds whole milliseconds");
  if (rtv && !rtvTimeFlag(draft.description, change.time)) {
    draft.refuse(option, "frame " + std::to_string(change.index) +
                             " would be captured before the start, or more than 24 days after it");
  }
  // The modifier counts from where the file does.
  const std::uint64_t epoch = rtv ? rtvEpoch(draft.description.version) : 0;
  const EditDraft::Write write = [index = change.index,
                                  stored = change.time - epoch](auto& modifier) {
    unsigned long value = stored;
    return modifier.modifyTimestamp(index, value);
  };
  draft.places.overwrite(
      rtv ? FilePlace{detail::rtvLayout(draft.description.version).tagAt(change.index) +
                          offsetof(frametag03Ver_t, time_flag),
                      sizeof frametag03Ver_t::time_flag}
          : FilePlace{recordAt(change.index) + offsetof(FrameIndex, sensorTime),
                      sizeof FrameIndex::sensorTime});
  if (!said) return draft.add("", "", "", write);
  draft.add("frame " + std::to_string(change.index) + " captured",
            formatTime(draft.recording.sensorTime(change.index)), formatTime(change.time), write);
}

void planArrivedTime(const std::string& option, EditRequest::FrameTime change, bool said,
                     EditDraft& draft) {
  if (draft.recording.isRtv()) draft.refuse(option, "an rtv holds no arrival times");
  checkIndex(option, change.index, draft);
  const EditDraft::Write write = [change](auto& modifier) {
    unsigned long value = change.time;
    return modifier.modifyArrivalTime(change.index, value);
  };
  draft.places.overwrite(
      {recordAt(change.index) + offsetof(FrameIndex, arrivedTime), sizeof FrameIndex::arrivedTime});
  if (!said) return draft.add("", "", "", write);
  draft.add("frame " + std::to_string(change.index) + " arrived",
            formatTime(draft.recording.arrivedTime(change.index)), formatTime(change.time), write);
}

void planFrameTimes(const EditRequest& request, EditDraft& draft) {
  const auto checkOnce = [&draft](const std::string& option, const auto& changes) {
    std::set<unsigned int> seen;
    for (const auto& change : changes) {
      if (!seen.insert(change.index).second) {
        draft.refuse(option, "frame " + std::to_string(change.index) + " is there twice");
      }
    }
  };
  checkOnce("--sensor-time", request.sensorTimes);
  checkOnce("--arrived-time", request.arrivedTimes);
  for (const auto& change : request.sensorTimes)
    planSensorTime("--sensor-time", change, true, draft);
  for (const auto& change : request.arrivedTimes)
    planArrivedTime("--arrived-time", change, true, draft);
}

void planAllTimes(const std::string& option, const std::vector<FrameTimes>& times,
                  EditDraft& draft) {
  const unsigned int count = draft.recording.framesCount();
  if (times.size() != count) {
    draft.refuse(option, "it has " + std::to_string(times.size()) + " rows for " +
                             std::to_string(count) + " frames");
  }
  if (count == 0) return;
  const bool rtv = draft.recording.isRtv();
  for (unsigned int i = 0; i < count; ++i) {
    if (rtv && times[i].arrived != times[i].sensor)
      draft.refuse(option, "an rtv holds no arrival times");
    planSensorTime(option, {i, times[i].sensor}, false, draft);
    if (!rtv) planArrivedTime(option, {i, times[i].arrived}, false, draft);
  }
  const auto span = [](std::uint64_t first, std::uint64_t last) {
    return formatTime(first) + " to " + formatTime(last);
  };
  const FrameTimes first = draft.recording.times(0);
  const FrameTimes last = draft.recording.times(count - 1);
  draft.addWords(std::to_string(count) + " frames captured", span(first.sensor, last.sensor),
                 span(times.front().sensor, times.back().sensor));
  if (rtv) return;
  draft.addWords(std::to_string(count) + " frames arrived", span(first.arrived, last.arrived),
                 span(times.front().arrived, times.back().arrived));
}

std::uint64_t shifted(std::uint64_t time, std::int64_t shift, const EditDraft& draft) {
  const std::uint64_t moved = time + static_cast<std::uint64_t>(shift);
  if (shift < 0 ? moved > time : moved < time)
    draft.refuse("--shift-time", "times would leave 64 bits");
  return moved;
}

void planShift(std::int64_t shift, EditDraft& draft) {
  if (draft.recording.isRtv()) {
    // The frames follow, since their times are relative to the start.
    if (shift % static_cast<std::int64_t>(kMillisecond) != 0) {
      draft.refuse("--shift-time", "an rtv holds whole milliseconds");
    }
    return planStartTime(shifted(draft.description.startTime, shift, draft), draft);
  }
  std::vector<FrameTimes> times;
  for (unsigned int i = 0; i < draft.recording.framesCount(); ++i) {
    const FrameTimes before = draft.recording.times(i);
    times.push_back({shifted(before.sensor, shift, draft), shifted(before.arrived, shift, draft)});
  }
  planAllTimes("--shift-time", times, draft);
}

}  // namespace

void planTimes(const EditRequest& request, EditDraft& draft) {
  // The start first: an rtv's frame times are stored relative to it.
  if (request.startTime) planStartTime(*request.startTime, draft);
  if (request.shift) planShift(*request.shift, draft);
  planFrameTimes(request, draft);
  if (request.allTimes) planAllTimes("--times", *request.allTimes, draft);
}

}  // namespace velmar::toolkit
