#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "program/DescriptionOptions.h"
#include "program/OutputGuard.h"
#include "program/Tool.h"
#include "toolkit/base/InputFile.h"
#include "toolkit/base/Losses.h"
#include "toolkit/base/Progress.h"
#include "toolkit/base/StopSignal.h"
#include "toolkit/editing/StreamRecording.h"
#include "toolkit/jpeg/FrameInput.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/recording/FrameTimes.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/recording/RecordingWriter.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/TagsCsv.h"
#include "toolkit/tables/TimesCsv.h"

namespace {

struct Options {
  std::string output;
  std::vector<std::string> inputs;
  std::string timesFile;
  std::string tagsFile;
  std::optional<double> framesPerSecond;
  std::optional<std::uint64_t> startTime;
  DescriptionOptions description;
  unsigned int syncInterval = 0;
  bool allowTruncated = false;
  bool force = false;
  bool quiet = false;

  bool readsStream() const { return inputs.size() == 1 && inputs[0] == "-"; }
};

FrameClock clockOf(const Options& options) {
  const auto now = std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::system_clock::now().time_since_epoch());
  return {options.startTime.value_or(now.count()), *options.framesPerSecond};
}

std::vector<FrameTimes> timesOf(const Options& options, const std::vector<std::string>& files) {
  if (!options.timesFile.empty()) {
    return readTimes(readFrameTable(options.timesFile, {"file"}), files);
  }
  const FrameClock clock = clockOf(options);
  std::vector<FrameTimes> times;
  for (std::size_t i = 0; i < files.size(); ++i) times.push_back({clock.at(i), clock.at(i)});
  return times;
}

std::vector<FrameTag> tagsOf(const Options& options, const std::vector<std::string>& files,
                             version_e version, Losses& losses) {
  if (options.tagsFile.empty()) return std::vector<FrameTag>(files.size());
  auto tags = readTags(readFrameTable(options.tagsFile, {"file"}), files, version);
  const std::string lost = lostFromTags(tags, version);
  if (!lost.empty()) losses.add(options.output, "it does not hold " + lost);
  return tags;
}

