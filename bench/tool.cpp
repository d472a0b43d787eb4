#include <cstdlib>
#include <filesystem>

#include "Bench.h"
#include "Files.h"
#include "Peers.h"

namespace {

constexpr int kRepetitions = 7;

double run(const std::string& command) {
  const WallTimer timer;
  require(std::system(command.c_str()) == 0, command + ": failed");
  return timer.seconds();
}

Row listRow(Container container) {
  const unsigned int frames = frameCount(kRtvFramesMax);
  const std::string path = recording(container, Frames::small(), "small", frames);
  const std::string other = listablePeerFile(frames);
  const std::string tool = std::string(VELMAR_TOOL) + " frames --json '" + path + "' >/dev/null";
  Row row = {.limitName = "ffprobe, the packets of an MKV of as many",
             .limit = {},
             .ours = [=] { return run(tool); },
             .reach = 1,
             .reachExtra = {}};
  if (!other.empty()) {
    const std::string probe = "ffprobe -v quiet -show_packets -of json '" + other + "' >/dev/null";
    row.limit = [=] { return run(probe); };
  }
  return row;
}

double extract(const std::string& path, unsigned int jobs) {
  constexpr char kFrames[] = "0:48";
  const std::string folder = Workspace::path("extracted");
  const double seconds =
      run(std::string(VELMAR_TOOL) + " --quiet extract '" + path + "' --output '" + folder +
          "' --range " + kFrames + " --as ppm --jobs " + std::to_string(jobs));
  std::filesystem::remove_all(folder);
  return seconds;
}

Row extractRow() {
  constexpr double kShareOfTwiceTheRate = 0.9;
  const std::string path = cameraRecording(Container::Img);
  return {.limitName = "half of one job's time",
          .limit = [=] { return extract(path, 1) / 2; },
          .ours = [=] { return extract(path, 2); },
          .reach = 1 / kShareOfTwiceTheRate,
          .reachExtra = {}};
}

}  // namespace

void addToolRows() {
  addRow(
      "frames --json, img of 65,535 frames", [] { return listRow(Container::Img); }, kRepetitions);
  addRow(
      "frames --json, rtv 03 of 65,535 frames", [] { return listRow(Container::Rtv03); },
      kRepetitions);
  addRow("extract --as ppm --jobs 2, 48 frames", extractRow, kRepetitions);
}
