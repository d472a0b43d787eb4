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
  std::uint64_t start = detail::kFrameIndexStart + frames.size() * sizeof(FrameIndex);
  std::uint64_t end = file.size();
  TaggedVideoParser* const parser = recording.parser();
  mayBeginWithGap = parser == nullptr;
  if (parser == nullptr) {
    end = imgMetaDataOffset(file);
  } else {
    version_e version{};
    unsigned short slots = 0;
    // Neither can fail on a parser that is open.
    parser->getVersion(version);
    parser->getFramesMax(slots);
    start = detail::rtvLayout(version).tagAt(slots);
  }
  room = {start, end > start ? end - start : 0};
}

}  // namespace velmar::toolkit
