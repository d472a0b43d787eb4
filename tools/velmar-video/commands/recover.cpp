#include <algorithm>
#include <atomic>

#include "program/DescriptionOptions.h"
#include "program/EachFile.h"
#include "program/OutputOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/files/LockHolder.h"
#include "toolkit/files/RecorderFiles.h"
#include "toolkit/files/UndoFile.h"
#include "toolkit/recording/OpenFailure.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/rescue/RecoverFrames.h"
#include "toolkit/rescue/Recovery.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/TimesCsv.h"
#include "toolkit/text/NumberText.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  OutputOptions outputs;
  JobsOption jobs;
  std::vector<const CLI::Option*> ofOutput;  // without meaning if there is none
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

// The files that are read must not be written.
ReservedOutput reserveOutput(const OutputTask& task, const Options& options,
                             std::vector<std::string> inputs) {
  checkExtension(task.output);
  checkLeftoverName(task.input, task.output);
  const std::vector<std::string> described = options.description.inputs();
  inputs.insert(inputs.end(), described.begin(), described.end());
  inputs.push_back(journalPath(task.input));
  if (!options.timesFile.empty()) inputs.push_back(options.timesFile);
  checkOutput(task.output, inputs, options.force);
  // What an earlier recover left when it was interrupted can be made again.
  return {recoveringPath(task.output), inputs, true};
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

// Of all files.
struct Summary {
  std::atomic<std::size_t> recovered = 0;
  std::atomic<std::uint64_t> frames = 0;
  std::atomic<std::uint64_t> framesCount = 0;

  std::string text(std::size_t files) const {
    return counted(files, "file") + ": " + std::to_string(recovered) + " recovered with " +
           std::to_string(frames) + " of " + std::to_string(framesCount) + " frames, " +
           std::to_string(files - recovered) + " not\n";
  }
};

void recoverFile(const OutputTask& task, const Options& options, Job& job, StandardOutput& output,
                 Summary& summary) {
  RecoveryRequest request{task.input, task.output};
  request.times = timesOf(options, job);
  request.version = options.description.rtvVersion.version(task.output);
  request.startTime = options.startTime;
  request.size = options.size;
  request.keepDamaged = options.keepDamaged;
  request.describe = [&](RecordingDescription& description) {
    options.description.change(description, task.output, job);
  };
  request.changesHeader = options.force;
  const Recovered recovered = recoverRecording(request, job);
  output.write(printable(task.output) + ": " + std::to_string(recovered.frames) + " of " +
               std::to_string(recovered.framesCount) + " frames recovered\n");
  ++summary.recovered;
  summary.frames += recovered.frames;
  summary.framesCount += recovered.framesCount;
}

// What is in a folder need not be a leftover.
void refuseRunning(const std::string& file) {
  if (const auto holder = lockHolder(file)) {
    throw Failure(file, *holder + " is recording to it", VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
}

bool isLeftoverName(const std::string& path) {
  return isTemporaryPath(path) && isRecordingName(finalPath(path));
}

ExitStatus recover(const Options& options, CommandJob& job) {
  if (options.outputs.lacksOutput()) {
    return undoInterruptedEdit(options.outputs.inputs.inputs.front());
  }
  const auto nameOf = [](const std::string& name) {
    return isLeftoverName(name) ? finalPath(name) : name;
  };
  const auto tasks = options.outputs.tasks(job, isLeftoverName,
                                           "interrupted recording (*.img.tmp, *.rtv.tmp)", nameOf);
  const std::vector<std::string> inputs = inputsOf(tasks);
  OutputFolders folders;
  Summary summary;
  const auto work = [&](std::size_t at, Job& fileJob, StandardOutput& output) {
    if (options.outputs.areMany()) refuseRunning(tasks[at].input);
    options.outputs.makeFolder(tasks[at], folders);
    const ReservedOutput reserved = reserveOutput(tasks[at], options, inputs);
    recoverFile(tasks[at], options, fileJob, output, summary);
  };
  forEachFile(inputs, options.jobs.count(), "files", work, job);
  if (!options.outputs.areMany()) return job.status();
  StandardOutput output;
  output.write(summary.text(tasks.size()));
  output.flush();
  return job.status();
}

// What the output's name tells.
void checkContainer(const std::string& output, const Options& options) {
  const bool isRtv = isRtvPath(output);
  if (isRtv && (options.framesPerSecond || !options.timesFile.empty())) {
    throw UsageError("recover: an rtv has its frames' times in the file; no --fps or --times");
  }
  if (options.startTime && !isRtv && !options.framesPerSecond) {
    throw UsageError("recover: --start-time goes with --fps or with an .rtv");
  }
  options.description.rtvVersion.version(output);
}

void checkUsage(const Options& options) {
  const OutputOptions& outputs = options.outputs;
  if (outputs.lacksOutput()) {
    if (!isRecordingName(outputs.inputs.inputs.front())) {
      throw UsageError("recover: OUTPUT is missing, the recording to make; or --output-dir");
    }
    for (const CLI::Option* option : options.ofOutput) {
      if (option->count() > 0) throw UsageError("recover: " + option->get_name() + " needs OUTPUT");
    }
    return;
  }
  outputs.checkUsage("recover");
  if (options.framesPerSecond) FrameClock(0, *options.framesPerSecond);
  if (options.framesPerSecond && !options.timesFile.empty()) {
    throw UsageError("recover: --fps and --times exclude each other");
  }
  if (!outputs.areMany()) return checkContainer(outputs.inputs.inputs.at(1), options);
  if (!options.timesFile.empty()) throw UsageError("recover: --times is of one recording");
  for (const std::string& file : options.description.inputs()) {
    if (file == "-") throw UsageError("recover: standard input can be read for one recording only");
  }
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
                     "When an rtv starts, or, with --fps, when an img's first frame was captured");
}

void addOptions(CLI::App& command, Options& options) {
  options.outputs.addTo(
      command,
      "INPUT OUTPUT: the temporary file, or a damaged recording, which stays as it is, and the "
      "recording to make, OUTPUT.img or OUTPUT.rtv; an interrupted img has an index journal, "
      "INPUT.index, beside it. INPUT alone: an interrupted edit of it is undone in place. With "
      "--output-dir: such files, and folders with temporary files");
  addTimeOptions(command, options);
  addParsedOption(command, "--size", "WxH",
                  "Size in pixels to name in the recording, the first frame's if not given",
                  [&options](const std::string& text) { options.size = parsePictureSize(text); });
  options.description.addTo(command);
  command.add_flag("--keep-damaged", options.keepDamaged,
                   "Also keep frames whose picture is cut short or has a hole");
  command.add_flag("--force", options.force,
                   "Replace an existing output, and let the options change a header that is whole");
  options.jobs.addTo(command, "files");
  const std::vector<CLI::Option*> all = command.get_options();
  const auto input =
      std::find_if(all.begin(), all.end(), [](auto* one) { return one->get_positional(); });
  options.ofOutput.assign(input + 1, all.end());
}

}  // namespace

void addRecoverCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"recover",
       "Recover the frames of an interrupted or damaged recording, or undo an interrupted edit.",
       "recover drive.img.tmp drive.img --device-id 0aff\n"
       "  velmar-video recover drive.rtv.tmp drive.rtv --start-time 2026-11-21T08:00:00Z\n"
       "  velmar-video recover day --recursive --output-dir saved\n\n"
       "Without OUTPUT, as in recover drive.img, an interrupted edit is undone in place."},
      {addOptions, recover, checkUsage});
}

}  // namespace velmar::tool
