#include <memory>

#include "FrameSelection.h"
#include "FrameTimes.h"
#include "RecordingFile.h"
#include "StandardOutput.h"
#include "TimeText.h"
#include "Tool.h"

namespace {

struct Options {
  std::string file;
  FrameSelection selection;
  bool json = false;
  bool csv = false;
};

struct Frame {
  unsigned int index;
  FrameTimes times;
  unsigned int size;
};

Frame readFrame(VelmarVideoFileReader& reader, const std::string& file, unsigned int index) {
  unsigned long arrived = 0;
  unsigned int size = 0;
  VELMAR_ERROR_CODE_E code = reader.getArrivedTime(index, arrived);
  if (code == VELMAR_ERROR_CODE_SUCCESS_E) code = reader.getRawImageSize(index, size, false);
  if (code != VELMAR_ERROR_CODE_SUCCESS_E) throw Failure(file, code);
  return {index, {sensorTime(reader, file, index), arrived}, size};
}

std::string jsonLine(const Frame& frame) {
  return "{\"index\":" + std::to_string(frame.index) +
         ",\"sensor_time_us\":" + std::to_string(frame.times.sensor) +
         ",\"arrived_time_us\":" + std::to_string(frame.times.arrived) +
         ",\"size\":" + std::to_string(frame.size) + "}\n";
}

std::string csvLine(const Frame& frame) {
  return std::to_string(frame.index) + "," + std::to_string(frame.times.sensor) + "," +
         std::to_string(frame.times.arrived) + "," + std::to_string(frame.size) + "\n";
}

std::string column(const std::string& text, std::size_t width) {
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

std::string textLine(const std::string& index, const std::string& sensor,
                     const std::string& arrived, const std::string& size) {
  return column(index, 10) + column(sensor, 29) + column(arrived, 29) + column(size, 12) + "\n";
}

std::string textLine(const Frame& frame) {
  return textLine(std::to_string(frame.index), formatTime(frame.times.sensor),
                  formatTime(frame.times.arrived), std::to_string(frame.size));
}

ExitStatus listFrames(const Options& options) {
  const auto reader = openRecording(options.file);
  const auto selected = options.selection.frames(*reader, options.file);
  StandardOutput output;
  if (options.csv) output.write("index,sensor_time_us,arrived_time_us,size\n");
  if (!options.csv && !options.json) {
    output.write(textLine("frame", "captured", "arrived", "bytes"));
  }
  for (const unsigned int index : selected) {
    const Frame frame = readFrame(*reader, options.file, index);
    output.write(options.json ? jsonLine(frame) : options.csv ? csvLine(frame) : textLine(frame));
  }
  output.flush();
  return ExitStatus::Done;
}

}  // namespace

void addFramesCommand(Tool& tool) {
  CLI::App* command = tool.addCommand("frames", "List the frames of a recording.",
                                      "frames drive.img --time +10s:+12.5s");
  const auto options = std::make_shared<Options>();
  command->add_option("file", options->file, "The recording")->required();
  auto* json = command->add_flag("--json", options->json, "One JSON object for each frame");
  command->add_flag("--csv", options->csv, "A table with commas")->excludes(json);
  options->selection.addTo(*command);
  command->callback([&tool, options] { tool.run = [options] { return listFrames(*options); }; });
}
