#include "program/DescriptionOptions.h"
#include "program/SelectionOptions.h"
#include "program/Tool.h"
#include "toolkit/copying/Conversion.h"
#include "toolkit/copying/CopyFrames.h"
#include "toolkit/text/Joined.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string input;
  std::string output;
  RtvVersionOption rtvVersion;
  Strip strip;
  bool strict = false;
  bool force = false;
};

ExitStatus convert(const Options& options, CommandJob& job) {
  checkExtension(options.output);
  const ReservedOutput reserved(options.output, {options.input}, options.force);
  const Recording recording = openRecording(options.input, job);
  checkFramesCount(options.output, recording.framesCount());
  const RecordingDescription description =
      convertedDescription(recording, options.output, options.rtvVersion.version(options.output));
  const std::string lost =
      joined(lostInConversion(recording, options.output, description.version, options.strip));
  if (options.strict && !lost.empty()) {
    throw Failure(options.output, "it could not hold " + lost,
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  copyFrames({{&recording, allFrames(recording)}}, options.output, description, job, options.strip);
  if (!lost.empty()) job.lose(options.output, "it does not hold " + lost);
  return job.status();
}

void checkUsage(const Options& options) { options.rtvVersion.version(options.output); }

void addOptions(CLI::App& command, Options& options) {
  command.add_option("input", options.input, "The recording to copy")->required();
  command.add_option("output", options.output, "The recording to make, OUTPUT.img or OUTPUT.rtv")
      ->required();
  options.rtvVersion.addTo(command);
  addStripOption(command, options.strip);
  command.add_flag("--strict", options.strict,
                   "Refuse if the output cannot hold something that the input has");
  command.add_flag("--force", options.force, "Replace an existing output");
}

}  // namespace

void addConvertCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"convert", "Copy a recording into the other container, without decoding a frame.",
       "convert drive.img drive.rtv --rtv-version 04"},
      {addOptions, convert, checkUsage});
}

}  // namespace velmar::tool
