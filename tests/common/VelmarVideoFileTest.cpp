#include "velmar_video/VelmarVideoFile.h"

#include <gtest/gtest.h>

namespace {

TEST(Factories, ChooseByTheTextAfterTheLastDot) {
  const struct {
    std::string path;
    bool known;
  } rows[] = {
      {"/rec/clip.img", true},  {"a.b.img", true},     {"a.rtv.img", true}, {".img", true},
      {"/rec/clip.IMG", false}, {"clip.img ", false},  {"clip", false},     {"img", false},
      {"clip.", false},         {"/rec.1/img", false}, {"", false},         {"clip.avi", false},
  };
  for (const auto& [path, known] : rows) {
    EXPECT_EQ(makeVelmarVideoFileCreater(path) != nullptr, known) << path;
    EXPECT_EQ(makeVelmarVideoFileReader(path) != nullptr, known) << path;
  }
}

TEST(FileName, IsThePartAfterTheLastSlash) {
  EXPECT_EQ(makeVelmarVideoFileReader("/x/y/clip.img")->getFileName(), "clip.img");
  EXPECT_EQ(makeVelmarVideoFileReader("clip.img")->getFileName(), "clip.img");
}

}  // namespace
