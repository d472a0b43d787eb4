#include "velmar_video/VelmarVideoFile.h"

#include <gtest/gtest.h>

#include "container/rtv/RtvContainerReader.h"
#include "velmar_video/rtv/RtvContainerModifier.h"

namespace {

TEST(Factories, ChooseByTheTextAfterTheLastDot) {
  const std::pair<const char*, bool> rows[] = {
      {"/rec/clip.img", true},  {"a.b.img", true},     {"a.rtv.img", true}, {".img", true},
      {"/rec/clip.IMG", false}, {"clip.img ", false},  {"clip", false},     {"img", false},
      {"clip.", false},         {"/rec.1/img", false}, {"", false},         {"clip.avi", false},
  };
  for (const auto& [path, known] : rows) {
    EXPECT_EQ(makeVelmarVideoFileCreater(path) != nullptr, known) << path;
    EXPECT_EQ(makeVelmarVideoFileReader(path) != nullptr, known) << path;
    EXPECT_EQ(makeVelmarVideoFileModifier(path) != nullptr, known) << path;
  }
  // A creater for "rtv" makes a file at once and is tested elsewhere.
  const auto reader = makeVelmarVideoFileReader("a.img.rtv");
  const auto modifier = makeVelmarVideoFileModifier("a.rtv");
  EXPECT_NE(dynamic_cast<RtvContainerReader*>(reader.get()), nullptr);
  EXPECT_NE(dynamic_cast<RtvContainerModifier*>(modifier.get()), nullptr);
  EXPECT_EQ(makeVelmarVideoFileReader("a.RTV"), nullptr);
}

TEST(FileName, IsThePartAfterTheLastSlash) {
  EXPECT_EQ(makeVelmarVideoFileReader("/x/y/clip.img")->getFileName(), "clip.img");
  EXPECT_EQ(makeVelmarVideoFileReader("clip.img")->getFileName(), "clip.img");
}

}  // namespace
