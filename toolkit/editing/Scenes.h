/// Runs of chosen frames, each a recording of its own.
#ifndef VELMAR_TOOLKIT_SCENES_H
#define VELMAR_TOOLKIT_SCENES_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "toolkit/base/Job.h"
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

/// Writes each scene as a recording of its own, named by NumberedName, and tells `done` of each
/// that is whole. All names are checked before anything is written. The job is told of what is left
/// out, and of the rest after the wish to stop. Throws Failure; the scenes before it stay.
void copyScenes(const Recording& recording, const std::vector<Scene>& scenes,
                const std::string& output, bool force, Job& job,
                const std::function<void(const std::string& path, const Scene& scene)>& done);

}  // namespace velmar::toolkit

#endif
