#include <unistd.h>

#include <algorithm>
#include <memory>

#include "base/PublishFile.h"
#include "program/DescriptionOptions.h"
#include "program/OutputGuard.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/base/Diagnostics.h"
#include "toolkit/base/Losses.h"
#include "toolkit/base/Progress.h"
#include "toolkit/base/StopSignal.h"
#include "toolkit/jpeg/FrameInput.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/recording/RecordingWriter.h"
#include "toolkit/rescue/Leftover.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/TimesCsv.h"

namespace {

struct Options {
  std::string input;
  std::string output;
  std::optional<double> framesPerSecond;
  std::string timesFile;
  std::optional<std::uint64_t> startTime;
  std::optional<JpegSize> size;
  DescriptionOptions description;
  bool keepDamaged = false;
  bool force = false;
  bool quiet = false;
};

/// Takes the frames over one by one.
class Rescue {
 public:
  Rescue(const FileBytes& file, const Leftover& leftover, const Options& options)
      : file_(file), leftover_(leftover), options_(options) {}

  /// Why the frame is lost; empty if `jpeg` holds it.
  std::string take(std::size_t index, std::string& jpeg) const {
    const LeftoverFrame& frame = leftover_.frames[index];
    if (frame.flaw != nullptr) return frame.flaw;
    if (frame.size > kMaxFrameSize) return "too large for a picture";
    jpeg = file_.read(frame.offset, frame.size);
    if (options_.keepDamaged) return "";
    if (frame.isCut || endsInZeros(jpeg)) {
      return "the picture is cut short (--keep-damaged keeps such)";
    }
    if (hasHole(jpeg)) return "the picture has a hole (--keep-damaged keeps such)";
    return "";
  }

  /// Of the first frame that can be had.
  std::optional<JpegSize> firstSize() const {
    std::string jpeg;
    for (std::size_t i = 0; i < leftover_.frames.size(); ++i) {
      if (!take(i, jpeg).empty()) continue;
      if (const auto size = inspector_.size(jpeg)) return size;
    }
    return std::nullopt;
  }

 private:
  /// What was not on the disk when the power failed is zeros now, as is a sector that was lost.
  /// Other pictures without an end marker were recorded like that.
  static bool endsInZeros(const std::string& jpeg) {
    return jpeg.ends_with('\0') && !isWholeJpeg(jpeg);
  }
  /// Zeros inside, which a picture of one colour may have as well.
  bool hasHole(const std::string& jpeg) const {
    constexpr std::size_t kSector = 512;
    const std::size_t end = jpeg.rfind("\xFF\xD9");
    return end != jpeg.npos && jpeg.find(std::string(kSector, '\0')) < end &&
           !inspector_.decodingProblem(jpeg).text.empty();
  }

