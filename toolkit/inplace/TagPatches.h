#ifndef VELMAR_TOOLKIT_TAG_PATCHES_H
#define VELMAR_TOOLKIT_TAG_PATCHES_H

#include <cstdint>
#include <string>
#include <vector>

#include "toolkit/recording/FrameTag.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// Bytes to write into a file.
struct FilePatch {
  std::uint64_t offset;
  std::string bytes;
};

/// What changes in an rtv if its frames get these tags, but for their times: a patch for each tag
/// that is another one, in order.
std::vector<FilePatch> tagPatches(const Recording& recording, const std::vector<FrameTag>& tags);

/// The start position of the description in the header of an rtv.
FilePatch startPositionPatch(const RecordingDescription& description);

/// Throws Failure; then a part of them may be written.
void writePatches(const std::string& path, const std::vector<FilePatch>& patches);

}  // namespace velmar::toolkit

#endif
