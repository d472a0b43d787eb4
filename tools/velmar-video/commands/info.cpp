#include <optional>
#include <tuple>
#include <vector>

#include "program/EachFile.h"
#include "program/InputOptions.h"
#include "program/Tool.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/tables/RecordingInfo.h"
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

std::string bytesText(std::uint64_t bytes) {
  const std::string text = std::to_string(bytes) + " bytes";
  return bytes < 1024 ? text : text + " (" + sizeText(bytes) + ")";
}

std::string durationText(const RecordingInfo& info) {
  const double seconds = static_cast<double>(info.duration) / 1e6;
  std::string text = fixedText(seconds, 6) + " s";
  if (info.duration == 0) return text;
  return text + " (" + fixedText((info.framesCount - 1) / seconds, 2) + " frames/s)";
}

std::string textBlock(const RecordingInfo& info) {
  const RecordingDescription& description = info.description;
  const std::string size =
      std::to_string(description.width) + " x " + std::to_string(description.height);
  const std::string kind = std::string(velmarCodec2String(description.codec)) + ", " +
                           velmarFormat2String(description.format);
  const std::tuple<const char*, std::string, bool> lines[] = {
      {"container",
       info.container + (info.isFinished ? "" : std::string(", ") + info.state()) +
           (info.hasFirst() ? std::string(", version ") + velmarVersion2String(info.version) : ""),
       true},
      {"frames",
       std::to_string(info.framesCount) +
           (info.hasFirst() ? " (room for " + std::to_string(info.framesMax) + ")" : ""),
       true},
      {"picture", size + (info.isFinished ? ", " + kind : ""), info.hasFirst()},
      {"undistorted", description.undistorted ? "yes" : "no", info.isFinished},
      {"device", printable(info.deviceId), info.isFinished && !info.deviceId.empty()},
      {"start", formatTime(description.startTime), info.hasStartTime()},
      {"duration", durationText(info), true},
      {"size", bytesText(info.bytes), true},
      {"camera params", shownJson(info.cameraParams), info.isFinished},
      {"extended info", shownJson(info.extendedInfo), info.isFinished},
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
    const RecordingInfo info(openRecording(files[at], fileJob, Accept::Running));
    output.write(options.json ? info.json() + "\n" : textBlock(info));
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
