#include "toolkit/rescue/UnrecordedFrames.h"

#include <algorithm>
#include <numeric>

#include "toolkit/jpeg/FrameInput.h"
#include "toolkit/jpeg/JpegStreamSplitter.h"

namespace velmar::toolkit {

namespace {

std::vector<std::size_t> orderOfPlaces(const std::vector<LeftoverFrame>& frames) {
  std::vector<std::size_t> order(frames.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&frames](std::size_t one, std::size_t other) {
    return frames[one].offset < frames[other].offset;
  });
  return order;
}

}  // namespace

std::vector<LeftoverFrame> findPictures(const FileBytes& file, std::uint64_t from,
                                        std::uint64_t to) {
  constexpr std::uint64_t kPiece = std::uint64_t{1} << 20;
  std::vector<LeftoverFrame> found;
  JpegStreamSplitter splitter(kMaxFrameSize);
  for (std::uint64_t at = from; at < to; at += kPiece) {
    splitter.feed(file.read(at, std::min(kPiece, to - at)));
    while (const auto jpeg = splitter.next()) {
      found.emplace_back();
      found.back().offset = from + splitter.frameOffset();
      found.back().size = jpeg->size();
    }
  }
  return found;
}

void UnrecordedFrames::addTo(std::vector<LeftoverFrame>& frames) {
  const std::vector<std::size_t> order = orderOfPlaces(frames);
  const auto follow = [&order](std::size_t one, std::size_t other) {
    return other == (one + 1) % order.size();
  };
  std::uint64_t end = frames[order.front()].end();
  for (std::size_t i = 1; i < order.size(); ++i) {
    const LeftoverFrame& next = frames[order[i]];
    if (next.offset > end && follow(order[i - 1], order[i])) {
      takeBetween(frames[order[i - 1]].number, next.number, end, next.offset);
    }
    end = std::max(end, next.end());
  }
  if (follow(order.back(), order.front())) {
    const LeftoverFrame& first = frames[order.front()];
    const std::uint64_t before = frames[order.back()].number;
    const bool areMoved = areMoved_ || order.front() > 0;
    const std::uint64_t most = areMoved ? missing(before, first.number) : first.number;
    const std::uint64_t next = takeFront(first, most);
    takeEnd(before, areMoved ? next : 0, end);
  }
  frames.insert(frames.end(), found_.begin(), found_.end());
  std::sort(frames.begin(), frames.end(),
            [](auto& one, auto& other) { return one.number < other.number; });
}

// How many numbers lie between the two, from the last one on to the first.
std::uint64_t UnrecordedFrames::missing(std::uint64_t before, std::uint64_t next) const {
  return (next + count_ - before - 1) % count_;
}

void UnrecordedFrames::takeBetween(std::uint64_t before, std::uint64_t next, std::uint64_t from,
                                   std::uint64_t to) {
  const bool mayGrow = mayGrow_ && next <= before;
  std::uint64_t most = missing(before, next);
  if (most == 0 && !mayGrow) return;
  std::vector<LeftoverFrame> pictures = findPictures(file_, from, to);
  if (pictures.size() > most && mayGrow) {
    count_ += pictures.size() - most;
    most = pictures.size();
  }
  if (pictures.size() > most) pictures.resize(most);
  for (LeftoverFrame& picture : pictures) {
    before = (before + 1) % count_;
    picture.number = before;
    found_.push_back(picture);
  }
}

// Before the frame that lies first. The number of the first frame that is found there, or of that
// one.
std::uint64_t UnrecordedFrames::takeFront(const LeftoverFrame& first, std::uint64_t most) {
  if (most == 0) return first.number;
  std::vector<LeftoverFrame> pictures = findPictures(file_, room_.offset, first.offset);
  if (pictures.size() > most) {
    pictures.erase(pictures.begin(), pictures.end() - static_cast<std::ptrdiff_t>(most));
  }
  const std::uint64_t number = (first.number + count_ - pictures.size()) % count_;
  for (std::size_t i = 0; i < pictures.size(); ++i) {
    pictures[i].number = (number + i) % count_;
    found_.push_back(pictures[i]);
  }
  return number;
}

// Behind the frame that lies last.
void UnrecordedFrames::takeEnd(std::uint64_t before, std::uint64_t next, std::uint64_t from) {
  if (from >= room_.end()) return;
  const std::size_t known = found_.size();
  takeBetween(before, next, from, room_.end());
  strayBytes_ = room_.end() - from;
  for (std::size_t i = known; i < found_.size(); ++i) strayBytes_ -= found_[i].size;
}

}  // namespace velmar::toolkit
