#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>

#include "Bench.h"
#include "Files.h"
#include "Peers.h"
#include "velmar_video/rtv/TaggedVideoParser.h"

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

// What it takes the library to read all that the recordings know of their frames.
double readTables(const std::vector<std::string>& paths) {
  const WallTimer timer;
  for (const std::string& path : paths) {
    TaggedVideoParser parser;
    require(parser.init(path.c_str()) == RTV_ERR_SUCCESS, path + ": not read");
    unsigned short count = 0;
    parser.getFramesCount(count);
    for (unsigned short i = 0; i < count; ++i) {
      frametag03Ver_t tag{};
      can_data_io can{};
      parser.getTag(i, tag);
      parser.getCANRecord(i, can);
      benchmark::DoNotOptimize(tag);
      benchmark::DoNotOptimize(can);
    }
  }
  return timer.seconds();
}

// A scene that is in none of the recordings, so that nothing is listed. They are one file under
// many names.
Row whereRow() {
  const std::string original =
      recording(Container::Rtv04, Frames::small(), "small", frameCount(1000));
  const std::string folder = Workspace::path("drives");
  std::filesystem::create_directories(folder);
  std::vector<std::string> paths;
  for (unsigned int i = 0; i < frameCount(2000); ++i) {
    paths.push_back(folder + "/" + std::to_string(i) + ".rtv");
    std::filesystem::create_hard_link(original, paths.back());
  }
  const std::string command =
      "cd '" + folder + "' && '" + VELMAR_TOOL +
      "' frames *.rtv --where 'speed_m_s > 20 && near(48.137, 11.575, 200)' 2>/dev/null; "
      "test $? = 1";
  return {.limitName = "opening them and reading each tag, with the library",
          .limit = [=] { return readTables(paths); },
          .ours = [=] { return run(command); },
          .reach = 3,
          .reachExtra = {}};
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

std::string quoted(const std::string& path) { return " '" + path + "' "; }

std::string tool(const std::string& command) {
  return std::string(VELMAR_TOOL) + " --quiet " + command;
}

bool hasFfmpeg() {
  static const bool has = std::system("ffmpeg -version >/dev/null 2>&1") == 0;
  return has;
}

// A row of two commands that write the same.
Row commandRow(const std::string& limitName, const std::string& ffmpegs, const std::string& ours,
               double reach) {
  Row row = {.limitName = limitName,
             .limit = {},
             .ours = [=] { return run(ours); },
             .reach = reach,
             .reachExtra = {}};
  if (hasFfmpeg()) row.limit = [=] { return run("ffmpeg -nostdin -v error -y " + ffmpegs); };
  return row;
}

// The camera's recording as a video, made when it is first asked for.
std::string cameraVideo(const std::string& extension) {
  const std::string path = Workspace::path("camera" + extension);
  if (!std::filesystem::exists(path)) {
    // Other rows change a time, and an AVI holds none.
    const std::string options = extension == ".avi" ? "--constant-rate" : "";
    run(tool("export" + quoted(cameraRecording(Container::Img)) + quoted(path) + options));
  }
  return path;
}

Row copyVideoRow() {
  const std::string video = cameraVideo(".mp4");
  const std::string copy = Workspace::path("copy.avi");
  return commandRow(
      "ffmpeg -c copy to an AVI, and sync",
      "-i" + quoted(video) + "-c copy" + quoted(copy) + "&& sync" + quoted(copy),
      tool("create" + quoted(Workspace::path("copied.img")) + quoted(video) + "--force"), 1.1);
}

Row decodeVideoRow() {
  const std::string video = Workspace::path("coded.mp4");
  run("ffmpeg -nostdin -v error -y -i" + quoted(cameraVideo(".mp4")) + "-frames:v " +
      std::to_string(frameCount(240)) + " -c:v libx264 -preset veryfast" + quoted(video));
  return commandRow("ffmpeg -q:v 2 to an AVI of JPEGs, 2 threads",
                    "-threads 2 -i" + quoted(video) + "-threads 2 -c:v mjpeg -q:v 2" +
                        quoted(Workspace::path("coded.avi")),
                    tool("create" + quoted(Workspace::path("coded.img")) + quoted(video) +
                         "--start-time 0 --force 2>/dev/null"),
                    1);
}

Row exportRow() {
  return commandRow(
      "ffmpeg -c copy from an AVI",
      "-i" + quoted(cameraVideo(".avi")) + "-c copy" + quoted(Workspace::path("copy.mkv")),
      tool("export" + quoted(cameraRecording(Container::Img)) +
           quoted(Workspace::path("exported.mkv")) + "--force"),
      1);
}

// Pictures of the first frames of the camera's recording.
Row picturesRow(const std::string& limitName, unsigned int frames, const std::string& extension,
                const std::string& ffmpegs, const std::string& ours, double reach) {
  const unsigned int count = frameCount(frames);
  const std::string folder = Workspace::path("pictures" + extension);
  std::filesystem::create_directories(folder);
  return commandRow(
      limitName,
      "-threads 2 -i" + quoted(cameraVideo(".avi")) + "-frames:v " + std::to_string(count) +
          " -threads 2" + ffmpegs + quoted(folder + "/%06d" + extension),
      tool("extract" + quoted(cameraRecording(Container::Img)) + "--output" + quoted(folder) +
           "--force --jobs 2 --range 0:" + std::to_string(count) + ours),
      reach);
}

// Copies of the camera's recording that are brought to the disk: by the tool, and as files.
Row copyRow(const std::string& command, unsigned int copies) {
  constexpr double kReach = 1.15;
  const std::string path = cameraRecording(Container::Img);
  std::string copyFiles = "true";
  for (unsigned int i = 0; i < copies; ++i) {
    const std::string copy = Workspace::path("copy" + std::to_string(i));
    copyFiles += " && cp" + quoted(path) + quoted(copy) + "&& sync" + quoted(copy);
  }
  const auto remove = [] {
    for (const auto& entry : std::filesystem::directory_iterator(Workspace::path(""))) {
      if (entry.path().filename().string().starts_with("copy")) {
        std::filesystem::remove(entry.path());
      }
    }
  };
  const auto timed = [remove](const std::string& work) {
    remove();
    const double seconds = run(work);
    remove();
    return seconds;
  };
  return {.limitName = "cp and sync of as many bytes",
          .limit = [=] { return timed(copyFiles); },
          .ours = [=] { return timed(tool(command) + ">/dev/null 2>&1"); },
          .reach = kReach,
          .reachExtra = {}};
}

void addCopyRows() {
  const std::string path = quoted(cameraRecording(Container::Img));
  const std::string copy = quoted(Workspace::path("copy.img"));
  addRow(
      "cut of all frames", [=] { return copyRow("cut" + path + copy, 1); }, kRepetitions);
  addRow(
      "split --duration 10s", [=] { return copyRow("split" + path + copy + "--duration 10s", 1); },
      kRepetitions);
  addRow(
      "concat of two", [=] { return copyRow("concat" + copy + path + path, 2); }, kRepetitions);
}

}  // namespace

