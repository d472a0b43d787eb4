#include "program/DescriptionOptions.h"
#include "program/SelectionOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/copying/CopyFrames.h"
#include "toolkit/copying/Scenes.h"
#include "toolkit/text/TimeText.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string input;
  SceneOutput output;
  PartForm form;
};

ExitStatus split(const Options& options, CommandJob& job) {
  checkExtension(options.output.path);
  checkSameContainer(options.input, options.output.path);
  const Recording recording = openRecording(options.input, job);
  if (!options.output.strip.ids) checkDeviceId(recording, job);
  StandardOutput output;
  copyScenes(recording, partsOf(recording, options.form), options.output, job,
             [&](const std::string& path, const Scene& part) {
               output.write(sceneLine(recording, path, part));
               output.flush();
             });
  return job.status();
}

void checkUsage(const Options& options) {
  const PartForm& form = options.form;
  if (!form.duration && !form.size && !form.gap) {
    throw UsageError("split: --duration, --size or --at-gaps is needed");
  }
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("input", options.input, "The recording")->required();
  command
      .add_option("output", options.output.path,
                  "The name that those of the parts are made of: " + std::string(kNumberedNames))
      ->required();
  PartForm& form = options.form;
  addDurationOption(
      command, "--duration",
      "How long a part may be, such as 60s or 10min, counted on from frame 0",
      [&form](std::int64_t micros) { form.duration = micros; }, 1);
  command
      .add_option(
          "--size", form.size,
          "How large the file of a part may be, such as 500M or 4G (powers of 1024); larger "
          "if it has one frame only")
      ->type_name("BYTES")
      ->transform(CLI::AsSizeValue(false))
      ->check(CLI::PositiveNumber.description(""));
  addDurationOption(
      command, "--at-gaps", "Between frames that are farther apart than this, such as 2s",
      [&form](std::int64_t micros) { form.gap = micros; }, 1);
  addStripOption(command, options.output.strip);
  command.add_flag("--force", options.output.force, "Replace existing outputs");
}

}  // namespace

void addSplitCommand(Tool& tool) {
  tool.addCommand<Options>({"split", "Copy a recording into several, one behind the other.",
                            "split drive.img part.img --duration 10min\n"
                            "  velmar-video split drive.rtv drive-%Y%m%d-%H%M%S.rtv --at-gaps 2s"},
                           {addOptions, split, checkUsage});
}

}  // namespace velmar::tool
