#include "toolkit/base/InOrder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

using velmar::toolkit::inOrder;

namespace {

TEST(InOrder, GivesResultsInOrderAndEndsEarly) {
  const auto always = [] { return true; };
  for (const unsigned int threads : {1U, 5U}) {
    std::vector<std::size_t> taken;
    std::atomic<std::size_t> begun = 0;
    const auto work = [&](std::size_t i) {
      ++begun;
      // The first of each few takes longest.
      std::this_thread::sleep_for(std::chrono::microseconds(i % 5 == 0 ? 500 : 0));
      if (i == 90) throw std::runtime_error("90");
      return i;
    };
    const auto take = [&](std::size_t at, std::size_t& result) {
      EXPECT_EQ(at, result);
      taken.push_back(result);
      return at != 40;
    };
    inOrder<std::size_t>(100, threads, work, take, always);
    EXPECT_EQ(taken.size(), 41U);
    EXPECT_LE(begun, 41 + 4 * threads);
    const auto takeAll = [&](std::size_t, std::size_t&) { return true; };
    EXPECT_THROW(inOrder<std::size_t>(100, threads, work, takeAll, always), std::runtime_error);
    inOrder<std::size_t>(90, threads, work, takeAll, [] { return false; });
    inOrder<std::size_t>(0, threads, work, takeAll, always);
  }
}

}  // namespace
