#include "toolkit/recording/FramePlaces.h"

#include "container/img/FrameIndex.h"
#include "container/rtv/RtvLayout.h"

namespace velmar::toolkit {

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
  const bool isFinished = recording.finished() != nullptr;
  // The index and the metadata come when it is finished.
  std::uint64_t start =
      detail::kFrameIndexStart + (isFinished ? frames.size() : 0) * sizeof(FrameIndex);
  std::uint64_t end = file.size();
  if (recording.isRtv()) {
    start = detail::rtvLayout(recording.description().version).tagAt(recording.framesMax());
  } else if (isFinished) {
    end = imgMetaDataOffset(file);
  }
  if (!isFinished) end = frames.empty() ? start : frames.back().end();
  mayBeginWithGap = isFinished && !recording.isRtv();
  room = {start, end > start ? end - start : 0};
}

}  // namespace velmar::toolkit
