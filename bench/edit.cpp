#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <memory>

#include "Bench.h"
#include "Files.h"
#include "toolkit/editing/EditPlan.h"
#include "toolkit/files/FileLock.h"

namespace {

unsigned int changedFrame() { return frameCount(777); }

std::shared_ptr<VelmarVideoFileModifier> openModifier(const std::string& path) {
  auto modifier = makeVelmarVideoFileModifier(path);
  require(modifier != nullptr && modifier->open() == VELMAR_ERROR_CODE_SUCCESS_E,
          path + ": not edited");
  return modifier;
}

double changeTime(const std::string& path) {
  unsigned long time = timeOf(changedFrame());
  const CpuTimer timer;
  const auto modifier = openModifier(path);
  require(modifier->modifyTimestamp(changedFrame(), time) == VELMAR_ERROR_CODE_SUCCESS_E &&
              modifier->close() == VELMAR_ERROR_CODE_SUCCESS_E,
          "time not changed");
  return timer.seconds();
}

void storeTimeInImg(const std::string& path) {
  const std::uint64_t time = __builtin_bswap64(timeOf(changedFrame()));
  const Mapped file(path, true);
  const auto index = swappedIndex(file, cameraFrames());
  std::memcpy(file.data() + sizeof time + changedFrame() * sizeof(IndexRecord), &time, sizeof time);
}

// The figure is twice the mechanics and the JSON once, so half of it goes to the limit.
double storeTimeAndHalfTheJson(const std::string& path, const std::string& metaData) {
  const CpuTimer timer;
  storeTimeInImg(path);
  const double mechanics = timer.seconds();
  parseJson(metaData);
  return (mechanics + timer.seconds()) / 2;
}

void storeTimeInRtv(const std::string& path) {
  const unsigned int tagSize = rtvTagSize(Container::Rtv03);
  const std::size_t tableAt = rtvHeaderSize(Container::Rtv03);
  const auto time = static_cast<int>((timeOf(changedFrame()) - timeOf(0)) / 1000);
  const Mapped file(path, true);
  const std::vector<unsigned char> table(file.data() + tableAt,
                                         file.data() + tableAt + cameraFrames() * tagSize);
  benchmark::DoNotOptimize(table.data());
  std::memcpy(file.data() + tableAt + changedFrame() * tagSize, &time, sizeof time);
}

Row imgTimeRow() {
  const std::string path = cameraRecording(Container::Img);
  const std::string metaData = metaDataText(Mapped(path));
  return {.limitName = "map, pass over the index, one store, unmap; half the metadata's JSON",
          .limit = [=] { return storeTimeAndHalfTheJson(path, metaData); },
          .ours = [=] { return changeTime(path); },
          .reach = 2,
          .reachExtra = {}};
}

Row rtvTimeRow() {
  const std::string path = cameraRecording(Container::Rtv03);
  return {.limitName = "map, copy of the tags, one store, unmap",
          .limit =
              [=] {
                const CpuTimer timer;
                storeTimeInRtv(path);
                return timer.seconds();
              },
          .ours = [=] { return changeTime(path); },
          .reach = 2,
          .reachExtra = {}};
}

double writeBlock(const std::string& path, const std::string& metaData) {
  const auto offset = static_cast<off_t>(Mapped(path).size() - metaData.size());
  const CpuTimer timer;
  const OpenFile file(path, O_RDWR);
  require(::pwrite(file.get(), metaData.data(), metaData.size(), offset) ==
              static_cast<ssize_t>(metaData.size()),
          "block not written");
  return timer.seconds();
}

double changeCameraId(const std::string& path) {
  static unsigned char id[kRtvDeviceIdSize] = {0x0A, 0xFF, 0x53, 0x41, 0x4D, 0x50};
  ++id[kRtvDeviceIdSize - 1];
  const CpuTimer timer;
  const auto modifier = openModifier(path);
  require(modifier->modifyCameraID(id, sizeof id) == VELMAR_ERROR_CODE_SUCCESS_E &&
              modifier->close() == VELMAR_ERROR_CODE_SUCCESS_E,
          "id not changed");
  return timer.seconds();
}

Row cameraIdRow() {
  const std::string path = cameraRecording(Container::Img);
  const std::string metaData = metaDataText(Mapped(path));
  return {.limitName = "the change of a time, pwrite of the metadata",
          .limit = [=] { return changeTime(path) + writeBlock(path, metaData); },
          .ours = [=] { return changeCameraId(path); },
          .reach = {},
          .reachExtra = 20e-6};
}

void sync(int (*call)(int), const OpenFile& file) { require(call(file.get()) == 0, "no sync"); }

// As an edit has them: of a file beside the recording, of its name, of the recording, and of the
// folder again.
double makeFourSyncs(const std::string& path) {
  const std::string beside = path + ".beside";
  const std::string folder = std::filesystem::path(path).parent_path();
  const std::uint64_t time = timeOf(changedFrame());
  const WallTimer timer;
  {
    const OpenFile file(beside, O_WRONLY | O_CREAT | O_EXCL);
    file.write(&time, sizeof time);
    sync(::fdatasync, file);
  }
  sync(::fsync, OpenFile(folder, O_RDONLY | O_DIRECTORY));
  const OpenFile file(path, O_WRONLY);
  require(::pwrite(file.get(), &time, sizeof time, 0) == sizeof time, "bytes not written");
  sync(::fdatasync, file);
  std::filesystem::remove(beside);
  sync(::fsync, OpenFile(folder, O_RDONLY | O_DIRECTORY));
  return timer.seconds();
}

double editTime(const std::string& path) {
  using namespace velmar::toolkit;
  static std::uint64_t time = timeOf(changedFrame()) / 1000 * 1000;
  time += 1000;  // an rtv holds milliseconds
  EditRequest request;
  request.sensorTimes = {{changedFrame(), time}};
  const WallTimer timer;
  const FileLock lock(path, FileLock::Kind::Edit);
  EditPlan(Recording(path, lock), request).apply(lock);
  return timer.seconds();
}

Row toolkitRow(Container container) {
  const std::string path = cameraRecording(container);
  const std::string bare = Workspace::path("bare-edit");
  std::filesystem::copy_file(path, bare, std::filesystem::copy_options::overwrite_existing);
  return {.limitName = "four syncs: a small file, its folder, 8 bytes in place, the folder",
          .limit = [=] { return makeFourSyncs(bare); },
          .ours = [=] { return editTime(path); },
          .reach = 1.3,
          .reachExtra = {}};
}

}  // namespace

void addEditRows() {
  constexpr int kRepetitions = 101;
  constexpr int kSyncedRepetitions = 31;
  addRow("change one frame's time, img of 260 MB", imgTimeRow, kRepetitions);
  addRow("change one frame's time, rtv 03 of 260 MB", rtvTimeRow, kRepetitions);
  addRow("change the camera id, img of 260 MB", cameraIdRow, kRepetitions);
  addRow(
      "edit one frame's time as the tool does, img of 260 MB",
      [] { return toolkitRow(Container::Img); }, kSyncedRepetitions);
  addRow(
      "edit one frame's time as the tool does, rtv 03 of 260 MB",
      [] { return toolkitRow(Container::Rtv03); }, kSyncedRepetitions);
}
