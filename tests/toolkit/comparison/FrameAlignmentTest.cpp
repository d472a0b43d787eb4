#include "toolkit/comparison/FrameAlignment.h"

#include <gtest/gtest.h>

#include <string>

using namespace velmar::toolkit;

namespace {

// Frames whose pictures are letters, captured one after the other from `start` on.
FrameKeys frames(const std::string& pictures, std::uint64_t start = 0) {
  FrameKeys keys;
  for (const char picture : pictures) {
    keys.pictures.push_back(static_cast<std::uint64_t>(picture));
    keys.times.push_back(start++);
  }
  return keys;
}

// "0-2=1-3 3-4= =0-5"
std::string textOf(const std::vector<FramePairs>& pairs) {
  const auto text = [](const FrameSpan& span) {
    return span.count == 0 ? "" : std::to_string(span.first) + "-" + std::to_string(span.end() - 1);
  };
  std::string all;
  for (const FramePairs& each : pairs) {
    all += (all.empty() ? "" : " ") + text(each.a) + "=" + text(each.b);
  }
  return all;
}

TEST(FrameAlignment, PairsFramesInOrder) {
  const struct {
    const char* what;
    FrameKeys a, b;
    const char* pairs;
  } cases[] = {
      {"nothing", frames(""), frames(""), ""},
      {"one without frames", frames("abc"), frames(""), "0-2="},
      {"a copy", frames("abcabc"), frames("abcabc"), "0-5=0-5"},
      {"a copy with another clock", frames("aabcc"), frames("aabcc", 900), "0-4=0-4"},
      {"a frame left out", frames("abcdef"), frames("abdef", 900), "0-1=0-1 2-2= 3-5=2-4"},
      {"a frame more", frames("abdef"), frames("abcdef", 900), "0-1=0-1 =2-2 2-4=3-5"},
      {"a scene", frames("abcdefgh"), frames("cdef", 2), "0-1= 2-5=0-3 6-7="},
      {"two scenes", frames("abcdefgh"), frames("bcfg", 900), "0-0= 1-2=0-1 3-4= 5-6=2-3 7-7="},
      {"the other way round", frames("abcd"), frames("cdab", 900), "0-1= 2-3=0-1 =2-3"},
      {"other pictures", frames("abcdef"), frames("abxyef"), "0-5=0-5"},
      {"other pictures of a scene", frames("abcdef"), frames("xyz", 2), "0-1= 2-4=0-2 5-5="},
      {"one other, one left out", frames("abcdef"), frames("abxef"), "0-2=0-2 3-3= 4-5=3-4"},
      {"another recording", frames("abcd"), frames("vwxyz", 900), "0-3= =0-4"},
      {"a scene of a camera that sees no change", frames("aaaaaa"), frames("aaa", 2),
       "0-1= 2-4=0-2 5-5="},
      {"the same with another clock", frames("aaaaaa"), frames("aaa", 900), "0-2=0-2 3-5="},
      {"repeated pictures around others", frames("aabaacaa"), frames("abaca", 900),
       "0-0=0-0 1-1= 2-3=1-2 4-4= 5-6=3-4 7-7="},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(textOf(alignFrames(one.a, one.b)), one.pairs) << one.what;
  }
}

// A quadratic search would take minutes.
TEST(FrameAlignment, TakesNoLongTimeForManyFrames) {
  constexpr unsigned int kFrames = 300000;
  FrameKeys a, b;
  for (std::uint64_t i = 0; i < kFrames; ++i) {
    a.pictures.push_back(i % 3 == 0 ? i : i % 7);
    a.times.push_back(i);
    b.pictures.push_back(i % 2 == 0 ? kFrames - i : i % 7);
    b.times.push_back(kFrames + i);
  }
  unsigned int inA = 0, inB = 0;
  for (const FramePairs& pairs : alignFrames(a, b)) {
    EXPECT_TRUE(pairs.a.count == 0 || pairs.a.first == inA);
    EXPECT_TRUE(pairs.b.count == 0 || pairs.b.first == inB);
    inA += pairs.a.count;
    inB += pairs.b.count;
  }
  EXPECT_EQ(inA, kFrames);
  EXPECT_EQ(inB, kFrames);
}

}  // namespace
