#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "program/DescriptionOptions.h"
#include "program/LogOptions.h"
#include "program/SelectionOptions.h"
#include "program/Tool.h"
#include "toolkit/editing/RecordFiles.h"
#include "toolkit/editing/RecordStream.h"
#include "toolkit/jpeg/FrameInput.h"
#include "toolkit/logs/DriveLog.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/TagsCsv.h"
#include "toolkit/tables/TimesCsv.h"
#include "toolkit/video/RecordVideo.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string output;
  std::vector<std::string> inputs;
  std::string timesFile;
  std::string tagsFile;
  std::optional<double> framesPerSecond;
  std::optional<std::uint64_t> startTime;
  DescriptionOptions description;
  LogOptions log;
  unsigned int syncInterval = 0;
  bool allowTruncated = false;
  bool force = false;
  VideoInput video;
  std::vector<const CLI::Option*> ofVideos;  // make no sense for pictures

  // A stream of JPEGs has no times, a video has.
  bool readsVideo() const {
    return isVideoInput(inputs) || (isStandardInput() && !framesPerSecond && timesFile.empty());
  }
  bool readsStream() const { return isStandardInput() && !readsVideo(); }
  bool isStandardInput() const { return inputs.size() == 1 && inputs[0] == "-"; }
};

FrameClock clockOf(const Options& options) {
  const auto now = std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::system_clock::now().time_since_epoch());
  return {options.startTime.value_or(now.count()), *options.framesPerSecond};
}

std::vector<FrameTimes> timesOf(const Options& options, const std::vector<std::string>& files,
                                Job& job) {
  if (!options.timesFile.empty()) {
    return readTimes(readFrameTable(options.timesFile, job, {"file"}), files);
  }
  const FrameClock clock = clockOf(options);
  std::vector<FrameTimes> times;
  for (std::size_t i = 0; i < files.size(); ++i) times.push_back({clock.at(i), clock.at(i)});
  return times;
}

// By the table or by the logs, which may set the start position.
std::vector<FrameTag> tagsOf(const Options& options, const FrameFiles& files,
                             RecordingDescription& description, Job& job) {
  std::vector<FrameTag> tags(files.paths.size());
  if (options.log.isGiven()) {
    std::vector<std::uint64_t> times;
    for (const FrameTimes& time : files.times) times.push_back(time.sensor);
    DriveLog(options.log.request, description).fill(tags, times, job);
  } else if (!options.tagsFile.empty()) {
    tags =
        readTags(readFrameTable(options.tagsFile, job, {"file"}), files.paths, description.version);
  }
  const std::string lost = lostFromTags(tags, description.version);
  if (!lost.empty()) job.lose(options.output, "it does not hold " + lost);
  return tags;
}

ReservedOutput reserveOutput(const Options& options, std::vector<std::string> inputs) {
  for (const std::string& file : options.description.inputs()) inputs.push_back(file);
  for (const std::string& file : {options.timesFile, options.tagsFile}) {
    if (!file.empty()) inputs.push_back(file);
  }
  const std::vector<std::string>& logs = options.log.request.files;
  inputs.insert(inputs.end(), logs.begin(), logs.end());
  checkExtension(options.output);
  return {options.output, inputs, options.force};
}

ExitStatus recordPictures(const Options& options, CommandJob& job) {
  FrameFiles files;
  files.paths = listFrameFiles(options.inputs);
  const ReservedOutput reserved = reserveOutput(options, files.paths);
  checkFramesCount(options.output, files.paths.size());
  auto description = options.description.description(options.output, job);
  files.times = timesOf(options, files.paths, job);
  files.tags = tagsOf(options, files, description, job);
  files.allowTruncated = options.allowTruncated;
  files.startTime = options.startTime;
  recordFiles(files, {options.output, description, 0, options.syncInterval}, job);
  return job.status();
}

ExitStatus recordStandardInput(const Options& options, CommandJob& job) {
  const ReservedOutput reserved = reserveOutput(options, options.inputs);
  RecordingDescription description = options.description.description(options.output, job);
  const FrameClock clock = clockOf(options);
  description.startTime = clock.at(0);
  checkRtvTimes(options.output, description, {{clock.at(0), clock.at(0)}});
  recordStream({STDIN_FILENO, "standard input"}, clock,
               {options.output, description, kRtvFramesMax, options.syncInterval}, job);
  return job.status();
}

ExitStatus recordVideoFile(const Options& options, CommandJob& job) {
  const ReservedOutput reserved = reserveOutput(options, options.inputs);
  VideoInput video = options.video;
  video.path = options.inputs[0];
  video.startTime = options.startTime;
  video.framesPerSecond = options.framesPerSecond;
  const auto description = options.description.description(options.output, job);
  recordVideo(video, {options.output, description, kRtvFramesMax, options.syncInterval}, job);
  return job.status();
}

ExitStatus create(const Options& options, CommandJob& job) {
  if (options.readsVideo()) return recordVideoFile(options, job);
  return options.readsStream() ? recordStandardInput(options, job) : recordPictures(options, job);
}

void checkLogUsage(const Options& options) {
  if (!options.log.isGiven()) return;
  if (!isRtvPath(options.output)) throw UsageError("create: --log needs an .rtv");
  if (!options.tagsFile.empty()) {
    throw UsageError("create: --tags and --log both give the frames' tags; give one of them");
  }
  if (options.readsStream()) throw UsageError("create: --log cannot be used with a stream");
}

