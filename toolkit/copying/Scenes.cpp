#include "toolkit/copying/Scenes.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <set>
#include <utility>

#include "container/img/FrameIndex.h"
#include "container/rtv/RtvLayout.h"
#include "toolkit/base/Failure.h"
#include "toolkit/copying/CopyFrames.h"
#include "toolkit/recording/FramePlaces.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/text/TimeText.h"
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

// Each has to have one of its own.
std::vector<std::string> pathsOf(const Recording& recording, const std::vector<Scene>& scenes,
                                 const SceneOutput& output) {
  const NumberedName name(output.path, output.isPattern);
  std::vector<std::string> paths;
  std::set<std::string> seen;
  for (const Scene& scene : scenes) {
    paths.push_back(name.at(paths.size() + 1, recording.sensorTime(scene.first)));
    if (seen.insert(paths.back()).second) continue;
    throw Failure(paths.back(), "two recordings would have this name; %04d in it counts them",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  return paths;
}

// How large a file of some frames of a recording can be.
class PartSize {
 public:
  explicit PartSize(const Recording& recording)
      : recording_(recording),
        isRtv_(recording.isRtv()),
        layout_(detail::rtvLayout(recording.description().version)),
        metaData_(recording.file().size() - imgMetaDataOffset(recording.file())) {}

  void begin(unsigned int frame) {
    frames_ = 0;
    pictures_ = largest_ = 0;
    add(frame);
  }
  void add(unsigned int frame) {
    const std::uint64_t size = recording_.frameSize(frame);
    ++frames_;
    pictures_ += size;
    largest_ = std::max(largest_, size);
  }
  std::uint64_t bytes() const {
    if (isRtv_) return layout_.tagAt(frames_) + pictures_;
    // Behind the index a part of the frame may be left that made room for it.
    return detail::kFrameIndexStart + frames_ * sizeof(FrameIndex) + largest_ + pictures_ +
           metaData_;
  }

 private:
  const Recording& recording_;
  const bool isRtv_;
  const detail::RtvLayout layout_;
  const std::uint64_t metaData_;
  unsigned int frames_ = 0;
  std::uint64_t pictures_ = 0;
  std::uint64_t largest_ = 0;
};

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

std::vector<Scene> partsOf(const Recording& recording, const PartForm& form) {
  PartSize size(recording);
  std::vector<Scene> parts;
  std::int64_t period = 0;
  const unsigned int count = recording.framesCount();
  const std::uint64_t start = count > 0 ? recording.sensorTime(0) : 0;
  for (unsigned int i = 0; i < count; ++i) {
    const auto elapsed = static_cast<std::int64_t>(recording.sensorTime(i) - start);
    size.add(i);
    // A clock that was set back begins no earlier one.
    const bool isLater = form.duration && elapsed / *form.duration > period;
    const bool isLarge = form.size && size.bytes() > *form.size;
    const bool isApart = form.gap && i > 0 && !areWithin(recording, i - 1, i, *form.gap);
    if (isLater) period = elapsed / *form.duration;
    if (i == 0 || isLater || isLarge || isApart) {
      parts.push_back({i, i});
      size.begin(i);
    }
    parts.back().last = i;
  }
  return parts;
}

std::string sceneLine(const Recording& recording, const std::string& path, const Scene& scene) {
  return printable(path) + ": frames " + std::to_string(scene.first) + " to " +
         std::to_string(scene.last) + ", " + formatTime(recording.sensorTime(scene.first)) +
         " to " + formatTime(recording.sensorTime(scene.last)) + "\n";
}

void copyScenes(const Recording& recording, const std::vector<Scene>& scenes,
                const SceneOutput& output, Job& job,
                const std::function<void(const std::string& path, const Scene& scene)>& done) {
  const std::vector<std::string> paths = pathsOf(recording, scenes, output);
  std::vector<std::string> inputs = output.inputs;
  inputs.push_back(recording.path());
  const auto reserve = [&](std::size_t at) {
    return ReservedOutput(paths[at], inputs, output.force);
  };
  SceneJob sceneJob(job, output.path, countOf(scenes));
  for (std::size_t i = 0; i < scenes.size(); ++i) reserve(i);
  std::size_t made = 0;
  for (; made < scenes.size() && !sceneJob.stopRequested(); ++made) {
    const ReservedOutput reserved = reserve(made);
    copyFrames({{&recording, framesOf(scenes[made])}}, paths[made], recording.description(),
               sceneJob, output.strip);
    done(paths[made], scenes[made]);
  }
  if (made == scenes.size()) return;
  job.lose(output.path, "stopped by a signal after " + std::to_string(made) + " of " +
                            std::to_string(scenes.size()) + " recordings");
}

}  // namespace velmar::toolkit
