#include <gtest/gtest.h>

#include <tuple>

#include "support/TestSupport.h"
#include "toolkit/base/Failure.h"
#include "toolkit/frames/FrameSelection.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/writing/RecordingWriter.h"

using namespace velmar::toolkit;

namespace {

using Frames = std::vector<unsigned int>;

// A recording with frames captured at the given times.
class TimedRecording {
 public:
  explicit TimedRecording(const std::vector<std::uint64_t>& times) {
    RecordingWriter writer(path_, {}, static_cast<unsigned int>(times.size()),
                           RecordingWriter::OnFailure::RemoveFrames);
    for (const std::uint64_t time : times) writer.add(std::string(100, 'x'), {time, time});
    writer.finish();
  }
  Frames select(const FrameSelection& selection) { return selection.frames(Recording(path_)); }

 private:
  const TempFolder folder_;
  const std::string path_ = folder_ / "a.img";
};

TEST(FrameSelection, SelectsByCaptureTimeExactly) {
  // The rate varies, one frame is late, two share a time.
  TimedRecording recording({1000000, 1010000, 2500000, 2400000, 2500000, 9000000});
  const std::pair<const char*, Frames> cases[] = {
      {"1000000:1010000", {0}},
      {"1000000:1010001", {0, 1}},
      {"2400000:2500000", {3}},
      {"2500000:9000000", {2, 4}},
      {"+1.4s:+8s", {2, 3, 4}},
      {"+8s:+8.000001s", {5}},
      {"0:+0.01s", {0}},
      {"1970-01-01T00:00:02.4Z:1970-01-01T00:00:02.5Z", {3}},
      {"1970-01-01T01:00:09+01:00:+9s", {5}},
      {"+0s:1970-01-01T00:00:01.01Z", {0}},
      {"3000000:8000000", {}},
      {"1970-01-01:1970-01-01T00:00:01.01", {0}},
      {"+1500ms:+0.1min", {2, 4}},
      {"+9s:1000000", {}}};
  for (const auto& [text, frames] : cases) {
    SCOPED_TRACE(text);
    FrameSelection selection;
    selection.setTime(text);
    if (frames.empty()) {
      EXPECT_THROW(recording.select(selection), Failure);
    } else {
      EXPECT_EQ(recording.select(selection), frames);
    }
  }
}

TEST(FrameSelection, SelectsByNumber) {
  TimedRecording recording({1, 2, 3});
  EXPECT_EQ(recording.select(FrameSelection()), (Frames{0, 1, 2}));
  FrameSelection selection;
  selection.setRange("1:3");
  EXPECT_EQ(recording.select(selection), (Frames{1, 2}));
  for (const char* beyond : {"0:4", "3:4", "0:4294967297"}) {
    selection.setRange(beyond);
    EXPECT_THROW(recording.select(selection), Failure) << beyond;
  }
}

// The step counts from the first frame that the range or the time selects.
TEST(FrameSelection, SelectsEverySoManiethOfTheOthers) {
  TimedRecording recording({0, 1, 2, 3, 4, 5, 6, 7});
  FrameSelection selection;
  selection.setEvery("3");
  EXPECT_EQ(recording.select(selection), (Frames{0, 3, 6}));
  selection.setTime("2:7");
  EXPECT_EQ(recording.select(selection), (Frames{2, 5}));
  selection = {};
  selection.setRange("1:8");
  selection.setEvery("7");
  EXPECT_EQ(recording.select(selection), (Frames{1}));
}

// Intervals are counted from the first selected frame: the gap costs one frame and moves no other.
TEST(FrameSelection, SelectsOneFrameInEverySoLongATime) {
  TimedRecording recording(
      {0, 400000, 800000, 1200000, 1600000, 2100000, 4900000, 5000000, 900000});
  const std::tuple<const char*, const char*, Frames> cases[] = {
      {"1s", "", {0, 3, 5, 6, 7, 8}},
      {"1000ms", "+0.4s:+1d", {1, 4, 6, 8}},
      {"1h", "", {0}},
      {"1us", "+4s:+5s", {6}}};
  for (const auto& [every, time, frames] : cases) {
    FrameSelection selection;
    selection.setEvery(every);
    if (*time != 0) selection.setTime(time);
    EXPECT_EQ(recording.select(selection), frames) << every;
  }
}

TEST(FrameSelection, SaysWhatABareNumberMeans) {
  TimedRecording recording({1700000000000000, 1700000001000000});
  for (const auto& [time, isSaid] : {std::pair("10:20", true), {"+10s:+20s", false}}) {
    FrameSelection selection;
    selection.setTime(time);
    try {
      recording.select(selection);
      ADD_FAILURE() << time;
    } catch (const Failure& failure) {
      const bool says = failure.words().find("+10s counts from frame 0") != std::string::npos;
      EXPECT_EQ(says, isSaid) << failure.what();
    }
  }
}

TEST(FrameSelection, RefusesTextsThatSelectNothing) {
  for (const char* text :
       {"", ":", "1", "1:", ":1", "2:1", "1:1", "-1:2", "a:b", "1:2:3", "1 : 2"}) {
    EXPECT_THROW(FrameSelection().setRange(text), UsageError) << text;
  }
  for (const char* text : {"", ":", "5", "5:", "6:5", "5:5", "+2s:+1s", "2023-11-14T22:13:20Z",
                           "1:2:3", "1s:2s", "-1s:+1s", "2023-11-14T22:13:20", "2023-11-14"}) {
    EXPECT_THROW(FrameSelection().setTime(text), UsageError) << text;
  }
  for (const char* text : {"", "0", "1000001", "-1", "1.5", "0s", "-1s", "s"}) {
    EXPECT_THROW(FrameSelection().setEvery(text), UsageError) << text;
  }
}

}  // namespace
