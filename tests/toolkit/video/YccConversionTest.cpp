#include "toolkit/video/YccConversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace velmar::toolkit;

namespace {

struct Rgb {
  double r, g, b;
};

Rgb toRgb(const YccMeaning& meaning, const std::uint8_t (&ycc)[3]) {
  const double y = meaning.fullRange ? ycc[0] / 255.0 : (ycc[0] - 16) / 219.0;
  const double cb = (ycc[1] - 128) / (meaning.fullRange ? 255.0 : 224.0);
  const double cr = (ycc[2] - 128) / (meaning.fullRange ? 255.0 : 224.0);
  const double r = y + 2 * (1 - meaning.red) * cr;
  const double b = y + 2 * (1 - meaning.blue) * cb;
  return {r, (y - meaning.red * r - meaning.blue * b) / (1 - meaning.red - meaning.blue), b};
}

// The same colour before and after, by the formulas of the standards.
TEST(YccConversion, KeepsTheColour) {
  const YccMeaning meanings[] = {{},
                                 {0.299, 0.114, false},
                                 {0.2126, 0.0722, false},
                                 {0.2126, 0.0722, true},
                                 {0.2627, 0.0593, false}};
  for (const YccMeaning& meaning : meanings) {
    SCOPED_TRACE(std::to_string(meaning.red) + (meaning.fullRange ? " full" : " limited"));
    YccConversion conversion(meaning);
    for (const std::uint8_t y : {60, 126, 180}) {
      for (const std::uint8_t cb : {90, 128, 160}) {
        for (const std::uint8_t cr : {100, 128, 150}) {
          std::uint8_t made[3] = {};
          conversion.chroma(&cb, &cr, 1, &made[1], &made[2]);
          conversion.setChroma(&cb, &cr, 0, 1);
          conversion.luma(&y, 1, &made[0]);
          const Rgb want = toRgb(meaning, {y, cb, cr});
          const Rgb got = toRgb({}, made);
          // Half a step of each of the three.
          EXPECT_NEAR(got.r, want.r, 1.3 / 255);
          EXPECT_NEAR(got.g, want.g, 1.3 / 255);
          EXPECT_NEAR(got.b, want.b, 1.5 / 255);
        }
      }
    }
  }
}

TEST(YccConversion, EndsWhereTheRangeEnds) {
  YccConversion conversion({0.299, 0.114, false});
  const std::uint8_t luma[] = {0, 16, 235, 255};
  std::uint8_t made[4] = {};
  conversion.setChroma(nullptr, nullptr, 0, 4);
  conversion.luma(luma, 4, made);
  EXPECT_TRUE(std::ranges::equal(made, std::vector<int>{0, 0, 255, 255}));
}

// Each sample of chroma counts for its pixels.
TEST(YccConversion, SpreadsChroma) {
  const std::uint8_t cb[] = {128, 128};
  const std::uint8_t cr[] = {128, 228};
  const std::uint8_t y[] = {100, 100, 100};
  std::uint8_t made[3] = {};
  YccConversion conversion({0.2126, 0.0722, true});
  conversion.setChroma(cb, cr, 1, 3);
  conversion.luma(y, 3, made);
  EXPECT_EQ(made[0], 100);
  EXPECT_EQ(made[1], 100);
  // 100 units of Cr: R' + 157.5, G' - 46.8; of these 0.299 and 0.587 in Y'.
  EXPECT_EQ(made[2], 120);
}

}  // namespace
