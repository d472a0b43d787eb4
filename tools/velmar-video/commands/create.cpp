#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>

#include "program/DescriptionOptions.h"
#include "program/LogOptions.h"
#include "program/SelectionOptions.h"
#include "program/Tool.h"
#include "toolkit/creating/RecordFiles.h"
#include "toolkit/creating/RecordStream.h"
#include "toolkit/jpeg/ExifTime.h"
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
  std::optional<int> quality;
  bool encode = false;
  bool allowTruncated = false;
  bool force = false;
  FrameSelection selection;                  // of a video
  std::vector<const CLI::Option*> ofVideos;  // make no sense for pictures

  // A stream of JPEGs has no times, a video has.
  bool readsVideo() const {
    return isVideoInput(inputs) || (isStandardInput() && !framesPerSecond && timesFile.empty());
  }
  bool readsStream() const { return isStandardInput() && !readsVideo(); }
  bool readsExif() const { return timesFile == "exif"; }
  bool isStandardInput() const { return inputs.size() == 1 && inputs[0] == "-"; }
  // What is read beside the frames.
  std::vector<std::string> otherInputs() const {
    std::vector<std::string> files = description.inputs();
    if (!timesFile.empty() && !readsExif()) files.push_back(timesFile);
    if (!tagsFile.empty()) files.push_back(tagsFile);
    files.insert(files.end(), log.request.files.begin(), log.request.files.end());
    return files;
  }
};

FrameClock clockOf(const Options& options) {
  const auto now = std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::system_clock::now().time_since_epoch());
  return {options.startTime.value_or(now.count()), *options.framesPerSecond};
}

std::vector<FrameTimes> timesOf(const Options& options, std::vector<std::string>& files, Job& job) {
  if (!options.timesFile.empty() && !options.readsExif()) {
    return readTimes(readFrameTable(options.timesFile, job, {"file"}), files);
  }
  std::vector<FrameTimes> times;
  if (options.readsExif()) {
    for (const std::uint64_t time : sortByExifTimes(files)) times.push_back({time, time});
  } else {
    const FrameClock clock = clockOf(options);
    for (std::size_t i = 0; i < files.size(); ++i) times.push_back({clock.at(i), clock.at(i)});
  }
  return times;
}

std::vector<FrameTag> readTagsOf(const Options& options, const std::vector<std::string>& files,
                                 version_e version, Job& job) {
  auto tags = readTags(readFrameTable(options.tagsFile, job, {"file"}), files, version);
  TagContents contents;
  for (const FrameTag& tag : tags) contents.add(tag);
  const std::string lost = contents.lostBy(version);
  if (!lost.empty()) job.lose(options.output, "it does not hold " + lost);
  return tags;
}

// By the table or by the logs, which may set the start position.
std::vector<FrameTag> tagsOf(const Options& options, const FrameFiles& files,
                             RecordingDescription& description, Job& job) {
  if (!options.tagsFile.empty()) {
    return readTagsOf(options, files.paths, description.version, job);
  }
  std::vector<FrameTag> tags(files.paths.size());
  if (!options.log.isGiven()) return tags;
  std::vector<std::uint64_t> times;
  for (const FrameTimes& time : files.times) times.push_back(time.sensor);
  DriveLog(options.log.request, description).fillAll(tags, times, options.output, job);
  return tags;
}

ReservedOutput reserveOutput(const Options& options, std::vector<std::string> inputs) {
  const std::vector<std::string> others = options.otherInputs();
  inputs.insert(inputs.end(), others.begin(), others.end());
  checkExtension(options.output);
  return {options.output, inputs, options.force};
}

ExitStatus recordPictures(const Options& options, CommandJob& job) {
  FrameFiles files;
  files.paths = listPictures(options.inputs);
  if (!options.encode) files.paths = withoutOtherPictures(files.paths, job);
  const ReservedOutput reserved = reserveOutput(options, files.paths);
  checkFramesCount(options.output, files.paths.size());
  auto description = options.description.description(options.output, job);
  files.times = timesOf(options, files.paths, job);
  files.tags = tagsOf(options, files, description, job);
  files.allowTruncated = options.allowTruncated;
  files.quality = options.quality.value_or(files.quality);
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
  VideoInput video;
  video.selection = options.selection;
  video.path = options.inputs[0];
  video.startTime = options.startTime;
  video.framesPerSecond = options.framesPerSecond;
  video.quality = options.quality.value_or(video.quality);
  auto description = options.description.description(options.output, job);
  std::optional<DriveLog> log;
  if (options.log.isGiven()) log.emplace(options.log.request, description);
  recordVideo(video, {options.output, description, kRtvFramesMax, options.syncInterval},
              log ? &*log : nullptr, job);
  return job.status();
}

ExitStatus create(const Options& options, CommandJob& job) {
  if (options.readsVideo()) return recordVideoFile(options, job);
  return options.readsStream() ? recordStandardInput(options, job) : recordPictures(options, job);
}

void checkUsageOfVideo(const Options& options) {
  std::error_code error;
  if (!options.isStandardInput() && !std::filesystem::exists(options.inputs[0], error)) {
    throw Failure::ofSystem(options.inputs[0], "cannot open it", ENOENT);
  }
  if (!options.timesFile.empty() || !options.tagsFile.empty() || options.allowTruncated ||
      options.encode) {
    throw UsageError(
        "create: --times, --tags, --encode and --allow-truncated are for pictures, not for " +
        (options.isStandardInput() ? "a stream" : "the video " + options.inputs[0]));
  }
  if (options.framesPerSecond) clockOf(options);  // refuses a rate that cannot be
}

