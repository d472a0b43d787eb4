#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "FrameInput.h"
#include "FrameTimes.h"
#include "InputFile.h"
#include "JpegInspector.h"
#include "JpegStreamSplitter.h"
#include "JsonText.h"
#include "Losses.h"
#include "OutputGuard.h"
#include "Progress.h"
#include "RecordingFile.h"
#include "RecordingWriter.h"
#include "StopSignal.h"
#include "TimeText.h"
#include "TimesCsv.h"
#include "Tool.h"
#include "common/HexText.h"

namespace {

struct Options {
  std::string output;
  std::vector<std::string> inputs;
  std::string timesFile;
  std::optional<double> framesPerSecond;
  std::optional<std::uint64_t> startTime;
  std::string deviceId;  // bytes
  std::string cameraParamsFile;
  std::string extendedInfoFile;
  std::string frameFormat = "BGR";
  bool undistorted = false;
  bool force = false;
  bool quiet = false;

  bool readsStream() const { return inputs.size() == 1 && inputs[0] == "-"; }
};

/// What is set once, read and checked before anything is written.
struct Description {
  explicit Description(const Options& options)
      : cameraParams(jsonOf(options.cameraParamsFile)),
        extendedInfo(jsonOf(options.extendedInfoFile)) {}

  void describe(VelmarVideoFileCreater& creater, const Options& options) const {
    creater.setFrameCodec(VELMAR_CODEC_JPG_E);
    creater.setFrameFormat(string2RvelmarFormat(options.frameFormat));
    creater.setDeviceId(reinterpret_cast<const unsigned char*>(options.deviceId.data()),
                        static_cast<unsigned int>(options.deviceId.size()));
    creater.setCameraParams(cameraParams);
    creater.setExtendedInfo(extendedInfo);
    if (options.undistorted) creater.setUndistortFlags();
  }

  static std::string jsonOf(const std::string& file) {
    return file.empty() ? "{}" : readJsonFile(file);
  }