  const FileBytes& file_;
  const Leftover& leftover_;
  const Options& options_;
  JpegInspector inspector_;
};

/// Beside the output, so that the two are on one file system, under a name of its own: the
/// output's own temporary file may be the very one that is to be read.
std::string workingPath(const std::string& output) {
  const std::string extension = output.substr(output.rfind('.'));
  return output.substr(0, output.size() - extension.size()) + ".recovering" + extension;
}

LeftoverTimes timesOf(const Options& options) {
  LeftoverTimes times{options.framesPerSecond, options.startTime.value_or(0), {}};
  if (!options.timesFile.empty()) {
    times.times = readAllTimes(readFrameTable(options.timesFile));
  }
  return times;
}

/// What the options say, else what the file says. What neither does is lost.
RecordingDescription describe(const Options& options, const Leftover& leftover, JpegSize firstSize,
                              Losses& losses) {
  RecordingDescription description = leftover.description;
  options.description.change(description, options.output, losses);
  if (options.startTime) description.startTime = *options.startTime;
  const bool isDescribed = leftover.undescribed.empty();
  if (!isDescribed || options.size) description.setSize(options.size.value_or(firstSize));
  if (isDescribed) return description;
  say(options.input + ": " + leftover.undescribed +
      "; a new header is made of what the options give");
  if (isRtv(options.output) && !options.startTime) {
    losses.add(options.input, "the start time is not known; edit --start-time sets it");
  }
  if (description.deviceId.empty()) {
    losses.add(options.input, "the device id is not known; edit --device-id sets it");
  }
  return description;
}

/// The recording at `path`; the number of its frames.
unsigned int writeFrames(const Options& options, const std::string& path, const Leftover& leftover,
                         const Rescue& rescue, const RecordingDescription& description,
                         Losses& losses) {
  StopSignal stop;
  const std::size_t count = leftover.frames.size();
  RecordingWriter writer(path, description, leftover.framesMax,
                         RecordingWriter::OnFailure::RemoveFrames, options.output);
  FrameRanges ranges(options.input, losses);
  Progress progress(options.output, count, options.quiet);
  std::string jpeg;
  std::size_t done = 0;
  std::uint64_t number = 0;
  const auto passMissing = [&](std::uint64_t next) {
    if (next > number)
      ranges.add(number, next - 1, "lost: neither its record nor its picture is left");
    number = next + 1;
  };
  for (; done < count && !stop.requested(); ++done) {
    const LeftoverFrame& frame = leftover.frames[done];
    passMissing(frame.number);
    const std::string flaw = rescue.take(done, jpeg);
    if (flaw.empty()) {
      writer.add(jpeg, frame.times.value_or(FrameTimes()),
                 leftover.tags.empty() ? FrameTag() : leftover.tags[done]);
    } else {
      ranges.add(frame.number, frame.number, "lost: " + flaw);
    }
    progress.update(done + 1);
  }
  if (done == count) passMissing(leftover.framesCount);
  ranges.finish();
  writer.finish();
  if (done < count) losses.addStopped(options.output, done, count);
  return writer.frames();
}

void publish(const std::string& path, const std::string& output) {
  if (renameFile(path, output)) return;
  const int cause = errno;
  ::unlink(path.c_str());
  throw Failure::ofSystem(output, "cannot give it its name", cause);
}

void showResult(const Options& options, unsigned int kept, const Leftover& leftover) {
  StandardOutput output;
  output.write(options.output + ": " + std::to_string(kept) + " of " +
               std::to_string(leftover.framesCount) + " frames recovered\n");
  output.flush();
}

/// By its name; a temporary file ends in more than that.
void checkContainer(const Options& options) {
  std::string name = options.input;
  if (name.ends_with(".tmp")) name.resize(name.size() - 4);
  if (!name.ends_with(isRtv(options.output) ? ".img" : ".rtv")) return;
  throw Failure(options.output, "it is of another container than " + options.input,
                VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

ExitStatus recover(const Options& options) {
  checkExtension(options.output);
  checkContainer(options);
  std::vector<std::string> inputs = options.description.inputs();
  inputs.insert(inputs.end(), {options.input, options.input + ".index"});
  if (!options.timesFile.empty()) inputs.push_back(options.timesFile);
  const std::string path = workingPath(options.output);
  checkOutput(options.output, inputs, options.force);
  checkRecordingOutput(path, inputs, options.force);

  const FileBytes file(options.input);
  const Leftover leftover =
      isRtv(options.output)
          ? findRtvLeftover(file, options.description.rtvVersion.version(options.output))
          : findImgLeftover(file, timesOf(options));
  const Rescue rescue(file, leftover, options);
  const auto firstSize = rescue.firstSize();
  if (!firstSize) {
    throw Failure(options.input,
                  "no frame can be recovered from it as from an " +
                      std::string(isRtv(options.output) ? "rtv" : "img"),
                  VELMAR_ERROR_CODE_ALL_IMAGES_CORRUPTED_E);
  }
  Losses losses;
  const auto description = describe(options, leftover, *firstSize, losses);
  const unsigned int kept = writeFrames(options, path, leftover, rescue, description, losses);
  publish(path, options.output);
  if (leftover.strayBytes > 0) {
    losses.add(options.input, std::to_string(leftover.strayBytes) +
                                  " bytes belong to no whole frame, perhaps the one that was "
                                  "being added");
  }
  showResult(options, kept, leftover);
  return losses.status();
}

void checkUsage(const Options& options) {
  if (isRtv(options.output) && (options.framesPerSecond || !options.timesFile.empty())) {
    throw UsageError("recover: an rtv has its frames' times in the file; no --fps or --times");
  }
  if (options.framesPerSecond) FrameClock(0, *options.framesPerSecond);
  if (options.framesPerSecond && !options.timesFile.empty()) {
    throw UsageError("recover: --fps and --times exclude each other");
  }
  if (options.startTime && !isRtv(options.output) && !options.framesPerSecond) {
    throw UsageError("recover: --start-time goes with --fps or with an .rtv");
  }
  options.description.rtvVersion.version(options.output);
}

void addTimeOptions(CLI::App& command, Options& options) {
  addFrameRateOption(
      command, [&options](double rate) { options.framesPerSecond = rate; },
      "img: frames a second, for frames without a record in index or index journal");
  command
      .add_option("--times", options.timesFile,
                  "img: the same as a table with the columns sensor_time_us and arrived_time_us, "
                  "a row for each frame of the recording")
      ->type_name("CSV");
  addStartTimeOption(command, options.startTime,
                     "When an rtv starts, or, with --fps, when an img's first frame was captured. "
                     "Microseconds since 1970 or RFC 3339");
}

}  // namespace

void addRecoverCommand(Tool& tool) {
  CLI::App* command =
      tool.addCommand("recover", "Make a recording of what an interrupted or damaged one left.",
                      "recover drive.img.tmp drive.img --device-id 0aff");
  const auto options = std::make_shared<Options>();
  command
      ->add_option(
          "input", options->input,
          "The temporary file, or a damaged recording, which stays as it is; an interrupted "
          "img has an index journal, INPUT.index, beside it")
      ->required();
  command->add_option("output", options->output, "The recording to make, OUTPUT.img or OUTPUT.rtv")
      ->required();
  addTimeOptions(*command, *options);
  command
      ->add_option_function<std::string>(
          "--size", [options](const std::string& text) { options->size = parsePictureSize(text); },
          "Size in pixels to name in the recording, the first frame's if not given")
      ->type_name("WxH");
  options->description.addTo(*command);
  command->footer(command->get_footer() +
                  "\n  velmar-video recover drive.rtv.tmp drive.rtv --start-time "
                  "2026-11-21T08:00:00Z\n\n"
                  "The options go before what the file says itself, if the recorder came to "
                  "write that.");
  command->add_flag("--keep-damaged", options->keepDamaged,
                    "Keep frames whose picture is cut short as well");
  command->add_flag("--force", options->force, "Replace an existing output");
  command->callback([&tool, options] {
    checkUsage(*options);
    options->quiet = tool.quiet;
    tool.run = [options] { return recover(*options); };
  });
}
