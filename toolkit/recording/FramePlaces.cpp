#include "toolkit/recording/FramePlaces.h"

#include <algorithm>

#include "container/img/FrameIndex.h"
#include "container/rtv/RtvLayout.h"

namespace velmar::toolkit {

namespace {

bool hasMovedFrames(const std::vector<FilePlace>& frames) {
  return !frames.empty() && frames.front().offset != detail::kFrameIndexStart;
}

std::uint64_t endOf(const std::vector<FilePlace>& frames) {
  std::uint64_t end = 0;
  for (const FilePlace& frame : frames) end = std::max(end, frame.end());
  return end;
}

}  // namespace

bool SharedBytes::repeats(const FilePlace& place) {
  if (place.size == 0 || !file_.contains(place.offset, place.size)) return false;
  if (bytes_ + place.size > 2 * file_.size() || !starts_.insert(place.offset).second) return true;
  bytes_ += place.size;
  return false;
}

std::uint64_t imgMetaDataOffset(const FileBytes& file) {
  std::uint64_t stored = 0;
  file.read(0, sizeof stored).copy(reinterpret_cast<char*>(&stored), sizeof stored);
  return ntohll(stored);
}

std::string cutWords(const FileBytes& file) {
  const std::uint64_t metaData = imgMetaDataOffset(file);
  if (metaData < file.size() || metaData >= kLongestFile) return "";
  return "it is cut short: it has " + std::to_string(file.size()) +
         " bytes, but its metadata were at byte " + std::to_string(metaData);
}

FramePlaces::FramePlaces(const Recording& recording) : frames(recording.places()) {
  const FileBytes& file = recording.file();
  // A recorder moves the first frames to make place for the index before it writes that.
  mayBeginWithGap = !recording.isRtv() && (recording.isFinished() || hasMovedFrames(frames));
  std::uint64_t start = detail::kFrameIndexStart;
  if (mayBeginWithGap) start += frames.size() * sizeof(FrameIndex);
  std::uint64_t end = file.size();
  if (recording.isRtv()) {
    start = detail::rtvLayout(recording.description().version).tagAt(recording.framesMax());
  } else if (recording.isFinished()) {
    end = imgMetaDataOffset(file);
  }
  if (!recording.isFinished()) end = std::max(start, endOf(frames));
  room = {start, end > start ? end - start : 0};
}

}  // namespace velmar::toolkit
