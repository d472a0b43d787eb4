#include "program/DescriptionOptions.h"
#include "program/EachFile.h"
#include "program/OutputOptions.h"
#include "program/SelectionOptions.h"
#include "program/Tool.h"
#include "toolkit/copying/CopyFrames.h"
#include "toolkit/copying/Scenes.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  OutputOptions outputs;
  JobsOption jobs;
  FrameSelection selection;
  const CLI::Option* where = nullptr;
  SceneForm form;
  Strip strip;
  bool force = false;
};

// Makes a recording of each run of the frames.
void cutScenes(const Recording& recording, const std::vector<unsigned int>& frames,
               const SceneOutput& scenes, const SceneForm& form, Job& job, StandardOutput& output) {
  copyScenes(recording, scenesOf(recording, frames, form), scenes, job,
             [&](const std::string& made, const Scene& scene) {
               output.write(sceneLine(recording, made, scene));
             });
}

ExitStatus cut(const Options& options, CommandJob& job) {
  const auto tasks = options.outputs.tasks(job, isRecordingName, "recording",
                                           [](const std::string& name) { return name; });
  const bool makesScenes = options.where->count() > 0 || options.outputs.inputs.hasRanges();
  const std::vector<std::string> inputs = inputsOf(tasks);
  OutputFolders folders;
  SelectedFrames selected(options.selection, tasks.size());
  const auto work = [&](std::size_t at, Job& fileJob, StandardOutput& output) {
    const auto& [input, path] = tasks[at];
    checkExtension(input);
    checkExtension(path);
    checkSameContainer(input, path);
    const Recording recording = openRecording(input, fileJob);
    const auto frames = selected.of(recording);
    if (frames.empty()) return;
    if (!options.strip.ids) checkDeviceId(recording, fileJob);
    options.outputs.makeFolder(tasks[at], folders);
    if (makesScenes) {
      const SceneOutput scenes{path, !options.outputs.areMany(), options.force, options.strip,
                               inputs};
      return cutScenes(recording, frames, scenes, options.form, fileJob, output);
    }
    const ReservedOutput reserved(path, inputs, options.force);
    copyFrames({{&recording, frames}}, path, recording.description(), fileJob, options.strip);
  };
  forEachFile(inputs, options.jobs.count(), "recordings", work, job);
  selected.check(job);
  return job.status();
}

void checkUsage(const Options& options) { options.outputs.checkUsage("cut"); }

void addOptions(CLI::App& command, Options& options) {
  options.outputs.addTo(command,
                        "INPUT OUTPUT: the recording, and the one to make. With --where OUTPUT is "
                        "the name that those "
                        "of the scenes are made of: " +
                            std::string(kNumberedNames) +
                            ". With --output-dir: recordings, and folders of them");
  options.outputs.inputs.addRangesTo(command, &options.selection);
  auto* where = addRecordingSelectionOptions(command, options.selection);
  where->excludes(command.get_option("--every"));
  options.where = where;
  addSceneFormOptions(command, options.form, where);
  addStripOption(command, options.strip);
  command.add_flag("--force", options.force, "Replace existing outputs");
  options.jobs.addTo(command, "recordings");
}

}  // namespace

void addCutCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"cut", "Copy some frames into a recording of their own, as they are.",
       "cut drive.img scene.img --time +10s:+12.5s\n"
       "  velmar-video cut drive.rtv scene.rtv --where 'speed_m_s > 20' --join 2s --pad 1s\n"
       "  velmar-video cut day --recursive --output-dir scenes --where 'speed_km_h > 50'\n"
       "  velmar-video catalog find fleet.db --where 'speed_m_s > 5' | velmar-video cut "
       "--ranges-from - --output-dir scenes"},
      {addOptions, cut, checkUsage});
}

}  // namespace velmar::tool
