#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "Bench.h"
#include "Files.h"
#include "OpenRows.h"
#include "Peers.h"

namespace {

double openOurs(const std::string& path) {
  const CpuTimer timer;
  const auto reader = openReader(path);
  return timer.seconds();
}

double mapIndex(const std::string& path, unsigned int count) {
  const CpuTimer timer;
  const Mapped file(path);
  const auto index = swappedIndex(file, count);
  return timer.seconds();
}

double mapIndexAndCopyFirst(const std::string& path, std::vector<unsigned char>& buffer) {
  const CpuTimer timer;
  const Mapped file(path);
  parseJson(metaDataText(file));
  const auto index = swappedIndex(file, cameraFrames());
  std::memcpy(buffer.data(), file.data() + index[0].offset, index[0].size);
  return timer.seconds();
}

double openAndCopyFirst(const std::string& path, std::vector<unsigned char>& buffer) {
  const CpuTimer timer;
  const auto reader = openReader(path);
  const auto size = static_cast<unsigned int>(buffer.size());
  require(reader->getRawImage(0, size, buffer.data()) == VELMAR_ERROR_CODE_SUCCESS_E,
          path + ": frame not copied");
  return timer.seconds();
}

Row openToFirstFrame() {
  const std::string path = cameraRecording(Container::Img);
  const auto buffer = std::make_shared<std::vector<unsigned char>>(Frames::camera().largest());
  return {.limitName = "map, pass, copy, JSON parse of the metadata",
          .limit = [=] { return mapIndexAndCopyFirst(path, *buffer); },
          .ours = [=] { return openAndCopyFirst(path, *buffer); },
          .reach = 1.5,
          .reachExtra = {},
          .peers = openingPeers(Frames::camera(), "camera", cameraFrames())};
}

std::unique_ptr<unsigned char[]> copiedTable(const Mapped& file, Container container,
                                             unsigned int count) {
  const std::size_t size = std::size_t{count} * rtvTagSize(container);
  std::unique_ptr<unsigned char[]> table(new unsigned char[size]);
  std::memcpy(table.get(), file.data() + rtvHeaderSize(container), size);
  benchmark::DoNotOptimize(table.get());
  benchmark::ClobberMemory();
  return table;
}

double mapTable(const std::string& path, Container container, unsigned int count) {
  const CpuTimer timer;
  const Mapped file(path);
  const auto table = copiedTable(file, container, count);
  return timer.seconds();
}

// One allocated block a tag, which takes the 109 bytes that the tag ends with.
double mapTableAndCan(const std::string& path, unsigned int count) {
  const unsigned int tagSize = rtvTagSize(Container::Rtv04);
  const auto release = [](can_data* block) { std::free(block); };
  std::vector<std::unique_ptr<can_data, decltype(release)>> blocks;
  const CpuTimer timer;
  const Mapped file(path);
  const auto table = copiedTable(file, Container::Rtv04, count);
  blocks.reserve(count);
  for (unsigned int i = 0; i < count; ++i) {
    blocks.emplace_back(static_cast<can_data*>(std::malloc(sizeof(can_data))));
    std::memcpy(blocks.back().get(), table.get() + (i + 1) * tagSize - sizeof(can_data_io),
                sizeof(can_data_io));
  }
  benchmark::ClobberMemory();
  return timer.seconds();
}

}  // namespace

Row openImgRow(unsigned int count, std::optional<double> reach) {
  const std::string path = recording(Container::Img, Frames::small(), "small", count);
  return {.limitName = "map, one byte-swapping pass into a fresh array",
          .limit = [=] { return mapIndex(path, count); },
          .ours = [=] { return openOurs(path); },
          .reach = reach,
          .reachExtra = {}};
}

Row openRtvRow(Container container, unsigned int count, std::optional<double> reach) {
  const std::string path = recording(container, Frames::small(), "small", count);
  const bool hasCan = container == Container::Rtv04;
  return {
      .limitName = hasCan ? "map, copy of the table, an allocated CAN block a tag"
                          : "map, copy of the table",
      .limit =
          [=] { return hasCan ? mapTableAndCan(path, count) : mapTable(path, container, count); },
      .ours = [=] { return openOurs(path); },
      .reach = reach,
      .reachExtra = {}};
}

void addOpenRows() {
  addRow("open img, 100,000 frames", [] {
    const unsigned int frames = frameCount(100000);
    Row row = openImgRow(frames, 1.5);
    row.peers = openingPeers(Frames::small(), "small", frames);
    return row;
  });
  addRow("open img, 1,500 camera frames, first frame copied", openToFirstFrame);
  const unsigned int tags = frameCount(kRtvFramesMax);
  addRow("open rtv 02, 65,535 tags", [=] { return openRtvRow(Container::Rtv02, tags, 2); });
  addRow("open rtv 03, 65,535 tags", [=] { return openRtvRow(Container::Rtv03, tags, 2); });
  addRow("open rtv 04, 65,535 tags", [=] { return openRtvRow(Container::Rtv04, tags, 1.3); });
}