  std::string cameraParams;
  std::string extendedInfo;
};

void setSize(VelmarVideoFileCreater& creater, JpegSize size) {
  creater.setVideoResolution(static_cast<unsigned short>(size.width),
                             static_cast<unsigned short>(size.height));
}

std::string sizeWords(JpegSize size, JpegSize expected) {
  return "the picture is " + toText(size) + ", but the first one is " + toText(expected);
}

FrameClock clockOf(const Options& options) {
  const auto now = std::chrono::duration_cast<std::chrono::microseconds>(
      std::chrono::system_clock::now().time_since_epoch());
  return {options.startTime.value_or(now.count()), *options.framesPerSecond};
}

std::vector<FrameTimes> timesOf(const Options& options, const std::vector<std::string>& files) {
  if (!options.timesFile.empty()) {
    return TimesCsv(options.timesFile, readFile(options.timesFile)).match(files);
  }
  const FrameClock clock = clockOf(options);
  std::vector<FrameTimes> times;
  for (std::size_t i = 0; i < files.size(); ++i) times.push_back({clock.at(i), clock.at(i)});
  return times;
}

/// The size that all files have.
JpegSize commonSize(const std::vector<std::string>& files, const JpegInspector& inspector) {
  const JpegSize first = inspector.sizeOfFile(files.front());
  for (const std::string& file : files) {
    const JpegSize size = inspector.sizeOfFile(file);
    if (!(size == first)) {
      throw Failure(file, sizeWords(size, first), VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
    }
  }
  return first;
}

void checkOutputOf(const Options& options, std::vector<std::string> inputs) {
  for (const std::string& file :
       {options.timesFile, options.cameraParamsFile, options.extendedInfoFile}) {
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
    losses.add(file, found ? sizeWords(*found, size) + "; it is left out"
                           : "it is not a JPEG picture any more; it is left out");
  } catch (const Failure& failure) {
    losses.add(failure.what(), "it is left out");
  }
  return std::nullopt;
}

ExitStatus recordFiles(const Options& options) {
  const std::vector<std::string> files = listFrameFiles(options.inputs);
  checkOutputOf(options, files);
  const Description description(options);
  const std::vector<FrameTimes> times = timesOf(options, files);
  const JpegInspector inspector;
  const JpegSize size = commonSize(files, inspector);

  StopSignal stop;
  Losses losses;
  RecordingWriter writer(options.output, RecordingWriter::OnFailure::RemoveFrames);
  description.describe(writer.creater(), options);
  setSize(writer.creater(), size);
  Progress progress(options.output, files.size(), options.quiet);
  std::size_t done = 0;
  for (; done < files.size() && !stop.requested(); ++done) {
    if (const auto frame = readFrame(files[done], inspector, size, losses))
      writer.add(*frame, times[done]);
    progress.update(done + 1);
  }
  writer.finish();
  if (done < files.size()) {
    losses.add(options.output, "stopped by a signal after " + std::to_string(done) + " of " +
                                   std::to_string(files.size()) + " frames");
  }
  return losses.status();
}

/// Frames from standard input, which are checked as they come.
class StreamRecording {
 public:
  StreamRecording(const Options& options, RecordingWriter& writer)
      : writer_(writer),
        clock_(clockOf(options)),
        progress_(options.output, 0, options.quiet),
        splitter_(kMaxFrameSize) {}

  ExitStatus run(StopSignal& stop) {
    std::vector<char> piece(std::size_t{1} << 20);
    bool ended = false;
    while (!ended && stop.waitReadable(STDIN_FILENO)) {
      const ssize_t count = ::read(STDIN_FILENO, piece.data(), piece.size());
      if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
      if (count < 0) losses_.add(kName, "cannot read on");
      ended = count <= 0;
      if (!ended) take({piece.data(), static_cast<std::size_t>(count)});
    }
    writer_.finish();
    reportRest(ended);
    return losses_.status();
  }

 private:
  void take(std::string_view piece) {
    splitter_.feed(piece);
    while (const auto frame = splitter_.next()) {
      // Frames that are left out keep their place in time.
      const std::uint64_t number = number_++;
      if (!isFit(*frame, number)) continue;
      writer_.add(*frame, {clock_.at(number), clock_.at(number)});
      progress_.update(writer_.frames());
    }
  }

  bool isFit(const std::string& frame, std::uint64_t number) {
    const auto size = inspector_.size(frame);
    if (size && !size_) {
      size_ = size;
      setSize(writer_.creater(), *size);
    }
    if (size && *size == *size_) return true;
    losses_.add(kName, "frame " + std::to_string(number) + " skipped: " +
                           (size ? sizeWords(*size, *size_) : "it is not a JPEG picture"));
    return false;
  }

  void reportRest(bool ended) {
    if (splitter_.skippedBytes() > 0) {
      losses_.add(kName, std::to_string(splitter_.skippedBytes()) +
                             " bytes skipped that belong to no whole frame");
    }
    if (ended && splitter_.isInsideFrame()) losses_.add(kName, "it ends inside a frame");
  }

  static constexpr char kName[] = "standard input";

  RecordingWriter& writer_;
  FrameClock clock_;
  Progress progress_;
  JpegStreamSplitter splitter_;
  JpegInspector inspector_;
  Losses losses_;
  std::optional<JpegSize> size_;
  std::uint64_t number_ = 0;
};

ExitStatus recordStream(const Options& options) {
  checkOutputOf(options, options.inputs);
  const Description description(options);
  StopSignal stop;
  RecordingWriter writer(options.output, RecordingWriter::OnFailure::KeepFrames);
  description.describe(writer.creater(), options);
  return StreamRecording(options, writer).run(stop);
}

void checkUsage(const Options& options) {
  if (options.timesFile.empty() == !options.framesPerSecond) {
    throw UsageError("create: the frames' times come from --times or from --fps");
  }
  if (options.framesPerSecond) clockOf(options);
  if (options.startTime && !options.framesPerSecond) {
    throw UsageError("create: --start-time goes with --fps");
  }
  if (options.readsStream() && !options.timesFile.empty()) {
    throw UsageError("create: --times names files, so it cannot be used with a stream");
  }
  const auto isStream = [](const std::string& input) { return input == "-"; };
  if (!options.readsStream() &&
      std::any_of(options.inputs.begin(), options.inputs.end(), isStream)) {
    throw UsageError("create: - (standard input) has to be the only input");
  }
}

std::uint64_t parseStartTime(const std::string& text) {
  const auto time = parseTime(text);
  if (time && *time <= kLastFormattedTime) return *time;
  throw UsageError("--start-time is microseconds since 1970 or RFC 3339");
}

std::string parseDeviceId(const std::string& text) {
  if (text.empty() || text.size() % 2 != 0 ||
      text.find_first_not_of("0123456789abcdefABCDEF") != text.npos) {
    throw UsageError("--device-id is pairs of hexadecimal digits");
  }
  std::string bytes(text.size() / 2, '\0');
  hexToBytes(text, reinterpret_cast<unsigned char*>(bytes.data()),
             static_cast<unsigned int>(bytes.size()));
  return bytes;
}

void addTimeOptions(CLI::App& command, Options& options) {
  command
      .add_option("--times", options.timesFile,
                  "A table of the frames' times with the columns file, sensor_time_us and "
                  "arrived_time_us")
      ->type_name("CSV");
  command.add_option("--fps", options.framesPerSecond, "Frames a second, instead of --times")
      ->type_name("N");
  command
      .add_option_function<std::string>(
          "--start-time",
          [&options](const std::string& text) { options.startTime = parseStartTime(text); },
          "Capture time of the first frame for --fps, microseconds since 1970 or RFC 3339; "
          "now if not given")
      ->type_name("TIME");
}

void addDescriptionOptions(CLI::App& command, Options& options) {
  command
      .add_option_function<std::string>(
          "--device-id",
          [&options](const std::string& text) { options.deviceId = parseDeviceId(text); },
          "The camera's identifier")
      ->type_name("HEX");
  command.add_option("--camera-params", options.cameraParamsFile, "JSON about the camera")
      ->type_name("FILE");
  command.add_option("--extended-info", options.extendedInfoFile, "JSON about anything else")
      ->type_name("FILE");
  command.add_flag("--undistorted", options.undistorted, "Mark the frames as undistorted");
  command
      .add_option("--frame-format", options.frameFormat,
                  "The pixel format to name in the recording, BGR if not given")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"YUV420", "RGB", "BGR", "GRAY"}));
}

}  // namespace

void addCreateCommand(Tool& tool) {
  CLI::App* command = tool.addCommand(
      "create", "Make a recording of JPEG pictures.",
      "create drive.img frames/ --fps 30\n"
      "  ffmpeg -i drive.mp4 -f mjpeg - | velmar-video create drive.img - --fps 30");
  const auto options = std::make_shared<Options>();
  command->add_option("output", options->output, "The recording to make, OUTPUT.img")->required();
  command
      ->add_option("input", options->inputs,
                   "JPEG files, folders of them (2.jpg comes before 10.jpg), or - for a stream of "
                   "JPEGs on standard input")
      ->required();
  addTimeOptions(*command, *options);
  addDescriptionOptions(*command, *options);
  command->add_flag("--force", options->force, "Replace an existing output");
  command->callback([&tool, options] {
    checkUsage(*options);
    options->quiet = tool.quiet;
    tool.run = [options] {
      return options->readsStream() ? recordStream(*options) : recordFiles(*options);
    };
  });
}
