#include "toolkit/copying/Scenes.h"

#include <gtest/gtest.h>

#include <tuple>

#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "toolkit/TestJob.h"
#include "toolkit/base/Failure.h"
#include "toolkit/recording/FramePlaces.h"
#include "toolkit/writing/NumberedName.h"
#include "toolkit/writing/RecordingWriter.h"

using namespace velmar::toolkit;

namespace {

using Scenes = std::vector<Scene>;

TEST(NumberedName, CountsInThePatternOrBeforeTheExtension) {
  constexpr std::uint64_t kTime = 1700000000999999;  // 2023-11-14T22:13:20.999999Z
  const std::tuple<const char*, std::size_t, const char*> cases[] = {
      {"scene.rtv", 1, "scene-0001.rtv"},
      {"a.b/x.y.img", 20, "a.b/x.y-0020.img"},
      {"s_%02d_b.img", 7, "s_07_b.img"},
      {"%04d.rtv", 12345, "12345.rtv"},
      {"50%-%03d.rtv", 2, "50%-002.rtv"},
      {"%Y%m%d-%H%M%S_%d_%02d%.img", 3, "20231114-221320_14_03%.img"},
      {"100%.img", 3, "100%-0003.img"},
      {"%d/a.img", 3, "%d/a-0003.img"},
      {".img", 3, "-0003.img"}};
  for (const auto& [path, number, name] : cases) {
    EXPECT_EQ(NumberedName(path).at(number, kTime), name);
  }
  EXPECT_EQ(NumberedName("50%done-%02d.img", false).at(3, kTime), "50%done-%02d-0003.img");
}

class ScenesTest : public testing::Test {
 protected:
  // Ten frames a second, but frame 6 comes 2 s late, and then the clock is set back by an hour.
  ScenesTest() {
    RecordingWriter writer(path_, {}, 10, RecordingWriter::OnFailure::RemoveFrames);
    for (const std::uint64_t tenths : {0, 1, 2, 3, 4, 5, 26, 27, -36000, -35999}) {
      const std::uint64_t time = 1700000000000000 + tenths * 100000;
      writer.add(numberedJpeg(0), {time, time});
    }
    writer.finish();
  }

  const TempFolder folder_;
  const std::string path_ = folder_ / "a.img";
};

TEST_F(ScenesTest, AreRunsThatAreJoinedAndPadded) {
  const Recording recording(path_);
  const std::tuple<std::vector<unsigned int>, SceneForm, Scenes> cases[] = {
      {{0, 1, 3, 9}, {}, {{0, 1}, {3, 3}, {9, 9}}},
      {{0, 2, 5}, {200000, 0}, {{0, 2}, {5, 5}}},
      {{0, 2, 5, 6}, {300000, 0}, {{0, 6}}},
      {{4, 7}, {2300000, 0}, {{4, 7}}},
      {{5, 7}, {2199999, 0}, {{5, 5}, {7, 7}}},
      {{7, 9}, {100000000, 0}, {{7, 7}, {9, 9}}},
      {{0, 3, 9}, {0, 100000}, {{0, 1}, {2, 4}, {8, 9}}},
      {{1, 3}, {0, 100000}, {{0, 4}}},
      {{5}, {0, 2099999}, {{0, 5}}},
      {{6}, {0, 2100000}, {{5, 7}}}};
  for (const auto& [chosen, form, scenes] : cases) {
    EXPECT_EQ(scenesOf(recording, chosen, form), scenes) << testing::PrintToString(chosen);
  }
}

TEST_F(ScenesTest, AreParts) {
  const Recording recording(path_);
  const std::uint64_t frame = numberedJpeg(0).size();
  const FileBytes& file = recording.file();
  const std::uint64_t metaData = file.size() - imgMetaDataOffset(file);
  const auto sizeOf = [&](std::uint64_t frames) {
    return 8 + frames * (28 + frame) + frame + metaData;
  };
  const Scenes all = {{0, 9}};
  const std::tuple<PartForm, Scenes> cases[] = {
      {{300000, {}, {}}, {{0, 2}, {3, 5}, {6, 6}, {7, 9}}},
      {{2600000, {}, {}}, {{0, 5}, {6, 9}}},
      {{{}, {}, 2100000}, {{0, 7}, {8, 9}}},
      {{{}, {}, 100000}, {{0, 5}, {6, 7}, {8, 9}}},
      {{{}, sizeOf(4), {}}, {{0, 3}, {4, 7}, {8, 9}}},
      {{{}, sizeOf(4) - 1, {}}, {{0, 2}, {3, 5}, {6, 8}, {9, 9}}},
      {{{}, sizeOf(10), {}}, all},
      {{{}, 1, {}},
       {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5}, {6, 6}, {7, 7}, {8, 8}, {9, 9}}},
      {{300000, sizeOf(2), 100000}, {{0, 1}, {2, 2}, {3, 4}, {5, 5}, {6, 6}, {7, 7}, {8, 9}}}};
  for (const auto& [form, parts] : cases) EXPECT_EQ(partsOf(recording, form), parts);
}

TEST_F(ScenesTest, AreWrittenOnlyIfAllCanBe) {
  const Recording recording(path_);
  TestJob job;
  std::vector<std::string> made;
  const auto copy = [&](bool force, TestJob& told) {
    copyScenes(recording, {{0, 1}, {3, 3}, {6, 9}}, {folder_ / "s.img", true, force}, told,
               [&](const std::string& path, const Scene& /*scene*/) { made.push_back(path); });
  };
  writeFile(folder_ / "s-0003.img", "precious");
  EXPECT_THROW(copy(false, job), Failure);
  for (const char* name : {"s-0001.img", "s-0001.img.tmp", "s-0003.img.tmp"}) {
    EXPECT_FALSE(exists(folder_ / name)) << name;
  }
  EXPECT_EQ(readFile(folder_ / "s-0003.img"), "precious");
  TestJob stopping(1);
  copy(true, stopping);
  EXPECT_EQ(stopping.lines,
            (std::vector<std::string>{"s-0001.img 1 of 2",
                                      "s.img stopped by a signal after 1 of 3 recordings"}));
  EXPECT_EQ(readFile(folder_ / "s-0003.img"), "precious");
  made.clear();
  copy(true, job);
  EXPECT_EQ(job.lines, std::vector<std::string>());
  EXPECT_EQ(made, (std::vector<std::string>{folder_ / "s-0001.img", folder_ / "s-0002.img",
                                            folder_ / "s-0003.img"}));
  EXPECT_EQ(Recording(made.back()).sensorTime(3), recording.sensorTime(9));
}

}  // namespace
