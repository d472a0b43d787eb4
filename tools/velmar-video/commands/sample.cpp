#include "program/DescriptionOptions.h"
#include "program/Tool.h"
#include "toolkit/creating/SampleDrive.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string output;
  SampleDrive drive;
  RtvVersionOption rtvVersion;
  bool force = false;
};

ExitStatus drawSample(const Options& options, CommandJob& job) {
  checkExtension(options.output);
  const ReservedOutput reserved(options.output, {}, options.force);
  SampleDrive drive = options.drive;
  drive.version = options.rtvVersion.version(options.output).value_or(drive.version);
  recordSample(drive, options.output, job);
  return job.status();
}

void checkUsage(const Options& options) {
  FrameClock(0, options.drive.framesPerSecond);  // says what is wrong with the rate
  options.rtvVersion.version(options.output);
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("output", options.output, "The recording to make, OUTPUT.img or OUTPUT.rtv")
      ->required();
  command
      .add_option("--frames", options.drive.frames,
                  "Number of frames, 1 to 10000000; 50 if not given")
      ->type_name("N")
      ->check(CLI::Range(1U, 10000000U).description(""));
  addParsedOption(
      command, "--size", "WxH", "Size in pixels, 1280x800 if not given",
      [&options](const std::string& text) { options.drive.size = parsePictureSize(text); });
  addFrameRateOption(
      command, [&options](double rate) { options.drive.framesPerSecond = rate; },
      "Frames a second, 30 if not given");
  options.rtvVersion.addTo(command);
  command.add_flag("--force", options.force, "Replace an existing output");
}

}  // namespace

void addSampleCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"sample", "Draw a short drive on a country road, to have a recording to try.",
       "sample drive.img --frames 300"},
      {addOptions, drawSample, checkUsage});
}

}  // namespace velmar::tool
