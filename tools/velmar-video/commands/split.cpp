#include "program/DescriptionOptions.h"
#include "program/SelectionOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/copying/CopyFrames.h"
#include "toolkit/copying/Scenes.h"

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

// At least a microsecond.
std::int64_t parseLength(const std::string& option, const std::string& text) {
  const std::int64_t micros = parseTimeShift(option, text);
  if (micros > 0) return micros;
  throw UsageError(option + " is a time such as 60s, longer than 0");
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("input", options.input, "The recording")->required();
  command
      .add_option("output", options.output.path,
                  "The name that those of the parts are made of: drive-0001.img, or %04d in it is "
                  "the number, and %Y %m %d %H %M %S are the capture of the first frame in UTC")
      ->required();
  addParsedOption(command, "--duration", "TIME",
                  "How long a part may be, such as 60s or 10min, counted on from frame 0",
                  [&options](const std::string& text) {
                    options.form.duration = parseLength("--duration", text);
                  });
  command
      .add_option(
          "--size", options.form.size,
          "How large the file of a part may be, such as 500M or 4G (powers of 1024); larger "
          "if it has one frame only")
      ->type_name("BYTES")
      ->transform(CLI::AsSizeValue(false))
      ->check(CLI::PositiveNumber.description(""));
  addParsedOption(
      command, "--at-gaps", "TIME", "Between frames that are farther apart than this, such as 2s",
      [&options](const std::string& text) { options.form.gap = parseLength("--at-gaps", text); });
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
