#include "scene/SampleScene.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "toolkit/jpeg/JpegInspector.h"

using namespace velmar::detail;
using namespace velmar::toolkit;

TEST(SampleScene, DrawsEachFrameTheSameAgain) {
  SampleScene scene(161, 95);
  const std::string third = scene.jpeg(3);
  EXPECT_NE(scene.jpeg(4), third);
  EXPECT_EQ(scene.jpeg(3), third);
  EXPECT_EQ(SampleScene(161, 95).jpeg(3), third);
  // As large as a camera's.
  EXPECT_NEAR(SampleScene(1280, 800).jpeg(57).size(), 150000, 50000);
}

TEST(SampleScene, TakesAnySize) {
  const JpegInspector inspector;
  for (const JpegSize size : {JpegSize{1, 1}, {1, 70}, {70, 1}, {17, 9}, {64, 48}}) {
    const std::string jpeg = SampleScene(size.width, size.height, 1).jpeg(4294967295U);
    const auto found = inspector.size(jpeg);
    EXPECT_TRUE(found && *found == size) << toText(size);
  }
  EXPECT_THROW(SampleScene(0, 5), std::invalid_argument);
  EXPECT_THROW(SampleScene(5, 65501), std::invalid_argument);
  EXPECT_THROW(SampleScene(5, 5, 101), std::invalid_argument);
}