void checkUsageOfPictures(const Options& options) {
  for (const CLI::Option* option : options.ofVideos) {
    if (option->count() > 0) {
      throw UsageError("create: " + option->get_name() + " needs a video");
    }
  }
  if (options.quality && !options.encode) {
    throw UsageError("create: --quality needs a video or --encode");
  }
  if (options.timesFile.empty() == !options.framesPerSecond) {
    throw UsageError("create: the frames' times come from --times or from --fps");
  }
  if (options.framesPerSecond) clockOf(options);  // refuses a rate that cannot be
  if (options.startTime && !options.framesPerSecond && !isRtvPath(options.output)) {
    throw UsageError("create: --start-time goes with --fps or with an .rtv");
  }
  if (!options.tagsFile.empty() && !isRtvPath(options.output)) {
    throw UsageError("create: --tags needs an .rtv");
  }
  const auto isStream = [](const std::string& input) { return input == "-"; };
  if (!options.readsStream() &&
      std::any_of(options.inputs.begin(), options.inputs.end(), isStream)) {
    throw UsageError("create: - (standard input) has to be the only input");
  }
  if (!options.readsStream()) return;
  if (!options.timesFile.empty() || !options.tagsFile.empty() || options.log.isGiven() ||
      options.encode) {
    throw UsageError(
        "create: --times, --tags, --log and --encode cannot be used with a stream of JPEGs");
  }
  if (options.allowTruncated) {
    throw UsageError("create: --allow-truncated is for files; a stream is cut at the end markers");
  }
}

void checkUsage(const Options& options) {
  if (options.log.isGiven() && !isRtvPath(options.output)) {
    throw UsageError("create: --log needs an .rtv");
  }
  if (options.log.isGiven() && !options.tagsFile.empty()) {
    throw UsageError("create: --tags and --log both give the frames' tags; give one of them");
  }
  if (options.readsVideo()) {
    checkUsageOfVideo(options);
  } else {
    checkUsageOfPictures(options);
  }
  std::vector<std::string> read = options.otherInputs();
  if (options.isStandardInput()) read.emplace_back("-");
  checkStandardInputOnce(read);
}

void addFrameOptions(CLI::App& command, Options& options) {
  command
      .add_option("--times", options.timesFile,
                  "A table of the frames' times with the columns file or index, sensor_time_us and "
                  "arrived_time_us, such as frames --csv writes, or with _s, _ms or _ns; or the "
                  "word exif: the pictures come in the order in which they were taken "
                  "(DateTimeOriginal). An rtv keeps the capture times in milliseconds")
      ->type_name("CSV|exif");
  addFrameRateOption(
      command, [&options](double rate) { options.framesPerSecond = rate; },
      "Frames a second, such as 30 or 30000/1001, instead of --times or a video's own times; with "
      "-, standard input is a stream of JPEGs");
  addStartTimeOption(command, options.startTime,
                     "Capture time of the first frame; with --times, the start "
                     "of an rtv. If not given: now with --fps, of a video when it was made, of an "
                     "rtv with --times "
                     "its first frame");
  addTagsOption(command, options.tagsFile, "The column file or index names the frame");
}

void addPictureOptions(CLI::App& command, Options& options) {
  options.ofVideos = addSelectionOptions(command, options.selection);
  command.add_flag("--encode", options.encode,
                   "Also record PNG, BMP, TIFF and WebP pictures, as JPEGs; they are left out if "
                   "not given");
  command
      .add_option("--quality", options.quality,
                  "Quality of the JPEGs that the frames of a video or, with --encode, pictures "
                  "become, 1 to 100; 95 if not given. What is a JPEG (MJPEG) is recorded as it is")
      ->type_name("N")
      ->check(CLI::Range(1, 100).description(""));
  command.add_flag("--allow-truncated", options.allowTruncated,
                   "Also record JPEG files without an end marker, which are usually cut short");
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("output", options.output, "The recording to make, OUTPUT.img or OUTPUT.rtv")
      ->required();
  command
      .add_option(
          "input", options.inputs,
          "Pictures, folders of them (2.jpg comes before 10.jpg), a video (any file that is not "
          "named as a picture), or - for a video or a stream of JPEGs on standard input")
      ->required();
  addFrameOptions(command, options);
  options.log.addTo(command);
  addPictureOptions(command, options);
  options.description.addTo(command);
  command
      .add_option(
          "--sync", options.syncInterval,
          "Write the frames to the disk after every N frames, 1 to 1000000. A power cut then loses "
          "only the frames after the last write. Recording becomes slower")
      ->type_name("N")
      ->check(CLI::Range(1U, 1000000U).description(""));
  command.add_flag("--force", options.force, "Replace an existing output");
}

}  // namespace

void addCreateCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"create", "Make a recording of pictures or of a video.",
       "create drive.img frames/ --fps 30\n"
       "  velmar-video create drive.img drive.mp4 --start-time 2023-11-14T22:13:20Z\n"
       "  velmar-video create drive.rtv frames/ --times times.csv --rtv-version 04 --tags "
       "tags.csv"},
      {addOptions, create, checkUsage});
}

}  // namespace velmar::tool
