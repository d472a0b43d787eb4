#include "toolkit/video/ExportVideo.h"

#include <filesystem>

#include "program/EachFile.h"
#include "program/OutputOptions.h"
#include "program/SelectionOptions.h"
#include "program/Tool.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

constexpr char kDefaultKind[] = "mkv";

struct Options {
  OutputOptions outputs;
  JobsOption jobs;
  std::string kind = kDefaultKind;
  const CLI::Option* kindOption = nullptr;
  FrameSelection selection;
  bool constantRate = false;
  bool force = false;
};

ExitStatus exportFrames(const Options& options, CommandJob& job) {
  const auto tasks =
      options.outputs.tasks(job, isRecordingName, "recording", [&](const auto& name) {
        return std::filesystem::path(name).replace_extension(options.kind).string();
      });
  const std::vector<std::string> inputs = inputsOf(tasks);
  OutputFolders folders;
  SelectedFrames selected(options.selection, tasks.size());
  const auto work = [&](std::size_t at, Job& fileJob, StandardOutput& /*output*/) {
    const auto& [input, output] = tasks[at];
    videoContainer(output);
    checkOutput(output, inputs, options.force);
    const Recording recording = openRecording(input, fileJob);
    const auto frames = selected.of(recording);
    if (frames.empty()) return;
    options.outputs.makeFolder(tasks[at], folders);
    exportVideo(recording, frames, {output, options.constantRate}, fileJob);
  };
  forEachFile(inputs, options.jobs.count(), "recordings", work, job);
  selected.check(job);
  return job.status();
}

void checkUsage(const Options& options) {
  options.outputs.checkUsage("export");
  const bool areMany = options.outputs.areMany();
  if (!areMany && options.kindOption->count() > 0) {
    throw UsageError("export: --as goes with --output-dir; the name of OUTPUT says what it is");
  }
  const bool isAvi =
      areMany ? options.kind == "avi" : options.outputs.inputs.inputs.at(1).ends_with(".avi");
  if (options.constantRate && !isAvi) throw UsageError("export: --constant-rate needs an .avi");
}

void addOptions(CLI::App& command, Options& options) {
  options.outputs.addTo(
      command,
      "INPUT OUTPUT: the recording, and the video to make, OUTPUT.mkv, OUTPUT.mp4, "
      "OUTPUT.mov or OUTPUT.avi. With --output-dir: recordings, and folders of "
      "them");
  options.kindOption =
      command
          .add_option("--as", options.kind,
                      "With --output-dir: mkv, mp4, mov or avi; mkv if not given")
          ->type_name("KIND")
          ->check(CLI::IsMember(std::vector<std::string>{"mkv", "mp4", "mov", "avi"}));
  addRecordingSelectionOptions(command, options.selection);
  command.add_flag("--constant-rate", options.constantRate,
                   "avi: give the frames even times, by their average rate");
  command.add_flag("--force", options.force, "Replace existing outputs");
  options.jobs.addTo(command, "recordings");
}

}  // namespace

void addExportCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"export", "Write frames as a video, the stored JPEGs as they are, with their capture times.",
       "export drive.img drive.mkv\n"
       "  velmar-video export day --recursive --output-dir videos --as mp4"},
      {addOptions, exportFrames, checkUsage});
}

}  // namespace velmar::tool