void checkUsageOfVideo(const Options& options) {
  if (!options.timesFile.empty() || !options.tagsFile.empty() || options.allowTruncated) {
    throw UsageError("create: --times, --tags and --allow-truncated are for JPEG files, not for " +
                     (options.isStandardInput() ? "a stream" : "the video " + options.inputs[0]));
  }
  if (options.log.isGiven()) {
    throw UsageError("create: --log is for JPEG files; edit --log adds one to what is recorded");
  }
  if (options.framesPerSecond) clockOf(options);
  std::vector<std::string> read = options.description.inputs();
  read.push_back(options.inputs[0]);
  checkStandardInputOnce(read);
}

void checkUsage(const Options& options) {
  if (options.readsVideo()) return checkUsageOfVideo(options);
  for (const CLI::Option* option : options.ofVideos) {
    if (option->count() > 0) {
      throw UsageError("create: " + option->get_name() + " needs a video");
    }
  }
  if (options.timesFile.empty() == !options.framesPerSecond) {
    throw UsageError("create: the frames' times come from --times or from --fps");
  }
  if (options.framesPerSecond) clockOf(options);
  if (options.startTime && !options.framesPerSecond && !isRtvPath(options.output)) {
    throw UsageError("create: --start-time goes with --fps or with an .rtv");
  }
  if (!options.tagsFile.empty() && !isRtvPath(options.output)) {
    throw UsageError("create: --tags needs an .rtv");
  }
  checkLogUsage(options);
  if (options.readsStream() && !(options.timesFile.empty() && options.tagsFile.empty())) {
    throw UsageError("create: --times and --tags name files; they cannot be used with a stream");
  }
  if (options.readsStream() && options.allowTruncated) {
    throw UsageError("create: --allow-truncated is for files; a stream is cut at the end markers");
  }
  std::vector<std::string> read = options.description.inputs();
  read.insert(read.end(), {options.timesFile, options.tagsFile});
  read.insert(read.end(), options.log.request.files.begin(), options.log.request.files.end());
  if (options.readsStream()) read.emplace_back("-");
  checkStandardInputOnce(read);
  const auto isStream = [](const std::string& input) { return input == "-"; };
  if (!options.readsStream() &&
      std::any_of(options.inputs.begin(), options.inputs.end(), isStream)) {
    throw UsageError("create: - (standard input) has to be the only input");
  }
}

void addFrameOptions(CLI::App& command, Options& options) {
  command
      .add_option("--times", options.timesFile,
                  "A table of the frames' times with the columns file or index, sensor_time_us and "
                  "arrived_time_us, such as frames --csv writes, or with _s, _ms or _ns; an rtv "
                  "keeps the capture times in "
                  "milliseconds")
      ->type_name("CSV");
  addFrameRateOption(
      command, [&options](double rate) { options.framesPerSecond = rate; },
      "Frames a second, such as 30 or 30000/1001, instead of --times or a video's own times; with "
      "-, standard input is a stream of JPEGs");
  addStartTimeOption(
      command, options.startTime,
      "Capture time of the first frame for --fps, now if not given, and of a video, the time when "
      "it was made if not given; with --times the start of an rtv, its first frame if not given. "
      "Microseconds since 1970 or RFC 3339");
  command
      .add_option(
          "--tags", options.tagsFile,
          "rtv: a table such as frames --csv writes. The column file or index names the frame; x, "
          "y, z and relative_distance are hundredths of a metre, speed is hundredths of a metre a "
          "second, direction is degrees; x_m, speed_kmh and the like name other units. Version 02 "
          "has no z. Version 04 also takes the CAN "
          "signals "
          "by name; an empty cell means that the signal is absent")
      ->type_name("CSV");
}

void addVideoOptions(CLI::App& command, Options& options) {
  options.ofVideos = addSelectionOptions(command, options.video.selection);
  options.ofVideos.push_back(
      command
          .add_option("--quality", options.video.quality,
                      "Quality of the JPEGs that a video's frames become, 1 to 100; 95 if not "
                      "given. Frames that are JPEGs (MJPEG) are recorded as they are")
          ->type_name("N")
          ->check(CLI::Range(1, 100).description("")));
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("output", options.output, "The recording to make, OUTPUT.img or OUTPUT.rtv")
      ->required();
  command
      .add_option(
          "input", options.inputs,
          "JPEG files, folders of them (2.jpg comes before 10.jpg), a video (any file that "
          "is not named as a JPEG), or - for a video or a stream of JPEGs on standard input")
      ->required();
  addFrameOptions(command, options);
  options.log.addTo(command);
  addVideoOptions(command, options);
  options.description.addTo(command);
  command
      .add_option(
          "--sync", options.syncInterval,
          "Write the frames to the disk after every N frames, 1 to 1000000. A power cut then loses "
          "only the frames after the last write. Recording becomes slower")
      ->type_name("N")
      ->check(CLI::Range(1U, 1000000U).description(""));
  command.add_flag("--allow-truncated", options.allowTruncated,
                   "Also record picture files without an end marker, which are usually cut short");
  command.add_flag("--force", options.force, "Replace an existing output");
}

}  // namespace

void addCreateCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"create", "Make a recording of JPEG pictures or of a video.",
       "create drive.img frames/ --fps 30\n"
       "  velmar-video create drive.img drive.mp4 --start-time 2023-11-14T22:13:20Z\n"
       "  velmar-video create drive.rtv frames/ --times times.csv --rtv-version 04 --tags "
       "tags.csv"},
      {addOptions, create, checkUsage});
}

}  // namespace velmar::tool
