#include <gtest/gtest.h>

#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "toolkit/TestJob.h"
#include "toolkit/base/Failure.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/video/RecordVideo.h"
#include "toolkit/video/VideoSource.h"
#include "toolkit/video/VideoWriter.h"

using namespace velmar::toolkit;

namespace {

using Lines = std::vector<std::string>;

// A video of such frames with such times.
std::string videoOf(const std::string& path, const std::vector<std::string>& frames,
                    const std::vector<std::uint64_t>& times) {
  const auto writer = createVideo(
      {path, videoContainer(path), {32, 16}, FrameRate{25, 1}, 1'700'000'000'000'001, "", ""});
  for (std::size_t i = 0; i < frames.size(); ++i) writer->add(frames[i], i, times[i]);
  writer->finish();
  return path;
}

// In all containers but AVI times and start survive to the microsecond.
TEST(Video, ComesBackAsItWasWritten) {
  const TempFolder folder;
  const std::vector<std::uint64_t> times = {0, 1, 70'000, 2'100'000'001};
  std::vector<std::string> frames;
  for (unsigned int i = 0; i < times.size(); ++i) frames.push_back(numberedJpeg(i));
  frames[2] = withoutHuffmanTables(frames[2]);
  for (const char* name : {"a.mkv", "a.mp4", "a.mov", "a.avi"}) {
    SCOPED_TRACE(name);
    TestJob job;
    const std::string path = videoOf(folder / name, frames, times);
    const auto source = openVideo({path, 95, nullptr}, job);
    EXPECT_EQ(source->facts().creationTime, 1'700'000'000'000'001U);
    const bool isAvi = path.ends_with(".avi");
    for (std::size_t i = 0; i < times.size(); ++i) {
      ASSERT_TRUE(source->next());
      EXPECT_EQ(source->time(), static_cast<std::int64_t>(isAvi ? i * 40'000 : times[i]));
      std::string jpeg;
      source->readJpeg(jpeg);
      EXPECT_TRUE(jpeg == frames[i]);
    }
    EXPECT_FALSE(source->next());
    EXPECT_EQ(job.lines, Lines());
  }
}

TEST(Video, GoesWithoutATraceUnlessFinished) {
  const TempFolder folder;
  const std::string path = folder / "a.mp4";
  createVideo({path, VideoContainer::Mp4, {32, 16}, {}, 0, "", ""})->add(numberedJpeg(0), 0, 0);
  EXPECT_TRUE(std::filesystem::is_empty(std::filesystem::path(path).parent_path()));
}

TEST(RecordVideo, NamesWhatItLeavesOut) {
  const TempFolder folder;
  const std::string other = uniformJpeg(8, 8, Coding::Optimized);
  const std::string cut = numberedJpeg(3).substr(0, numberedJpeg(3).size() - 2);
  const std::string path =
      videoOf(folder / "a.mkv", {numberedJpeg(0), other, "no picture", cut}, {0, 10, 20, 30});
  for (const char* output : {"a.img", "a.rtv"}) {
    TestJob job;
    recordVideo({.path = path, .selection = {}, .startTime = {}, .framesPerSecond = {}},
                {folder / output, {}, 10}, nullptr, job);
    EXPECT_EQ(job.lines,
              (Lines{"a.mkv frame 1 is skipped: the picture is 8x8, but the first one is 32x16",
                     "a.mkv frame 2 is skipped: it is not a JPEG picture",
                     "a.mkv frame 3 is recorded, but it has no end marker"}));
    EXPECT_EQ(framesOf(folder / output), (std::vector<std::string>{numberedJpeg(0), cut}));
  }
  EXPECT_EQ(Recording(folder / "a.img").sensorTime(1), 1'700'000'000'000'031U);
}

TEST(RecordVideo, StopsWhenAsked) {
  const TempFolder folder;
  const std::vector<std::string> frames(5, numberedJpeg(0));
  const std::string path = videoOf(folder / "a.mp4", frames, {0, 1, 2, 3, 4});
  TestJob job(2);
  recordVideo({.path = path, .selection = {}, .startTime = 7, .framesPerSecond = 10},
              {folder / "a.img", {}}, nullptr, job);
  EXPECT_EQ(job.lines, (Lines{"a.mp4 stopped by a signal after 2 frames"}));
  EXPECT_EQ(framesOf(folder / "a.img").size(), 2U);
  EXPECT_EQ(Recording(folder / "a.img").sensorTime(1), 100'007U);
}

}  // namespace
