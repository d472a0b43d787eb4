#include "toolkit/editing/Scenes.h"

#include <cstdlib>
#include <memory>
#include <numeric>
#include <utility>

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

// Makes one stage of all scenes: between two a signal would end the program and leave what has been
// reserved.
class SceneJob final : public Job {
 public:
  SceneJob(Job& job, const std::string& name, std::size_t frames)
      : job_(job), whole_(job.begin(name, frames)) {}

  bool stopRequested() { return whole_->stopRequested(); }

  std::unique_ptr<Stage> begin(const std::string& /*name*/, std::size_t total) override {
    return std::make_unique<Part>(*whole_, std::exchange(begun_, begun_ + total));
  }
  void lose(const std::string& what, const std::string& words) override { job_.lose(what, words); }
  void loseRest(const std::string& what, std::size_t done, std::size_t wanted) override {
    job_.loseRest(what, done, wanted);
  }
  void note(const std::string& what, const std::string& words) override { job_.note(what, words); }

 private:
  class Part final : public Stage {
   public:
    Part(Stage& whole, std::size_t before) : whole_(whole), before_(before) {}

    void advance(std::size_t done) override {
      hasFrame_ = true;
      whole_.advance(before_ + done);
    }
    // A recording without a frame could not be finished.
    bool stopRequested() override { return hasFrame_ && whole_.stopRequested(); }
    bool waitReadable(int fd) override { return whole_.waitReadable(fd); }

   private:
    Stage& whole_;
    std::size_t before_;
    bool hasFrame_ = false;
  };

  Job& job_;
  std::unique_ptr<Stage> whole_;
  std::size_t begun_ = 0;  // frames of the scenes so far
};

std::size_t countOf(const std::vector<Scene>& scenes) {
  return std::accumulate(
      scenes.begin(), scenes.end(), std::size_t{0},
      [](std::size_t sum, const Scene& scene) { return sum + (scene.last - scene.first + 1); });
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
  SceneJob sceneJob(job, output, countOf(scenes));
  for (std::size_t i = 0; i < scenes.size(); ++i) reserve(i);
  std::size_t made = 0;
  while (made < scenes.size() && !sceneJob.stopRequested()) {
    const Scene& scene = scenes[made];
    const ReservedOutput reserved = reserve(made++);
    const std::string path = name.at(made);
    copyFrames({{&recording, framesOf(scene)}}, path, recording.description(), sceneJob);
    done(path, scene);
  }
  if (made == scenes.size()) return;
  job.lose(output, "stopped by a signal after " + std::to_string(made) + " of " +
                       std::to_string(scenes.size()) + " scenes");
}

}  // namespace velmar::toolkit
