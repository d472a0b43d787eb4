#include <optional>
#include <tuple>
#include <vector>

#include "program/EachFile.h"
#include "program/InputOptions.h"
#include "program/Tool.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/tables/Track.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/NumberText.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/text/TimeText.h"

namespace velmar::tool {

namespace {

struct Options {
  InputOptions inputs;
  JobsOption jobs;
  bool json = false;
};

struct Info {
  std::string file;
  std::string container;
  VELMAR_VERSION_E version = VELMAR_VERSION_MAX_E;
  unsigned int framesCount = 0;
  unsigned int framesMax = 0;
  RecordingDescription description;
  std::string deviceId;
  std::uint64_t duration = 0;
  Json::Value cameraParams;
  Json::Value extendedInfo;
  std::uint64_t bytes = 0;
  std::optional<Place> start;  // of an rtv
  bool isFinished = true;
  bool isRecorded = false;
  const char* state() const { return isRecorded ? "recording" : "interrupted"; }
};

// What is known of a recording.
struct Known {
  explicit Known(const Info& info)
      : all(info.isFinished),
        first(all || info.framesCount > 0),
        start(all || (first && info.container == "img")) {}

  bool all;
  bool first;  // what the first frame tells
  bool start;
};

// From the first frame's capture to the last one's.
std::uint64_t durationOf(const Recording& recording) {
  const unsigned int count = recording.framesCount();
  if (count < 2) return 0;
  const std::uint64_t first = recording.sensorTime(0);
  const std::uint64_t last = recording.sensorTime(count - 1);
  return last < first ? 0 : last - first;
}

Info readInfo(const std::string& file, Job& job) {
  const Recording recording = openRecording(file, job, Accept::Running);
  Info info;
  info.file = file;
  info.container = recording.isRtv() ? "rtv" : "img";
  info.framesCount = recording.framesCount();
  info.isFinished = recording.isFinished();
  info.isRecorded = recorderOf(recording).state == Recorder::State::AtWork;
  info.version = recording.version();
  info.framesMax = recording.framesMax();
  info.description = recording.description();
  info.deviceId = recording.deviceId();
  info.duration = durationOf(recording);
  info.cameraParams = parseJson(info.description.cameraParams);
  info.extendedInfo = parseJson(info.description.extendedInfo);
  if (recording.isRtv() && info.isFinished) info.start = Track(recording).start();
  info.bytes = recording.file().size();
  return info;
}

// jsoncpp would sort the keys; people who look at the line want them in order.
std::string jsonLine(const Info& info) {
  const Known known(info);
  const std::tuple<const char*, Json::Value, bool> members[] = {
      {"file", info.file, true},
      {"container", info.container, true},
      {"version", velmarVersion2String(info.version), known.first},
      {"frames_count", info.framesCount, true},
      {"frames_max", info.framesMax, known.first},
      {"width", info.description.width, known.first},
      {"height", info.description.height, known.first},
      {"frame_format", velmarFormat2String(info.description.format), known.all},
      {"frame_codec", velmarCodec2String(info.description.codec), known.all},
      {"undistorted", info.description.undistorted, known.all},
      {"device_id", info.deviceId, known.all},
      {"start_time_us", Json::UInt64{info.description.startTime}, known.start},
      {"duration_us", Json::UInt64{info.duration}, true},
      {"camera_params", info.cameraParams, known.all},
      {"extended_info", info.extendedInfo, known.all},
      {"file_bytes", Json::UInt64{info.bytes}, true},
  };
  std::string line;
  for (const auto& [key, value, isKnown] : members) {
    if (!isKnown) continue;
    line += line.empty() ? "{" : ",";
    line += toJsonText(key) + ":" + toJsonText(value);
  }
  if (info.start) {
    line += ",\"start_position\":{\"lng_deg\":" + degreesText(info.start->lng) +
            ",\"lat_deg\":" + degreesText(info.start->lat) +
            ",\"alt_m\":" + fixedText(info.start->alt, 2) + "}";
  }
  if (!info.isFinished) line += ",\"state\":" + toJsonText(info.state());
  return line + "}\n";
}

std::string bytesText(std::uint64_t bytes) {
  const std::string text = std::to_string(bytes) + " bytes";
  return bytes < 1024 ? text : text + " (" + sizeText(bytes) + ")";
}

std::string durationText(const Info& info) {
  const double seconds = static_cast<double>(info.duration) / 1e6;
  std::string text = fixedText(seconds, 6) + " s";
  if (info.duration == 0) return text;
  return text + " (" + fixedText((info.framesCount - 1) / seconds, 2) + " frames/s)";
}

std::string textBlock(const Info& info) {
  const RecordingDescription& description = info.description;
  const std::string size =
      std::to_string(description.width) + " x " + std::to_string(description.height);
  const std::string kind = std::string(velmarCodec2String(description.codec)) + ", " +
                           velmarFormat2String(description.format);
  const Known known(info);
  const std::tuple<const char*, std::string, bool> lines[] = {
      {"container",
       info.container + (known.all ? "" : std::string(", ") + info.state()) +
           (known.first ? std::string(", version ") + velmarVersion2String(info.version) : ""),
       true},
      {"frames",
       std::to_string(info.framesCount) +
           (known.first ? " (room for " + std::to_string(info.framesMax) + ")" : ""),
       true},
      {"picture", size + (known.all ? ", " + kind : ""), known.first},
      {"undistorted", description.undistorted ? "yes" : "no", known.all},
      {"device", printable(info.deviceId), known.all && !info.deviceId.empty()},
      {"start", formatTime(description.startTime), known.start},
      {"duration", durationText(info), true},
      {"size", bytesText(info.bytes), true},
      {"camera params", shownJson(info.cameraParams), known.all},
      {"extended info", shownJson(info.extendedInfo), known.all},
  };
  std::string text = printable(info.file) + "\n";
  for (const auto& [label, value, isKnown] : lines) {
    std::string cell = label;
    cell.resize(15, ' ');
    text.append("  ").append(cell).append(isKnown ? value : "-").append("\n");
  }
  if (info.start) {
    text += "  start position " + degreesText(info.start->lng) + " E, " +
            degreesText(info.start->lat) + " N, " + fixedText(info.start->alt, 2) + " m\n";
  }
  return text;
}

ExitStatus showInfo(const Options& options, CommandJob& job) {
  const std::vector<std::string> files = options.inputs.files(job);
  const auto work = [&](std::size_t at, Job& fileJob, StandardOutput& output) {
    const Info info = readInfo(files[at], fileJob);
    output.write(options.json ? jsonLine(info) : textBlock(info));
  };
  forEachFile(files, options.jobs.count(), "recordings", work, job);
  return job.status();
}

void addOptions(CLI::App& command, Options& options) {
  options.inputs.addTo(command, InputOptions::kWithRunning);
  command.add_flag("--json", options.json, "One JSON object for each, on a line of its own");
  options.jobs.addTo(command, "recordings");
}

void checkUsage(const Options& options) { options.inputs.checkUsage("info"); }

}  // namespace

void addInfoCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"info", "Show what recordings hold and how they were made.", "info drive.img"},
      {addOptions, showInfo, checkUsage});
}

}  // namespace velmar::tool
