#include "toolkit/copying/CopyFrames.h"

#include <gtest/gtest.h>

#include <optional>
#include <tuple>

#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "toolkit/TestJob.h"
#include "toolkit/jpeg/JpegMetaData.h"
#include "toolkit/rescue/Leftover.h"

using namespace velmar::toolkit;

namespace {

using Lines = std::vector<std::string>;

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
  EXPECT_EQ(Recording(folder / "copy.img").sensorTime(4), 1'700'000'000'066'000U);
}

TEST(CopyFrames, TakesBytesOnceThatFramesShare) {
  const TempFolder folder;
  recordFrames(folder / "a.img", {numberedJpeg(0), numberedJpeg(1), numberedJpeg(2, 600)});
  const std::string whole = readFile(folder / "a.img");
  const auto patch = [&](std::size_t frame, std::size_t field, const std::string& value) {
    std::string bytes = whole;
    writeFile(folder / "a.img", bytes.replace(8 + 28 * frame + field, value.size(), value));
  };
  const std::string flaw = "its bytes are those of other frames";
  TestJob job;
  const auto copy = [&] {
    const Recording a(folder / "a.img");
    copyFrames({{&a, allFrames(a)}}, folder / "copy.img", a.description(), job);
    return framesOf(folder / "copy.img");
  };
  // Frame 1 begins where frame 2 does.
  patch(1, 16, whole.substr(8 + 28 * 2 + 16, 12));
  EXPECT_EQ(copy(), (Lines{numberedJpeg(0), numberedJpeg(2, 600)}));
  EXPECT_EQ(job.lines, Lines{"a.img frame 2 is left out: " + flaw});
  EXPECT_EQ(findImgLeftover(FileBytes(folder / "a.img"), {}).frames.size(), 2U);
  // Frame 1 has a wrong size: the frame that it reaches over is whole all the same.
  job.lines.clear();
  patch(1, 24, bigEndianBytes(numberedJpeg(1).size() + 99, 4));
  EXPECT_EQ(copy().at(2), numberedJpeg(2, 600));
  EXPECT_EQ(job.lines, Lines());
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

TEST(CopyFrames, StripsWhatTellsAboutPicturesAndNothingElse) {
  const std::string jpeg = withoutMetaData(numberedJpeg(0)).value();
  EXPECT_LT(jpeg.size(), numberedJpeg(0).size());  // it has its number in a comment
  const std::string rest = jpeg.substr(2);
  const auto segment = [](unsigned char marker, const std::string& bytes) {
    return std::string{'\xFF', static_cast<char>(marker)} + bigEndianBytes(bytes.size() + 2, 2) +
           bytes;
  };
  const std::string start = jpeg.substr(0, 2);
  const std::string icc = segment(0xE2, "ICC_PROFILE");
  const std::string exif = segment(0xE1, std::string("Exif\0\0\xFF\xDA", 8));
  const std::string end = "\xFF\xD9";
  const std::string scans = rest.substr(0, rest.size() - end.size());
  const std::tuple<std::string, std::optional<std::string>> cases[] = {
      {jpeg, jpeg},
      {start + exif + icc + segment(0xED, "iptc") + "\xFF\xFF" + segment(0xFE, "") + rest,
       start + icc + rest},
      {start + "?" + exif + rest, jpeg},
      {start + scans + exif + end, jpeg},
      {jpeg + start + exif + rest, jpeg},
      {start + exif + scans, start + scans},
      {start + exif.substr(0, 9), std::nullopt},
      {"no" + exif + rest, std::nullopt},
      {start, std::nullopt},
      {start + end, std::nullopt}};
  for (const auto& [given, stripped] : cases) EXPECT_EQ(withoutMetaData(given), stripped);

  const TempFolder folder;
  recordFrames(folder / "a.img", {numberedJpeg(0), "no picture"});
  const Recording a(folder / "a.img");
  TestJob job;
  copyFrames({{&a, {0}}}, folder / "copy.img", a.description(), job, Strip::named("exif"));
  EXPECT_EQ(framesOf(folder / "copy.img"), Lines{jpeg});
  EXPECT_EQ(job.lines, Lines());
  copyFrames({{&a, {0, 1}}}, folder / "copy.img", a.description(), job, Strip::named("exif"));
  EXPECT_EQ(job.lines.back(), "a.img frame 1 is copied with what its JPEG may tell: it is damaged");
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
