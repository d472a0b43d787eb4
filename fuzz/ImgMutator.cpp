// Mutants of img files that get past the first checks: the metadata's offset, the number of frames
// and the frames' offsets are mended in most of them.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include "container/img/FrameIndex.h"
#include "support.h"

using namespace velmar::detail;

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

std::string mutated(std::string bytes, std::size_t maxSize) {
  const std::size_t size = bytes.size();
  bytes.resize(std::max(size, maxSize));
  bytes.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(bytes.data()), size, maxSize));
  return bytes;
}

// Makes the metadata speak of as many frames as there is room for. Their number.
std::size_t mendCount(std::string& metaData, std::size_t room) {
  constexpr char kKey[] = "\"frames_count\" : ";
  const std::size_t at = metaData.find(kKey);
  if (at == metaData.npos) return 0;
  const std::size_t digits = at + sizeof kKey - 1;
  const std::size_t end =
      std::min(metaData.find_first_not_of("0123456789", digits), metaData.size());
  const std::string stored = metaData.substr(digits, end - digits);
  const std::size_t count = std::min<std::size_t>(std::strtoul(stored.c_str(), nullptr, 10), room);
  metaData.replace(digits, end - digits, std::to_string(count));
  return count;
}

void mendOffsets(std::string& file, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    char* at = file.data() + kFrameIndexStart + i * sizeof(FrameIndex);
    FrameIndex record;
    std::memcpy(&record, at, sizeof record);
    record = record.swapped();
    const std::size_t span = file.size() - kFrameIndexStart;
    if (record.frameOffset < kFrameIndexStart || record.frameOffset >= file.size()) {
      record.frameOffset = kFrameIndexStart + record.frameOffset % span;
    }
    record = record.swapped();
    std::memcpy(at, &record, sizeof record);
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned int seed) {
  std::uint64_t offset = 0;
  if (size >= sizeof offset) std::memcpy(&offset, data, sizeof offset);
  offset = ntohll(offset);
  if (seed % 4 == 0 || offset < kFrameIndexStart || offset > size) {
    return LLVMFuzzerMutate(data, size, maxSize);
  }
  const auto* bytes = reinterpret_cast<const char*>(data);
  std::string front(bytes, offset);
  std::string metaData(bytes + offset, size - offset);
  std::string& changed = seed / 4 % 2 == 0 ? front : metaData;
  changed = mutated(changed, maxSize - (size - changed.size()));
  if (front.size() < kFrameIndexStart) front.resize(kFrameIndexStart);
  mendOffsets(front, mendCount(metaData, (front.size() - kFrameIndexStart) / sizeof(FrameIndex)));

  const std::uint64_t newOffset = htonll(front.size());
  std::memcpy(front.data(), &newOffset, sizeof newOffset);
  const std::string file = front + metaData;
  const std::size_t newSize = std::min(file.size(), maxSize);
  std::memcpy(data, file.data(), newSize);
  return newSize;
}
