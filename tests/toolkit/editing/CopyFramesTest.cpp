#include "toolkit/editing/CopyFrames.h"

#include <gtest/gtest.h>

#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "toolkit/TestJob.h"

using namespace velmar::toolkit;

namespace {

using Lines = std::vector<std::string>;

// The frames of a recording as they are stored.
std::vector<std::string> framesOf(const std::string& path) {
  const Recording recording(path);
  std::vector<std::string> frames(recording.framesCount());
  for (unsigned int i = 0; i < frames.size(); ++i) recording.reader().getRawImage(i, frames[i]);
  return frames;
}

// Frames 1 and 2 are no pictures, frames 3 and 5 are said to be larger than the file.
void recordDamaged(const std::string& path) {
  recordFrames(path, {numberedJpeg(0), "no", "picture", numberedJpeg(3), numberedJpeg(4), "lost"});
  std::string bytes = readFile(path);
  for (const std::size_t frame : {3, 5}) {
    bytes.replace(8 + 28 * frame + 24, 4, bigEndianBytes(0xFFFFFF, 4));
  }
  writeFile(path, bytes);
}

TEST(CopyFrames, KeepsAllBytesThatCanBeHadAndNamesTheRest) {
  const TempFolder folder;
  recordDamaged(folder / "one.img");
  recordFrames(folder / "two.img", {numberedJpeg(6), "x", numberedJpeg(8)});
  const Recording one(folder / "one.img");
  const Recording two(folder / "two.img");
  TestJob job;
  copyFrames({{&one, allFrames(one)}, {&two, {2, 1}}}, folder / "copy.img", one.description(), job);
  EXPECT_EQ(framesOf(folder / "copy.img"),
            (Lines{numberedJpeg(0), "no", "picture", numberedJpeg(4), numberedJpeg(8), "x"}));
  EXPECT_EQ(job.lines, (Lines{"one.img frames 1 to 2 are copied unchanged: its bytes are no JPEG "
                              "picture",
                              "one.img frame 3 is left out: its bytes reach past the end of the "
                              "file",
                              "one.img frame 5 is left out: its bytes reach past the end of the "
                              "file",
                              "two.img frame 1 is copied unchanged: its bytes are no JPEG "
                              "picture"}));
  EXPECT_EQ(Recording(folder / "copy.img").sensorTime(4), 2U);
}

TEST(CopyFrames, FinishesWhatIsThereWhenItIsToStop) {
  const TempFolder folder;
  recordDamaged(folder / "one.img");
  const Recording one(folder / "one.img");
  TestJob job(2);
  copyFrames({{&one, allFrames(one)}, {&one, {0}}}, folder / "copy.img", one.description(), job);
  EXPECT_EQ(framesOf(folder / "copy.img"), (Lines{numberedJpeg(0), "no"}));
  EXPECT_EQ(job.lines, (Lines{"one.img frame 1 is copied unchanged: its bytes are no JPEG picture",
                              "copy.img 2 of 7"}));
}

TEST(CopyFrames, LeavesNothingBehindIfNoFrameCanBeHad) {
  const TempFolder folder;
  recordDamaged(folder / "one.img");
  const Recording one(folder / "one.img");
  TestJob job;
  EXPECT_THROW(copyFrames({{&one, {3, 5}}}, folder / "copy.img", one.description(), job), Failure);
  EXPECT_FALSE(exists(folder / "copy.img") || exists(folder / "copy.img.tmp"));
}

}  // namespace
