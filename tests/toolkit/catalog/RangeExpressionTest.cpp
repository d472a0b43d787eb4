#include "toolkit/catalog/RangeExpression.h"

#include <gtest/gtest.h>

using namespace velmar::toolkit;

namespace {

// x is from 2 to 4, y from -1 to 1 or absent, z absent; the place is at the meridian of 180
// degrees.
bool mayHold(const std::string& text) {
  RangeExpression expression(text);
  KnownFrames known;
  known.file = "/day/a.rtv";
  known.device = "0aff";
  known.place = PlaceBox{179.99, 180, -1, 1};
  for (const FrameFact& fact : expression.facts()) {
    known.facts.push_back(fact.name == "x_m"   ? ValueRange::between(2, 4, false)
                          : fact.name == "y_m" ? ValueRange::between(-1, 1, true)
                                               : ValueRange::absent());
  }
  return expression.mayHold(known);
}

TEST(RangeExpression, KnowsWhatCannotBe) {
  const char* const may[] = {"x_m < 2.5",
                             "x_m <= 2",
                             "x_m > 3.9",
                             "x_m >= 4",
                             "x_m == 3",
                             "x_m != 3",
                             "y_m",
                             "!y_m",
                             "absent(y_m)",
                             "!absent(y_m)",
                             "absent(z_m)",
                             "x_m + y_m == 5",
                             "x_m - y_m == 1",
                             "x_m * y_m == -4",
                             "y_m / x_m == 0.5",
                             "x_m / y_m > 1000",
                             "x_m ^ 2 == 16",
                             "y_m ^ 2 == 0",
                             "2 ^ x_m == 16",
                             "-x_m == -3",
                             "+x_m == 3",
                             "abs(y_m) == 0",
                             "sqrt(x_m) == 99",
                             "x_m > 3 && y_m > 0",
                             "x_m > 9 || y_m > 0",
                             "z_m || x_m",
                             "x_m > 9 ? 0 : 1",
                             "near(0, -179.99, 3000)",
                             "within(179, -1, -179, 1)",
                             "file(\"*.rtv\")",
                             "device(\"0a*\")",
                             "absent(near(0, 0, z_m))",
                             "near(0, y_m, 1)",
                             "1/0"};
  for (const char* text : may) EXPECT_TRUE(mayHold(text)) << text;
  const char* const mayNot[] = {"x_m < 2",
                                "x_m <= 1.9",
                                "x_m > 4",
                                "x_m >= 4.1",
                                "x_m == 5",
                                "y_m != 0 && 0",
                                "z_m",
                                "!z_m",
                                "!x_m",
                                "absent(x_m)",
                                "!absent(z_m)",
                                "x_m + y_m == 5.1",
                                "x_m - y_m == 0.9",
                                "x_m * y_m == -4.1",
                                "y_m / x_m == 0.6",
                                "x_m ^ 2 == 17",
                                "x_m ^ 2 < 4 - 0.01",
                                "-x_m == 3",
                                "abs(y_m) < 0",
                                "abs(-x_m) < 2",
                                "x_m > 3 && y_m > 1",
                                "x_m > 9 || y_m > 1",
                                "z_m || y_m > 1",
                                "z_m && x_m",
                                "near(0, -179.9, 1000)",
                                "within(170, -1, 179, 1)",
                                "file(\"*.img\")",
                                "device(\"0b*\")",
                                "0/0",
                                "z_m < 1 || z_m >= 1"};
  for (const char* text : mayNot) EXPECT_FALSE(mayHold(text)) << text;
}

TEST(RangeExpression, KnowsWhereItMayHold) {
  const std::pair<const char*, int> cases[] = {
      {"x_m > 3", -1},
      {"near(48, 11, 100)", 1},
      {"near(48, 11, 100) && x_m > 3", 1},
      {"near(48, 11, 100) || x_m > 3", -1},
      {"near(48, 11, 100) || x_m > 3 && near(50, 11, 100)", 2},
      {"near(48, 11, 100) && near(50, 11, 100)", 0},
      {"near(0, 180, 100)", 2},
      {"!near(48, 11, 100)", -1},
      {"near(48, 11, 100) ? 1 : 0", -1},
      {"near(48, 11, x_m)", -1},
      {"0 && near(48, 11, 100)", 0},
  };
  for (const auto& [text, boxes] : cases) {
    const PlaceBoxes places = RangeExpression(text).places();
    EXPECT_EQ(places ? static_cast<int>(places->size()) : -1, boxes) << text;
  }
}

}  // namespace
