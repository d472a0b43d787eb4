#include "toolkit/jpeg/DecodingLimits.h"

#include <gtest/gtest.h>

#include "support/Pictures.h"
#include "toolkit/jpeg/JpegInspector.h"

using namespace velmar::toolkit;

namespace {

constexpr std::uint64_t kMuch = UINT64_MAX;

// With its last scan so often.
std::string repeatingScan(const std::string& jpeg, unsigned int times) {
  const std::size_t end = jpeg.size() - 2;
  const std::string scan = jpeg.substr(jpeg.rfind("\xFF\xDA"), end - jpeg.rfind("\xFF\xDA"));
  std::string repeated = jpeg.substr(0, end);
  for (unsigned int i = 1; i < times; ++i) repeated += scan;
  return repeated + "\xFF\xD9";
}

TEST(DecodingLimits, RefuseWhatSmallFilesClaimAndNoWholePicture) {
  const std::string plain = uniformJpeg(4000, 3000, Coding::Optimized);
  const std::string progressive = uniformJpeg(4000, 3000, Coding::Progressive);
  const struct {
    const char* what;
    std::string jpeg;
    std::uint64_t memory;
    std::string words;
  } cases[] = {
      {"one colour", plain, 0, ""},
      {"one colour, progressive", progressive, kMuch, ""},
      {"one colour, arithmetic", uniformJpeg(200, 150, Coding::Arithmetic), kMuch, ""},
      {"one colour, arithmetic, less than a bit for a block",
       uniformJpeg(800, 600, Coding::Arithmetic), kMuch, "far too short for its size"},
      {"a claim", claiming(18000, 18000, plain), kMuch, "far too short for its size"},
      {"a progressive claim", claiming(18000, 18000, progressive), kMuch,
       "far too short for its size"},
      {"just enough memory", progressive, 8 * 4000 * 3000, ""},
      {"too little memory", progressive, 8 * 4000 * 3000 - 1, "too much memory for its size"},
      {"many scans", repeatingScan(progressive, 400), kMuch, "too many scans for its size"},
      {"a few slow scans", uniformJpeg(320, 240, Coding::ArithmeticProgressive), kMuch,
       "too many scans for its size"},
  };
  for (const auto& [what, jpeg, memory, words] : cases) {
    const auto size = JpegInspector().size(jpeg);
    ASSERT_TRUE(size) << what;
    const char* refusal = decodingRefusal(jpeg, *size, memory);
    EXPECT_EQ(refusal == nullptr ? "" : refusal, words) << what;
  }
  EXPECT_EQ(JpegInspector::decodingProblem(repeatingScan(progressive, 400)).text,
            "too many scans for its size");
}

}  // namespace
