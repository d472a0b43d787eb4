#include "toolkit/pictures/Extraction.h"

#include <gtest/gtest.h>

#include <ctime>

#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "toolkit/TestJob.h"
#include "toolkit/base/Failure.h"
#include "toolkit/copying/CopyFrames.h"
#include "toolkit/jpeg/JpegInspector.h"

using namespace velmar::toolkit;

namespace {

using Kind = PictureForm::Kind;
using Lines = std::vector<std::string>;
using namespace std::string_literals;

std::vector<std::string> extract(const std::string& file, const std::string& output, Job& job,
                                 const PictureForm& form = {}, unsigned int threads = 1) {
  Extraction extraction(file, allFrames, form, {output, false, false});
  extraction.run(threads, job);
  return extraction.outputs();
}

TEST(Extraction, MakesFilesOfEachForm) {
  const TempFolder folder;
  recordFrames(folder / "a.img", {numberedJpeg(7)});
  const auto made = [&](const PictureForm& form, const std::string& name,
                        const std::string& start) {
    TestJob job;
    const auto written = extract(folder / "a.img", folder / "deep/er", job, form);
    EXPECT_EQ(written, Lines{folder / "deep/er/" + name});
    EXPECT_EQ(job.lines, Lines());
    const std::string file = readFile(written.at(0));
    EXPECT_TRUE(file.starts_with(start)) << name;
    return file.substr(start.size());
  };
  EXPECT_EQ(made({}, "frame_000000.jpg", ""), numberedJpeg(7));
  const std::string rgb = made({{}, Kind::Pnm}, "frame_000000.ppm", "P6\n32 16\n255\n");
  std::string bgr =
      made({{VELMAR_FORMAT_BGR_E}, Kind::Pnm}, "frame_000000.ppm", "P6\n32 16\n255\n");
  EXPECT_NE(bgr, rgb);
  for (std::size_t i = 0; i + 2 < bgr.size(); i += 3) std::swap(bgr[i], bgr[i + 2]);
  EXPECT_EQ(bgr, rgb);
  const auto grey =
      made({{VELMAR_FORMAT_GRAY_E}, Kind::Pnm}, "frame_000000.pgm", "P5\n32 16\n255\n");
  EXPECT_EQ(grey.size(), 32U * 16);
  const auto cut = made({{VELMAR_FORMAT_RGB_E, SCALE_FACTOR_1_2_E, 5, 2}, Kind::Pnm},
                        "frame_000000.ppm", "P6\n16 4\n255\n");
  EXPECT_EQ(cut.size(), 3U * 16 * 4);
  const auto png = [&](int level) {
    return made({{}, Kind::Png, 0, level}, "frame_000000.png",
                "\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\x20\0\0\0\x10\x08\x02"s);
  };
  EXPECT_LT(png(12).size(), png(1).size());
  const std::string small =
      made({{VELMAR_FORMAT_RGB_E, SCALE_FACTOR_1_2_E}, Kind::Jpeg, 90}, "frame_000000.jpg", "");
  const auto size = JpegInspector().size(small);
  EXPECT_TRUE(size && size->width == 16 && size->height == 8);
}

TEST(Extraction, ThreadsMakeTheSameAndNameWhatIsMissing) {
  const TempFolder folder;
  std::vector<std::string> frames;
  for (unsigned int i = 0; i < 60; ++i) frames.push_back(numberedJpeg(i, i % 5 * 300));
  frames[3] = frames[4] = frames[41] = "no picture";
  recordFrames(folder / "a.img", frames);
  for (const unsigned int threads : {1U, 7U, 100U}) {
    SCOPED_TRACE(threads);
    TestJob job;
    const auto written = extract(folder / "a.img", folder / "out", job, {}, threads);
    for (std::size_t i = 0; i < frames.size(); ++i) {
      const bool isPicture = frames[i] != "no picture";
      EXPECT_EQ(exists(written[i]), isPicture) << i;
      EXPECT_TRUE(!isPicture || readFile(written[i]) == frames[i]) << i;
    }
    const std::string flaw =
        "skipped: its bytes are no JPEG picture (VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E)";
    EXPECT_EQ(job.lines, (Lines{"a.img frames 3 to 4 are " + flaw, "a.img frame 41 is " + flaw}));
    std::filesystem::remove_all(folder / "out");
  }
}

TEST(Extraction, TakesNoTimeForLargePicturesThatAreNone) {
  const TempFolder folder;
  recordFrames(folder / "a.img", std::vector(1000, "\xFF\xD8" + std::string(100, 'x')),
               {5000, 5000});
  TestJob job;
  const std::clock_t begin = std::clock();
  EXPECT_THROW(extract(folder / "a.img", folder / "out", job, {{}, Kind::Pnm}), Failure);
  EXPECT_LT(std::clock() - begin, 2 * CLOCKS_PER_SEC);
}

TEST(Extraction, KeepsWhatIsWholeIfItFailsAndGoesOnFromThere) {
  const TempFolder folder;
  TestJob job;
  recordFrames(folder / "bad.img", {std::string(100, 'x')});
  EXPECT_THROW(extract(folder / "bad.img", folder / "none/at/all", job), Failure);
  EXPECT_FALSE(exists(folder / "none"));

  recordFrames(folder / "good.img", std::vector(20, numberedJpeg(1)));
  const std::string blocked = folder / "out/frame_000011.jpg";
  std::filesystem::create_directories(blocked + "/taken");
  EXPECT_THROW(extract(folder / "good.img", folder / "out", job), Failure);
  EXPECT_TRUE(exists(folder / "out/frame_000010.jpg"));
  std::filesystem::remove_all(blocked);
  writeFile(folder / "out/frame_000003.jpg", "of an earlier run");
  Extraction rest(folder / "good.img", allFrames, {}, {folder / "out", true, true});
  rest.run(2, job);
  EXPECT_EQ(readFile(folder / "out/frame_000003.jpg"), "of an earlier run");
  EXPECT_EQ(readFile(blocked), numberedJpeg(1));
  const std::string table = readFile(folder / "out/frames.csv");
  EXPECT_TRUE(table.starts_with("file,index,sensor_time_us,arrived_time_us,size"));
  EXPECT_TRUE(table.find("\nframe_000019.jpg,19,1700000000627000,") != table.npos) << table;
  EXPECT_EQ(std::count(table.begin(), table.end(), '\n'), 21);
}

TEST(Extraction, StopsWhenItIsTo) {
  const TempFolder folder;
  recordFrames(folder / "a.img", std::vector(20, numberedJpeg(1)));
  TestJob job(3);
  const auto written = extract(folder / "a.img", folder / "out", job);
  EXPECT_EQ(job.lines, Lines{"a.img 3 of 20"});
  EXPECT_TRUE(exists(written[2]) && !exists(written[3]));
}

}  // namespace
