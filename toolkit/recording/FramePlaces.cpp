#include "toolkit/recording/FramePlaces.h"

#include "container/img/FrameIndex.h"
#include "container/rtv/RtvLayout.h"

namespace velmar::toolkit {

namespace {

std::vector<FilePlace> readIndex(const FileBytes& file, unsigned int count) {
  const std::string bytes = file.read(detail::kFrameIndexStart, count * sizeof(FrameIndex));
  std::vector<FilePlace> places;
  for (std::size_t at = 0; at + sizeof(FrameIndex) <= bytes.size(); at += sizeof(FrameIndex)) {
    const FrameIndex record = detail::readFrameIndex(bytes.data() + at);
    places.push_back({record.frameOffset, record.frameSize});
  }
  return places;
}

std::vector<FilePlace> readRanges(TaggedVideoParser& parser, unsigned int count) {
  std::vector<FilePlace> places;
  for (unsigned int i = 0; i < count; ++i) {
    unsigned long offset = 0;
    unsigned int size = 0;
    parser.getRawImageRange(static_cast<unsigned short>(i), offset, size, false, nullptr);
    places.push_back({offset, size});
  }
  return places;
}

}  // namespace

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

FramePlaces::FramePlaces(const Recording& recording, const FileBytes& file) {
  const unsigned int count = recording.framesCount();
  std::uint64_t start = detail::kFrameIndexStart + count * sizeof(FrameIndex);
  std::uint64_t end = file.size();
  TaggedVideoParser* const parser = recording.parser();
  mayBeginWithGap = parser == nullptr;
  if (parser == nullptr) {
    frames = readIndex(file, count);
    end = imgMetaDataOffset(file);
  } else {
    frames = readRanges(*parser, count);
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
