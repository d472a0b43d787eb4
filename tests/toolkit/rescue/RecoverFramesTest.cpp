#include "toolkit/rescue/RecoverFrames.h"

#include <gtest/gtest.h>

#include "support/Pictures.h"
#include "support/TestSupport.h"

using namespace velmar::toolkit;

namespace {

// Zeros that decode without a warning, here those of a comment or of one shade.
TEST(RecoverFrames, TellsMissingPagesFromZerosOfThePicture) {
  const std::string commented = numberedJpeg(1, 20000);
  const std::string grey = uniformJpeg(4000, 4000, Coding::Optimized);
  ASSERT_NE(grey.find(std::string(2 * kPage, '\0')), grey.npos);
  struct {
    const std::string& jpeg;
    std::size_t from, size;  // zeros in the file
    bool isWhole;
  } const cases[] = {
      {commented, 2 * kPage, kPage, false},     {commented, 2 * kPage - 3, kPage + 6, false},
      {commented, 2 * kPage, 2 * kPage, false}, {commented, 2 * kPage - 30, kPage + 30, true},
      {commented, 2 * kPage, kPage + 30, true}, {commented, 2 * kPage - 1, kPage - 1, true},
      {commented, kPage + 50, 2 * kPage, true}, {grey, 0, 0, true},
  };
  constexpr std::size_t kOffset = 3000;
  for (const auto& each : cases) {
    SCOPED_TRACE(std::to_string(each.from) + ", " + std::to_string(each.size));
    const TempFolder folder;
    std::string bytes = std::string(kOffset, '.') + each.jpeg;
    writeFile(folder / "a", bytes.replace(each.from, each.size, each.size, '\0'));
    const FileBytes file(folder / "a");
    Leftover leftover;
    leftover.frames.resize(1);
    leftover.frames[0].offset = kOffset;
    leftover.frames[0].size = each.jpeg.size();
    EXPECT_EQ(firstSize({file, leftover, false}).has_value(), each.isWhole);
  }
}

}  // namespace
