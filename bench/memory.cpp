#include "Bench.h"
#include "Files.h"

namespace {

constexpr unsigned int kFrameSize = 155000;  // 65,535 of them are 10 GB

unsigned int frames() { return frameCount(kRtvFramesMax); }

// What a process of its own says that it needed.
double probe(const std::string& work, const std::string& path) {
  const std::string command = std::string(VELMAR_BENCH_MEMORY_PROBE) + " " + work + " '" + path +
                              "' " + std::to_string(frames()) + " " + std::to_string(kFrameSize);
  return printedBy(command);
}

double tableSize(Container container) {
  const unsigned int recordSize =
      container == Container::Img ? sizeof(IndexRecord) : rtvTagSize(container);
  return static_cast<double>(frames()) * recordSize;
}

Row memoryRow(Container container, const std::string& work) {
  const std::string path = Workspace::path(std::string("large.") + extension(container));
  const bool reads = work == "read";
  if (reads) probe("write", path);
  const double limit = tableSize(container) + (reads ? 0 : kFrameSize);
  return {.limitName = reads ? "the table" : "the table and one frame",
          .limit = [=] { return limit; },
          .ours = [=] { return probe(work, path); },
          .reach = reads ? 2 : 1,
          .reachExtra = {},
          .unit = Unit::Bytes};
}

}  // namespace

void addMemoryRows() {
  constexpr int kRepetitions = 7;
  for (const Container container : {Container::Img, Container::Rtv03}) {
    const std::string file = std::string(container == Container::Img ? "img" : "rtv 03");
    for (const std::string work : {"write", "read"}) {
      addRow(
          "memory to " + work + " an " + file + " of 10 GB",
          [=] { return memoryRow(container, work); }, kRepetitions);
    }
  }
}