/// The size that all files have.
JpegSize commonSize(const std::vector<std::string>& files, const JpegInspector& inspector,
                    bool allowTruncated) {
  const JpegSize first = inspector.sizeOfFile(files.front());
  for (const std::string& file : files) {
    const JpegSize size = inspector.sizeOfFile(file);
    if (!(size == first)) {
      throw Failure(file, differenceText(size, first), VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
    }
    if (!allowTruncated && !isWholeJpegFile(file)) {
      throw Failure(file, "the picture has no end marker; --allow-truncated takes it as it is",
                    VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
    }
  }
  return first;
}

/// An rtv counts its frames' times from its start.
void setStartTime(RecordingDescription& description, const Options& options,
                  const std::vector<FrameTimes>& times) {
  const auto earliest = std::min_element(
      times.begin(), times.end(), [](auto& one, auto& other) { return one.sensor < other.sensor; });
  description.startTime = options.startTime.value_or(earliest->sensor);
  checkRtvTimes(options.output, description, times);
}

void checkOutputOf(const Options& options, std::vector<std::string> inputs) {
  for (const std::string& file : options.description.inputs()) inputs.push_back(file);
  for (const std::string& file : {options.timesFile, options.tagsFile}) {
    if (!file.empty()) inputs.push_back(file);
  }
  checkExtension(options.output);
  checkRecordingOutput(options.output, inputs, options.force);
}

/// The frame, unless the file has changed for the worse since it was checked.
std::optional<std::string> readFrame(const std::string& file, const JpegInspector& inspector,
                                     JpegSize size, Losses& losses) {
  try {
    std::string frame = readFile(file, kMaxFrameSize + 1);
    const auto found = frame.size() > kMaxFrameSize ? std::nullopt : inspector.size(frame);
    if (found && *found == size) return frame;
    losses.add(file, found ? differenceText(*found, size) + "; it is left out"
                           : "it is not a JPEG picture any more; it is left out");
  } catch (const Failure& failure) {
    losses.add(failure.what(), "it is left out");
  }
  return std::nullopt;
}

ExitStatus recordFiles(const Options& options) {
  const std::vector<std::string> files = listFrameFiles(options.inputs);
  checkOutputOf(options, files);
  checkFramesCount(options.output, files.size());
  Losses losses;
  RecordingDescription description = options.description.description(options.output, losses);
  const std::vector<FrameTimes> times = timesOf(options, files);
  const std::vector<FrameTag> tags = tagsOf(options, files, description.version, losses);
  const JpegInspector inspector;
  const JpegSize size = commonSize(files, inspector, options.allowTruncated);
  description.setSize(size);
  setStartTime(description, options, times);

  StopSignal stop;
  RecordingWriter writer(options.output, description, static_cast<unsigned int>(files.size()),
                         RecordingWriter::OnFailure::RemoveFrames);
  writer.syncEvery(options.syncInterval);
  Progress progress(options.output, files.size(), options.quiet);
  std::size_t done = 0;
  for (; done < files.size() && !stop.requested(); ++done) {
    if (const auto frame = readFrame(files[done], inspector, size, losses))
      writer.add(*frame, times[done], tags[done]);
    progress.update(done + 1);
  }
  writer.finish();
  if (done < files.size()) {
    losses.addStopped(options.output, done, files.size());
  }
  return losses.status();
}

ExitStatus recordStream(const Options& options) {
  checkOutputOf(options, options.inputs);
  Losses losses;
  RecordingDescription description = options.description.description(options.output, losses);
  const FrameClock clock = clockOf(options);
  description.startTime = clock.at(0);
  checkRtvTimes(options.output, description, {{clock.at(0), clock.at(0)}});
  StopSignal stop;
  RecordingWriter writer(options.output, description, kRtvFramesMax,
                         RecordingWriter::OnFailure::KeepFrames);
  writer.syncEvery(options.syncInterval);
  return StreamRecording(options.output, clock, options.quiet, writer, losses).run(stop);
}

void checkUsage(const Options& options) {
  if (options.timesFile.empty() == !options.framesPerSecond) {
    throw UsageError("create: the frames' times come from --times or from --fps");
  }
  if (options.framesPerSecond) clockOf(options);
  if (options.startTime && !options.framesPerSecond && !isRtv(options.output)) {
    throw UsageError("create: --start-time goes with --fps or with an .rtv");
  }
  if (!options.tagsFile.empty() && !isRtv(options.output)) {
    throw UsageError("create: --tags needs an .rtv");
  }
  if (options.readsStream() && !(options.timesFile.empty() && options.tagsFile.empty())) {
    throw UsageError("create: --times and --tags name files; they cannot be used with a stream");
  }
  if (options.readsStream() && options.allowTruncated) {
    throw UsageError("create: --allow-truncated is for files; a stream is cut at the end markers");
  }
  std::vector<std::string> read = options.description.inputs();
  read.insert(read.end(), {options.timesFile, options.tagsFile});
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
                  "arrived_time_us, such as frames --csv writes; an rtv keeps the capture times in "
                  "milliseconds")
      ->type_name("CSV");
  addFrameRateOption(
      command, [&options](double rate) { options.framesPerSecond = rate; },
      "Frames a second, such as 30 or 30000/1001, instead of --times");
  addStartTimeOption(
      command, options.startTime,
      "Capture time of the first frame for --fps, now if not given; with --times the start "
      "of an rtv, its first frame if not given. Microseconds since 1970 or RFC 3339");
  command
      .add_option(
          "--tags", options.tagsFile,
          "rtv: a table such as frames --csv writes, with the column file or index and any of x, "
          "y, z (not in version 02), relative_distance, speed and direction: hundredths of a "
          "metre, and of a metre a second, and degrees. Version 04 holds the CAN signals, by "
          "name, too; an empty cell is an absent one")
      ->type_name("CSV");
}

}  // namespace

void addCreateCommand(Tool& tool) {
  CLI::App* command = tool.addCommand(
      "create", "Make a recording of JPEG pictures.",
      "create drive.img frames/ --fps 30\n"
      "  rate=$(ffprobe -v error -select_streams v:0 -show_entries stream=avg_frame_rate \\\n"
      "    -of csv=p=0 drive.mp4) && ffmpeg -i drive.mp4 -r \"$rate\" -f mjpeg -q:v 2 - | \\\n"
      "    velmar-video create drive.img - --fps \"$rate\"\n"
      "  velmar-video create drive.rtv frames/ --times times.csv --rtv-version 04 --tags "
      "tags.csv\n\n"
      "Where a video has JPEGs in it (MJPEG), -c copy instead of -r and -q:v takes them as they "
      "are.");
  const auto options = std::make_shared<Options>();
  command->add_option("output", options->output, "The recording to make, OUTPUT.img or OUTPUT.rtv")
      ->required();
  command
      ->add_option("input", options->inputs,
                   "JPEG files, folders of them (2.jpg comes before 10.jpg), or - for a stream of "
                   "JPEGs on standard input")
      ->required();
  addFrameOptions(*command, *options);
  options->description.addTo(*command);
  command
      ->add_option(
          "--sync", options->syncInterval,
          "Bring the frames to the disk every N frames, 1 to 1000000: a power cut then takes "
          "no more than the frames since. Slower")
      ->type_name("N")
      ->check(CLI::Range(1U, 1000000U).description(""));
  command->add_flag("--allow-truncated", options->allowTruncated,
                    "Take picture files without an end marker, too, which are cut short as a rule");
  command->add_flag("--force", options->force, "Replace an existing output");
  command->callback([&tool, options] {
    checkUsage(*options);
    options->quiet = tool.quiet;
    tool.run = [options] {
      return options->readsStream() ? recordStream(*options) : recordFiles(*options);
    };
  });
}
