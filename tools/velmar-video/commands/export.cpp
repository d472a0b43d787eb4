#include "toolkit/video/ExportVideo.h"

#include "program/SelectionOptions.h"
#include "program/Tool.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string input;
  VideoExport video;
  FrameSelection selection;
  bool force = false;
};

ExitStatus exportFrames(const Options& options, CommandJob& job) {
  videoContainer(options.video.path);
  checkOutput(options.video.path, {options.input}, options.force);
  const Recording recording = openRecording(options.input, job);
  exportVideo(recording, options.selection.frames(recording), options.video, job);
  return job.status();
}

void checkUsage(const Options& options) {
  if (options.video.constantRate && !options.video.path.ends_with(".avi")) {
    throw UsageError("export: --constant-rate needs an .avi");
  }
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("input", options.input, "The recording")->required();
  command
      .add_option("output", options.video.path,
                  "The video to make, OUTPUT.mkv, OUTPUT.mp4, OUTPUT.mov or OUTPUT.avi")
      ->required();
  addRecordingSelectionOptions(command, options.selection);
  command.add_flag("--constant-rate", options.video.constantRate,
                   "avi: give the frames even times, by their average rate");
  command.add_flag("--force", options.force, "Replace an existing output");
}

}  // namespace

void addExportCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"export", "Write frames as a video, the stored JPEGs as they are, with their capture times.",
       "export drive.img drive.mkv"},
      {addOptions, exportFrames, checkUsage});
}

}  // namespace velmar::tool
