// What a disk may hold after a power cut at any moment of recording, recovering, copying and
// editing. VELMAR_CUTS sets the number of states of each test, VELMAR_SEED repeats a run.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <iostream>

#include "power/DiskLog.h"
#include "scene/SampleScene.h"
#include "support/TestSupport.h"
#include "toolkit/TestJob.h"
#include "toolkit/copying/CopyFrames.h"
#include "toolkit/editing/EditPlan.h"
#include "toolkit/rescue/RecoverFrames.h"
#include "toolkit/rescue/Verification.h"

using namespace velmar::toolkit;

namespace {

constexpr unsigned int kFrames = 200;  // an img's index has more than one page
constexpr unsigned int kSyncInterval = 25;
constexpr std::uint64_t kStart = 1700000000000000;
constexpr unsigned int kAll = UINT32_MAX;  // promised: the recording is finished

const std::vector<std::string>& frames() {
  static const std::vector<std::string> made = [] {
    SampleScene scene(32, 16);
    std::vector<std::string> jpegs;
    for (unsigned int i = 0; i < kFrames; ++i) jpegs.push_back(scene.jpeg(i));
    return jpegs;
  }();
  return made;
}

FrameTimes timesOf(std::uint64_t frame) { return {kStart + frame * 33000, kStart + frame * 33000}; }

FrameTag tagOf(unsigned int frame) {
  FrameTag tag;
  tag.x = static_cast<int>(frame) + 1;
  tag.speed = static_cast<unsigned short>(frame + 1);
  tag.direction = static_cast<unsigned short>(frame + 1);
  return tag;
}

RecordingDescription description() {
  RecordingDescription description;
  description.setSize({32, 16});
  description.startTime = kStart;
  return description;
}

// How many of the first `promised` frames the recording has, each as it was recorded. Others may
// have lost some bytes.
std::size_t checkFrames(const std::string& path, std::size_t promised) {
  const Recording recording(path);
  std::size_t found = 0;
  for (unsigned int i = 0; i < recording.framesCount(); ++i) {
    const std::uint64_t time = recording.sensorTime(i);
    const auto number = static_cast<unsigned int>((time - kStart) / 33000);
    if (number >= promised) continue;
    ++found;
    EXPECT_TRUE(storedFrame(recording.reader(), i) == frames()[number]) << "frame " << i;
    const FrameTag tag = recording.isRtv() ? tagOf(number) : FrameTag();
    EXPECT_EQ(recording.tag(i).x, tag.x) << "frame " << i;
    EXPECT_EQ(recording.tag(i).direction, tag.direction) << "frame " << i;
  }
  return found;
}

void expectWhole(const std::string& path) {
  std::string findings;
  verify(path, false, [&](const Finding& finding) { findings += finding.text + "\n"; });
  EXPECT_EQ(findings, "");
  EXPECT_EQ(checkFrames(path, kFrames), kFrames);
}

class PowerCuts : public testing::TestWithParam<const char*> {
 protected:
  using Check = std::function<void(const Files& files, std::size_t promised)>;

  PowerCuts() : extension_(GetParam()), path_(folder_ / ("a." + extension_)) {}

  void record(const std::string& path, unsigned int syncInterval, DiskLog* log,
              unsigned short height = 16) {
    RecordingWriter writer(path, description(), kFrames, RecordingWriter::OnFailure::KeepFrames);
    writer.setSize(32, height);
    writer.syncEvery(syncInterval);
    for (unsigned int i = 0; i < kFrames; ++i) {
      writer.add(frames()[i], timesOf(i), tagOf(i));
      if (log != nullptr && writer.frames() % syncInterval == 0) log->promise(writer.frames());
    }
    writer.finish();
  }

  // Tries states of the disk for cuts before, inside and behind everything that was logged, which
  // is one of so many parts of a test.
  void tryStates(const DiskLog& log, const Check& check, std::size_t parts = 1) {
    static const unsigned long seed = numberFrom("VELMAR_SEED", std::random_device()());
    std::mt19937 random(static_cast<unsigned int>(seed));
    const std::size_t states = numberFrom("VELMAR_CUTS", 150) / parts;
    for (std::size_t i = 0; i < states && !HasFailure(); ++i) {
      // Every other one near the end, where a file gets its name.
      const std::size_t events = log.events().size();
      const std::size_t last = i % 2 == 0 ? events : std::min<std::size_t>(events, 24);
      const std::size_t before = events - random() % (last + 1);
      const DiskModel model = i % 4 < 2 ? DiskModel::Ordered : DiskModel::Weak;
      const Files files = log.cut(before, model, random);
      std::filesystem::remove_all(disk_ / "");
      std::filesystem::create_directory(disk_ / "");
      for (const auto& [name, bytes] : files) writeFile(disk_ / name, bytes);
      SCOPED_TRACE("state " + std::to_string(i) + ", VELMAR_SEED=" + std::to_string(seed));
      check(files, log.promisedBefore(before));
    }
  }

  Leftover leftoverIn(const FileBytes& file, const LeftoverTimes& times) const {
    return extension_ == "rtv" ? findRtvLeftover(file, RTV_VER_03) : findImgLeftover(file, times);
  }

