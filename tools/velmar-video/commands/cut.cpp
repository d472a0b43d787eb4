#include "program/DescriptionOptions.h"
#include "program/SelectionOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/editing/CopyFrames.h"
#include "toolkit/editing/Scenes.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/text/TimeText.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string input;
  std::string output;
  FrameSelection selection;
  const CLI::Option* where = nullptr;
  SceneForm form;
  bool force = false;
};

std::string lineOf(const Recording& recording, const std::string& path, const Scene& scene) {
  return printable(path) + ": frames " + std::to_string(scene.first) + " to " +
         std::to_string(scene.last) + ", " + formatTime(recording.sensorTime(scene.first)) +
         " to " + formatTime(recording.sensorTime(scene.last)) + "\n";
}

void cutScenes(const Options& options, const Recording& recording, CommandJob& job) {
  const auto chosen = options.selection.frames(recording);
  const auto scenes = scenesOf(recording, chosen, options.form);
  StandardOutput output;
  copyScenes(recording, scenes, options.output, options.force, job,
             [&](const std::string& path, const Scene& scene) {
               output.write(lineOf(recording, path, scene));
               output.flush();
             });
}

ExitStatus cut(const Options& options, CommandJob& job) {
  checkExtension(options.output);
  checkSameContainer(options.input, options.output);
  std::optional<ReservedOutput> reserved;
  const bool makesScenes = options.where->count() > 0;
  if (!makesScenes) {
    reserved.emplace(options.output, std::vector{options.input}, options.force);
  }
  const Recording recording = openRecording(options.input, job);
  checkDeviceId(recording, job);
  if (makesScenes) {
    cutScenes(options, recording, job);
  } else {
    copyFrames({{&recording, options.selection.frames(recording)}}, options.output,
               recording.description(), job);
  }
  return job.status();
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("input", options.input, "The recording to copy from")->required();
  command
      .add_option("output", options.output,
                  "The recording to make; with --where one for each run of frames, with %04d in "
                  "the name for its number, or the number at the end")
      ->required();
  auto* where = addRecordingSelectionOptions(command, options.selection);
  where->excludes(command.get_option("--every"));
  options.where = where;
  addDurationOption(command, "--join",
                    "Join runs of frames that are no farther apart than this, such as 2s, with the "
                    "frames between them",
                    options.form.join)
      ->needs(where);
  addDurationOption(command, "--pad",
                    "Add the frames captured up to this long before and behind each run, such as "
                    "1s; runs that overlap then become one",
                    options.form.pad)
      ->needs(where);
  command.add_flag("--force", options.force, "Replace existing outputs");
}

}  // namespace

void addCutCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"cut", "Copy some frames into a recording of their own, as they are.",
       "cut drive.img scene.img --time +10s:+12.5s\n"
       "  velmar-video cut drive.rtv scene.rtv --where 'speed_m_s > 20' --join 2s --pad 1s"},
      {addOptions, cut});
}

}  // namespace velmar::tool