void addToolRows() {
  addRow(
      "frames --json, img of 65,535 frames", [] { return listRow(Container::Img); }, kRepetitions);
  addRow(
      "frames --json, rtv 03 of 65,535 frames", [] { return listRow(Container::Rtv03); },
      kRepetitions);
  addRow("frames --where, 2,000 rtv 04 of 1,000 frames", whereRow, kRepetitions);
  addCopyRows();
  addRow("extract --as ppm --jobs 2, 48 frames", extractRow, kRepetitions);
  addRow("create from an MP4 of JPEGs, 1,500 frames", copyVideoRow, kRepetitions);
  if (hasFfmpeg()) {
    addRow("create from an MP4 of H.264, 240 frames", decodeVideoRow, kRepetitions);
  }
  constexpr int kOfPictures = 3;  // they take long
  addRow(
      "extract --as jpg --scale 1/4 --jobs 2, 1,500 frames",
      [] {
        return picturesRow("ffmpeg, scale=iw/4:-1, from an AVI", 1500, ".jpg",
                           " -vf scale=iw/4:-1 -q:v 3", " --as jpg --scale 1/4", 0.5);
      },
      kOfPictures);
  addRow(
      "extract --as png --jobs 2, 300 frames",
      [] {
        return picturesRow("ffmpeg's PNG encoder, 2 threads", 300, ".png", "", " --as png", 0.35);
      },
      kOfPictures);
  addRow("export to an MKV, 1,500 frames", exportRow, kRepetitions);
}
