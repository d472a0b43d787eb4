/// Runs of frames, each a recording of its own.
#ifndef VELMAR_TOOLKIT_SCENES_H
#define VELMAR_TOOLKIT_SCENES_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/base/Job.h"
#include "toolkit/copying/Strip.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

/// Neighbouring frames of a recording.
struct Scene {
  unsigned int first;
  unsigned int last;

  bool operator==(const Scene&) const = default;
};

/// How scenes are made of chosen frames. Both are microseconds of capture time.
struct SceneForm {
  std::int64_t join = 0;  ///< runs no farther apart are one scene, with the frames between them
  std::int64_t pad = 0;   ///< frames that far before and behind belong to it, too
};

/// The scenes in their order; no frame is in two of them.
/// \param chosen  frames in ascending order
std::vector<Scene> scenesOf(const Recording& recording, const std::vector<unsigned int>& chosen,
                            const SceneForm& form);

/// Where a recording is split: before each frame for which one of these says so.
struct PartForm {
  std::optional<std::int64_t> duration;  ///< microseconds, counted on and on from the first frame
  std::optional<std::uint64_t>
      size;                         ///< bytes that the file of no part exceeds, unless by one frame
  std::optional<std::int64_t> gap;  ///< microseconds from one frame to the next
};

/// All frames in their order, in parts.
std::vector<Scene> partsOf(const Recording& recording, const PartForm& form);

/// Where scenes go.
struct SceneOutput {
  std::string path;       ///< the names are made of it; see NumberedName
  bool isPattern = true;  ///< the same
  bool force = false;
  Strip strip = {};
  std::vector<std::string> inputs = {};  ///< that must not be replaced, beside the recording
};

/// Writes each scene as a recording of its own, and tells `done` of each that is whole. All names
/// are checked before anything is written. The job is told of what is left out, and of the rest
/// after the wish to stop. Throws Failure; the scenes before it stay.
void copyScenes(const Recording& recording, const std::vector<Scene>& scenes,
                const SceneOutput& output, Job& job,
                const std::function<void(const std::string& path, const Scene& scene)>& done);

/// A line that says what the file has of the recording.
std::string sceneLine(const Recording& recording, const std::string& path, const Scene& scene);

}  // namespace velmar::toolkit

#endif
