#include <algorithm>

#include "program/DescriptionOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/base/UndoFile.h"
#include "toolkit/recording/OpenFailure.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/rescue/RecoverFrames.h"
#include "toolkit/rescue/Recovery.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/TimesCsv.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string input;
  std::string output;
  std::optional<double> framesPerSecond;
  std::string timesFile;
  std::optional<std::uint64_t> startTime;
  std::optional<detail::JpegSize> size;
  DescriptionOptions description;
  bool keepDamaged = false;
  bool force = false;
};

LeftoverTimes timesOf(const Options& options, Job& job) {
  LeftoverTimes times{options.framesPerSecond, options.startTime.value_or(0), {}};
  if (!options.timesFile.empty()) {
    times.times = readAllTimes(readFrameTable(options.timesFile, job));
  }
  return times;
}

void showResult(const Options& options, const Recovered& recovered) {
  StandardOutput output;
  output.write(printable(options.output) + ": " + std::to_string(recovered.frames) + " of " +
               std::to_string(recovered.framesCount) + " frames recovered\n");
  output.flush();
}

// The files that are read must not be written.
ReservedOutput reserveOutput(const Options& options) {
  checkExtension(options.output);
  checkLeftoverName(options.input, options.output);
  std::vector<std::string> inputs = options.description.inputs();
  inputs.insert(inputs.end(), {options.input, options.input + ".index"});
  if (!options.timesFile.empty()) inputs.push_back(options.timesFile);
  checkOutput(options.output, inputs, options.force);
  // What an earlier recover left when it was interrupted can be made again.
  return {recoveringPath(options.output), inputs, true};
}

// A recording in which nothing but an interrupted edit is wrong.
ExitStatus undoInterruptedEdit(const std::string& file) {
  if (const auto failure = pathFailure(file)) throw Failure(*failure);
  const UndoState state = undoEdit(file, FileLock(file, FileLock::Kind::Edit));
  if (state == UndoState::None) {
    throw Failure(file,
                  "no edit of it was interrupted; with an OUTPUT, a recording is made of what is "
                  "left of it",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  StandardOutput output;
  output.write(printable(file) + (state == UndoState::Pending
                                      ? ": the interrupted edit is undone\n"
                                      : ": the interrupted edit had not changed anything\n"));
  output.flush();
  return ExitStatus::Done;
}

ExitStatus recover(const Options& options, CommandJob& job) {
  if (options.output.empty()) return undoInterruptedEdit(options.input);
  const ReservedOutput reserved = reserveOutput(options);
  RecoveryRequest request{options.input, options.output};
  request.times = timesOf(options, job);
  request.version = options.description.rtvVersion.version(options.output);
  request.startTime = options.startTime;
  request.size = options.size;
  request.keepDamaged = options.keepDamaged;
  request.describe = [&](RecordingDescription& description) {
    options.description.change(description, options.output, job);
  };
  showResult(options, recoverRecording(request, job));
  return job.status();
}

void checkUsage(const Options& options) {
  if (options.output.empty()) {
    if (isRecordingName(options.input)) return;
    throw UsageError("recover: OUTPUT is missing, the recording to make");
  }
  if (isRtvPath(options.output) && (options.framesPerSecond || !options.timesFile.empty())) {
    throw UsageError("recover: an rtv has its frames' times in the file; no --fps or --times");
  }
  if (options.framesPerSecond) FrameClock(0, *options.framesPerSecond);
  if (options.framesPerSecond && !options.timesFile.empty()) {
    throw UsageError("recover: --fps and --times exclude each other");
  }
  if (options.startTime && !isRtvPath(options.output) && !options.framesPerSecond) {
    throw UsageError("recover: --start-time goes with --fps or with an .rtv");
  }
  options.description.rtvVersion.version(options.output);
}

void addTimeOptions(CLI::App& command, Options& options) {
  addFrameRateOption(
      command, [&options](double rate) { options.framesPerSecond = rate; },
      "img: frame rate, which gives times to frames that have no record in the index or the index "
      "journal");
  command
      .add_option(
          "--times", options.timesFile,
          "img: these times as a table with the columns sensor_time_us and arrived_time_us, "
          "a row for each frame of the recording")
      ->type_name("CSV");
  addStartTimeOption(command, options.startTime,
                     "When an rtv starts, or, with --fps, when an img's first frame was captured. "
                     "Microseconds since 1970 or RFC 3339");
}

void addOptions(CLI::App& command, Options& options) {
  command
      .add_option(
          "input", options.input,
          "The temporary file, or a damaged recording, which stays as it is; an interrupted "
          "img has an index journal, INPUT.index, beside it")
      ->required();
  auto* output = command.add_option(
      "output", options.output,
      "The recording to make, OUTPUT.img or OUTPUT.rtv. Without OUTPUT, an interrupted edit of "
      "INPUT is undone in place");
  addTimeOptions(command, options);
  addParsedOption(command, "--size", "WxH",
                  "Size in pixels to name in the recording, the first frame's if not given",
                  [&options](const std::string& text) { options.size = parsePictureSize(text); });
  options.description.addTo(command);
  command.add_flag("--keep-damaged", options.keepDamaged,
                   "Also keep frames whose picture is cut short or has a hole");
  command.add_flag("--force", options.force, "Replace an existing output");
  const std::vector<CLI::Option*> all = command.get_options();
  std::for_each(std::find(all.begin(), all.end(), output) + 1, all.end(),
                [output](CLI::Option* option) { option->needs(output); });
}

}  // namespace

void addRecoverCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"recover",
       "Recover the frames of an interrupted or damaged recording, or undo an interrupted edit.",
       "recover drive.img.tmp drive.img --device-id 0aff\n"
       "  velmar-video recover drive.rtv.tmp drive.rtv --start-time 2026-11-21T08:00:00Z\n\n"
       "Without OUTPUT, as in recover drive.img, an interrupted edit is undone in place.\n"
       "Options override the header of the input, if it has one."},
      {addOptions, recover, checkUsage});
}

}  // namespace velmar::tool