  // How many of the first `promised` frames come back from the temporary file of a recording.
  std::size_t recovered(const std::string& path, std::size_t promised) {
    TestJob job;
    const FileBytes file(path + ".tmp");
    LeftoverTimes times;
    if (!exists(path + ".tmp.index")) times.framesPerSecond = 30;
    const Leftover leftover = leftoverIn(file, times);
    if (!firstSize({file, leftover, false})) return 0;
    recoverFrames({file, leftover, false}, path, description(), job);
    return checkFrames(path, promised);
  }

  TempFolder folder_, disk_;
  std::string extension_, path_;
};

TEST_P(PowerCuts, LoseNoFrameThatWasSynchronised) {
  DiskLog log(folder_ / "");
  record(path_, kSyncInterval, &log);
  log.promise(kAll);
  log.stop();
  const std::string name = "a." + extension_;
  tryStates(log, [&](const Files& files, std::size_t promised) {
    if (files.contains(name)) return expectWhole(disk_ / name);
    if (promised == 0) return;
    ASSERT_TRUE(files.contains(name + ".tmp"));
    const auto wanted = std::min<std::size_t>(promised, kFrames);
    EXPECT_EQ(recovered(disk_ / name, wanted), wanted);
  });
}

TEST_P(PowerCuts, GiveNoNameToHalfAFile) {
  record(path_, 0, nullptr);
  std::filesystem::rename(path_, path_ + ".tmp");
  const std::string copy = folder_ / ("b." + extension_);
  TestJob job;
  DiskLog log(folder_ / "");
  {
    const FileBytes file(path_ + ".tmp");
    recoverFrames({file, leftoverIn(file, {}), false}, path_, description(), job);
    log.promise(1);
    const Recording recording(path_);
    copyFrames({{&recording, allFrames(recording)}}, copy, recording.description(), job);
    log.promise(2);
  }
  log.stop();
  const std::string name = "a." + extension_;
  const std::string copyName = "b." + extension_;
  tryStates(log, [&](const Files& files, std::size_t promised) {
    if (files.contains(name)) expectWhole(disk_ / name);
    if (files.contains(copyName)) expectWhole(disk_ / copyName);
    EXPECT_TRUE(files.contains(name) || promised < 1);
    EXPECT_TRUE(files.contains(copyName) || promised < 2);
    EXPECT_TRUE(files.contains(name + ".tmp"));
  });
}

struct Edit {
  const char* what;
  EditRequest request;
  bool isForRtv = true;
};

std::vector<Edit> edits() {
  std::vector<FrameTimes> times;
  for (unsigned int i = 0; i < kFrames; ++i) times.push_back(timesOf(kFrames + 2 * i));
  // Each follows the ones before it.
  return {{"a field", {.deviceId = "another one"}},
          {"a field in place", {.deviceId = "one another"}},
          {"the time of a frame", {.sensorTimes = {{7, kStart + 7000}}}},
          {"long parameters", {.cameraParams = "\"" + std::string(9000, 'x') + "\""}, false},
          {"parameters in place", {.cameraParams = "\"" + std::string(9000, 'y') + "\""}, false},
          {"short parameters", {.cameraParams = "{}"}, false},
          {"a shift", {.shift = 3600000}},
          {"all times", {.allTimes = times}},
          {"the resolution", {.fixResolution = true}},
          {"the id alone", {.cleared = {Contents::DeviceId}}}};
}

TEST_P(PowerCuts, LeaveAnEditOldOrNew) {
  record(path_, 0, nullptr, 48);
  const std::string name = "a." + extension_;
  // Before and behind the promise.
  const auto tryEdit = [&](const DiskLog& log, const std::string& before,
                           const std::string& after) {
    const auto check = [&](const Files&, std::size_t promised) {
      undoEdit(disk_ / name, FileLock(disk_ / name, FileLock::Kind::Edit));
      const std::string now = readFile(disk_ / name);
      EXPECT_TRUE(now == after || (promised == 0 && now == before));
      EXPECT_FALSE(exists(disk_ / (name + ".undo")));
    };
    tryStates(log, check, 2 * edits().size());
  };
  for (const auto& [what, request, isForRtv] : edits()) {
    if (extension_ == "rtv" && !isForRtv) continue;
    SCOPED_TRACE(what);
    const std::string before = readFile(path_);
    const EditedPlaces places = EditPlan(Recording(path_), request).places();
    TestJob job;
    DiskLog editing(folder_ / "");
    editRecording(path_, request, job);
    editing.promise(1);
    editing.stop();
    const std::string after = readFile(path_);
    ASSERT_NE(before, after);
    tryEdit(editing, before, after);

    writeFile(path_, before);
    keepForUndo(path_, places);
    writeFile(path_, after);
    DiskLog undoing(folder_ / "");
    undoEdit(path_, FileLock(path_, FileLock::Kind::Edit));
    undoing.promise(1);
    undoing.stop();
    tryEdit(undoing, before, before);
    writeFile(path_, after);
  }
}

INSTANTIATE_TEST_SUITE_P(Containers, PowerCuts, testing::Values("img", "rtv"),
                         [](const auto& test) { return std::string(test.param); });

}  // namespace
