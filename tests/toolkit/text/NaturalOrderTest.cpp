#include "toolkit/text/NaturalOrder.h"

#include <gtest/gtest.h>

#include <string>

using namespace velmar::toolkit;

TEST(NaturalOrder, CountsNumbersInNames) {
  // Each pair in order; the opposite must not hold.
  const std::string_view pairs[][2] = {{"2.jpg", "10.jpg"},
                                       {"frame9", "frame10"},
                                       {"a2b9", "a2b10"},
                                       {"a2b9", "a10b1"},
                                       {"a", "a1"},
                                       {"1", "a"},
                                       {"07", "7"},
                                       {"7", "08"},
                                       {"x01y2", "x1y10"},
                                       {"a/2/1.jpg", "a/10/0"},
                                       {"", "0"},
                                       {"B", "a"},
                                       {"99999999999999999998", "99999999999999999999"},
                                       {"a", "\xC3\xA4"}};
  for (const auto& [first, second] : pairs) {
    EXPECT_TRUE(naturalLess(first, second)) << first << " < " << second;
    EXPECT_FALSE(naturalLess(second, first)) << first << " < " << second;
    EXPECT_FALSE(naturalLess(first, first)) << first;
  }
}
