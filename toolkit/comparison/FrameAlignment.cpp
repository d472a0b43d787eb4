#include "toolkit/comparison/FrameAlignment.h"

#include <algorithm>
#include <optional>
#include <unordered_map>

namespace velmar::toolkit {

namespace {

using Keys = std::vector<std::uint64_t>;

// Two frames with the same key.
struct Pair {
  unsigned int a, b;
};

// Those whose keys are there once on either side, as many as are in the same order on both: the
// longest ascending sequence.
std::vector<Pair> uniquePairs(const Keys& a, const Keys& b, const FramePairs& within) {
  struct Places {
    unsigned int a = 0, b = 0;
    unsigned int countA = 0, countB = 0;
  };
  std::unordered_map<std::uint64_t, Places> places;
  for (unsigned int i = within.a.first; i < within.a.end(); ++i) {
    Places& key = places[a[i]];
    key.a = i;
    ++key.countA;
  }
  for (unsigned int i = within.b.first; i < within.b.end(); ++i) {
    const auto key = places.find(b[i]);
    if (key == places.end()) continue;
    key->second.b = i;
    ++key->second.countB;
  }
  struct Link {
    Pair pair;
    std::optional<std::size_t> before;
  };
  std::vector<Link> links;
  std::vector<std::size_t> ends;  // of the sequences of each length, that with the smallest b
  for (unsigned int i = within.a.first; i < within.a.end(); ++i) {
    const Places& key = places.at(a[i]);
    if (key.countA != 1 || key.countB != 1) continue;
    const auto end = std::lower_bound(
        ends.begin(), ends.end(), key.b,
        [&links](std::size_t link, unsigned at) { return links[link].pair.b < at; });
    const auto before = end == ends.begin() ? std::nullopt : std::optional(*(end - 1));
    if (end == ends.end()) {
      ends.push_back(links.size());
    } else {
      *end = links.size();
    }
    links.push_back({{i, key.b}, before});
  }
  std::vector<Pair> pairs;
  auto at = ends.empty() ? std::nullopt : std::optional(ends.back());
  for (; at; at = links[*at].before) pairs.push_back(links[*at].pair);
  std::reverse(pairs.begin(), pairs.end());
  return pairs;
}

// Runs of frames with the same keys: those at either end, and those around unique ones.
std::vector<FramePairs> sameFrames(const Keys& a, const Keys& b, const FramePairs& within) {
  std::vector<FramePairs> runs;
  Pair end{within.a.first, within.b.first};  // of the last run
  const auto addAround = [&](Pair pair) {
    if (pair.a < end.a) return;  // in the last run
    unsigned int before = 0;
    while (pair.a - before > end.a && pair.b - before > end.b &&
           a[pair.a - before - 1] == b[pair.b - before - 1]) {
      ++before;
    }
    unsigned int behind = 0;
    while (pair.a + behind < within.a.end() && pair.b + behind < within.b.end() &&
           a[pair.a + behind] == b[pair.b + behind]) {
      ++behind;
    }
    if (before + behind == 0) return;
    runs.push_back({{pair.a - before, before + behind}, {pair.b - before, before + behind}});
    end = {pair.a + behind, pair.b + behind};
  };
  addAround(end);
  for (const Pair& pair : uniquePairs(a, b, within)) addAround(pair);
  addAround({within.a.end(), within.b.end()});
  return runs;
}

class Alignment {
 public:
  Alignment(const FrameKeys& a, const FrameKeys& b)
      : a_{together(a), a.pictures, a.times}, b_{together(b), b.pictures, b.times} {}

  std::vector<FramePairs> run() {
    const auto count = [](const Keys& keys) { return static_cast<unsigned int>(keys.size()); };
    place({{0, count(a_[kPicture])}, {0, count(b_[kPicture])}}, 0);
    return std::move(found_);
  }

 private:
  // What frames are recognised by, in this order.
  static constexpr std::size_t kPicture = 1;
  static constexpr std::size_t kTime = 2;

  // A picture and its time. That two may come to the same does no harm: pairs are compared.
  static Keys together(const FrameKeys& keys) {
    Keys both = keys.times;
    for (std::size_t i = 0; i < both.size(); ++i) {
      both[i] += keys.pictures[i] * 0x9E3779B97F4A7C15;
    }
    return both;
  }

  void place(const FramePairs& frames, std::size_t key) {
    if (key > kPicture && frames.a.count == frames.b.count) return add(frames);
    if (key > kTime) {
      add({frames.a, {}});
      return add({{}, frames.b});
    }
    FrameSpan a = frames.a;
    FrameSpan b = frames.b;
    const auto placeUpTo = [&](unsigned int endA, unsigned int endB) {
      place({{a.first, endA - a.first}, {b.first, endB - b.first}}, key + 1);
    };
    for (const FramePairs& same : sameFrames(a_[key], b_[key], frames)) {
      placeUpTo(same.a.first, same.b.first);
      add(same);
      a.first = same.a.end();
      b.first = same.b.end();
    }
    placeUpTo(frames.a.end(), frames.b.end());
  }

  void add(const FramePairs& frames) {
    if (frames.a.count == 0 && frames.b.count == 0) return;
    if (!found_.empty() && found_.back().isPaired() && frames.isPaired()) {
      FramePairs& last = found_.back();
      last.a.count += frames.a.count;
      last.b.count += frames.b.count;
    } else {
      found_.push_back(frames);
    }
  }

  Keys a_[kTime + 1];
  Keys b_[kTime + 1];
  std::vector<FramePairs> found_;
};

}  // namespace

std::vector<FramePairs> alignFrames(const FrameKeys& a, const FrameKeys& b) {
  return Alignment(a, b).run();
}

}  // namespace velmar::toolkit
