#include "toolkit/editing/Scenes.h"

#include <cstdlib>
#include <numeric>

#include "toolkit/editing/CopyFrames.h"
#include "toolkit/writing/NumberedName.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::toolkit {

namespace {

// Times need not ascend.
bool areWithin(const Recording& recording, unsigned int one, unsigned int other,
               std::int64_t micros) {
  const auto apart =
      static_cast<std::int64_t>(recording.sensorTime(one) - recording.sensorTime(other));
  return std::abs(apart) <= micros;
}

void pad(const Recording& recording, std::int64_t micros, Scene& scene) {
  const Scene chosen = scene;
  while (scene.first > 0 && areWithin(recording, scene.first - 1, chosen.first, micros)) {
    --scene.first;
  }
  const unsigned int count = recording.framesCount();
  while (scene.last + 1 < count && areWithin(recording, scene.last + 1, chosen.last, micros)) {
    ++scene.last;
  }
}

std::vector<unsigned int> framesOf(const Scene& scene) {
  std::vector<unsigned int> frames(scene.last - scene.first + 1);
  std::iota(frames.begin(), frames.end(), scene.first);
  return frames;
}

}  // namespace

std::vector<Scene> scenesOf(const Recording& recording, const std::vector<unsigned int>& chosen,
                            const SceneForm& form) {
  std::vector<Scene> runs;
  for (const unsigned int frame : chosen) {
    const bool goesOn =
        !runs.empty() &&
        (frame == runs.back().last + 1 ||
         (form.join > 0 && areWithin(recording, runs.back().last, frame, form.join)));
    if (goesOn) {
      runs.back().last = frame;
    } else {
      runs.push_back({frame, frame});
    }
  }
  std::vector<Scene> scenes;
  for (Scene scene : runs) {
    if (form.pad > 0) pad(recording, form.pad, scene);
    if (!scenes.empty() && scene.first <= scenes.back().last) {
      scenes.back().last = scene.last;
    } else {
      scenes.push_back(scene);
    }
  }
  return scenes;
}

void copyScenes(const Recording& recording, const std::vector<Scene>& scenes,
                const std::string& output, bool force, Job& job,
                const std::function<void(const std::string& path, const Scene& scene)>& done) {
  const NumberedName name(output);
  const auto reserve = [&](std::size_t at) {
    return ReservedOutput(name.at(at + 1), {recording.path()}, force);
  };
  for (std::size_t i = 0; i < scenes.size(); ++i) reserve(i);
  for (std::size_t i = 0; i < scenes.size(); ++i) {
    const std::string path = name.at(i + 1);
    const ReservedOutput reserved = reserve(i);
    const bool isWhole =
        copyFrames({{&recording, framesOf(scenes[i])}}, path, recording.description(), job);
    done(path, scenes[i]);
    if (isWhole) continue;
    if (i + 1 < scenes.size()) {
      job.lose(output, "stopped after " + std::to_string(i + 1) + " of " +
                           std::to_string(scenes.size()) + " scenes");
    }
    return;
  }
}

}  // namespace velmar::toolkit
