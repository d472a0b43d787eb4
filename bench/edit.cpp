#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <memory>

#include "Bench.h"
#include "Files.h"

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

}  // namespace

void addEditRows() {
  constexpr int kRepetitions = 101;
  addRow("change one frame's time, img of 260 MB", imgTimeRow, kRepetitions);
  addRow("change one frame's time, rtv 03 of 260 MB", rtvTimeRow, kRepetitions);
  addRow("change the camera id, img of 260 MB", cameraIdRow, kRepetitions);
}
