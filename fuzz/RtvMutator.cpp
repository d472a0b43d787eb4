// Mutants of rtv files that get past the first checks: the identifier, the version, the number of
// frames and the last frame's end are mended in most of them.
#include <algorithm>
#include <cstring>

#include "container/rtv/RtvLayout.h"
#include "support.h"

using namespace velmar::detail;

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

constexpr unsigned int kOffsetInTag = 4;
constexpr unsigned int kLengthInTag = 12;

version_e mendVersion(std::uint8_t* file) {
  std::memcpy(file + kMagicCodeAt, "velmar", 6);
  file[kVersionMajorAt] = 0;
  std::uint8_t& minor = file[kVersionMinorAt];
  if (minor < 1 || minor > 4) minor = 1 + minor % 4;
  return rtvVersion(minor);
}

unsigned int mendCount(std::uint8_t* file, std::size_t size, const RtvLayout& layout) {
  auto count = get<std::uint16_t>(file + layout.framesCountAt());
  const std::size_t room = (size - layout.headerSize) / layout.tagSize;
  count = static_cast<std::uint16_t>(std::clamp<std::size_t>(count, 1, room));
  put(file + layout.framesCountAt(), count);
  return count;
}

void mendLastFrame(std::uint8_t* tag, std::size_t size) {
  const std::uint64_t offset = get<std::uint64_t>(tag + kOffsetInTag) % (size + 1);
  put(tag + kOffsetInTag, offset);
  put(tag + kLengthInTag, static_cast<std::uint32_t>(size - offset));
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned int seed) {
  size = LLVMFuzzerMutate(data, size, maxSize);
  if (seed % 4 == 0 || size <= kVersionMinorAt) return size;
  const RtvLayout layout = rtvLayout(mendVersion(data));
  if (size < layout.tagAt(1)) return size;
  const unsigned int count = mendCount(data, size, layout);
  mendLastFrame(data + layout.tagAt(count - 1), size);
  return size;
}
