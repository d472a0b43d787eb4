#include "toolkit/inplace/TagPatches.h"

#include <fcntl.h>

#include <cerrno>
#include <cstddef>

#include "base/FileDescriptor.h"
#include "container/rtv/RtvLayout.h"
#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

namespace {

template <typename T>
std::string bytesOf(const T& value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

// Where the values of a tag begin, in every version: behind the time and the place of the frame.
constexpr std::size_t kValuesAt = offsetof(frametag03Ver_t, x);
static_assert(offsetof(frametag_02ver_t, x) == kValuesAt);

std::string valuesOf(const FrameTag& tag, version_e version) {
  const frametag03Ver_t stored = {
      0, 0, 0, tag.x, tag.y, tag.z, tag.relativeDistance, tag.speed, tag.direction};
  if (version == RTV_VER_02) return bytesOf(detail::narrowed(stored)).substr(kValuesAt);
  const std::string values = bytesOf(stored).substr(kValuesAt);
  return version == RTV_VER_04 ? values + bytesOf(tag.can) : values;
}

}  // namespace

std::vector<FilePatch> tagPatches(const Recording& recording, const std::vector<FrameTag>& tags) {
  const version_e version = recording.description().version;
  const detail::RtvLayout layout = detail::rtvLayout(version);
  std::vector<FilePatch> patches;
  for (unsigned int i = 0; i < tags.size(); ++i) {
    const std::uint64_t at = layout.tagAt(i) + kValuesAt;
    const std::string values = valuesOf(tags[i], version);
    if (recording.file().read(at, values.size()) != values) patches.push_back({at, values});
  }
  return patches;
}

FilePatch startPositionPatch(const RecordingDescription& description) {
  std::string bytes = bytesOf(description.lng) + bytesOf(description.lat);
  if (detail::rtvLayout(description.version).hasFlagsAndAltitude) bytes += bytesOf(description.alt);
  return {detail::kLngAt, bytes};
}

void writePatches(const std::string& path, const std::vector<FilePatch>& patches) {
  if (patches.empty()) return;
  const detail::FileDescriptor file(path, O_WRONLY);
  for (const FilePatch& patch : patches) {
    if (file.isOpen() && file.writeAt(patch.bytes.data(), patch.bytes.size(), patch.offset)) {
      continue;
    }
    throw Failure::ofSystem(path, "the tags could not be written", errno);
  }
}

}  // namespace velmar::toolkit
