#include <sstream>

#include "program/DescriptionOptions.h"
#include "program/LogOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/editing/EditPlan.h"
#include "toolkit/logs/DriveLog.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/TagsCsv.h"
#include "toolkit/tables/TimesCsv.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/text/TimeText.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string file;
  EditRequest request;
  std::string timesFile;
  std::string cameraParamsFile;
  std::string extendedInfoFile;
  LogOptions log;
  bool dryRun = false;

  bool asksForNothing() const {
    return !request.deviceId && !request.undistorted && !request.startTime &&
           request.sensorTimes.empty() && request.arrivedTimes.empty() && !request.shift &&
           !request.taggingFlags && !request.fixResolution && timesFile.empty() &&
           cameraParamsFile.empty() && extendedInfoFile.empty() && !log.isGiven();
  }
};

// The lines of a text with what files hold in it.
std::string printableLines(const std::string& text) {
  std::istringstream lines(text);
  std::string shown;
  for (std::string line; std::getline(lines, line);) shown += printable(line) + "\n";
  return shown;
}

ExitStatus edit(const Options& options, CommandJob& job) {
  EditRequest request = options.request;
  if (!options.cameraParamsFile.empty())
    request.cameraParams = readJsonFile(options.cameraParamsFile);
  if (!options.extendedInfoFile.empty())
    request.extendedInfo = readJsonFile(options.extendedInfoFile);
  if (!options.timesFile.empty()) {
    request.allTimes = readAllTimes(readFrameTable(options.timesFile, job));
  }
  if (options.log.isGiven()) {
    request.changeTags = [&](const auto& times, auto& tags, auto& description) {
      DriveLog(options.log.request, description).fillAll(tags, times, options.file, job);
    };
  }
  const std::string text = options.dryRun
                               ? EditPlan(openRecording(options.file, job), request).text()
                               : editRecording(options.file, request, job);
  StandardOutput output;
  output.write(text.empty() ? "nothing to change\n" : printableLines(text));
  output.flush();
  return job.status();
}

// "I=TIME"
EditRequest::FrameTime parseFrameTime(const std::string& option, const std::string& text) {
  const std::size_t equals = text.find('=');
  const auto index = parseNumber(std::string_view(text).substr(0, equals));
  if (equals == text.npos || !index || *index > UINT32_MAX) {
    throw UsageError(option + " is I=TIME with the number of a frame");
  }
  return {static_cast<unsigned int>(*index), parseTimeOption(option, text.substr(equals + 1))};
}

void addTimeOptions(CLI::App& command, Options& options) {
  EditRequest& request = options.request;
  auto* start =
      addStartTimeOption(command, request.startTime,
                         "rtv: the start; the frames' times are relative to it and follow");
  auto* sensor = command.add_option_function<std::vector<std::string>>(
      "--sensor-time",
      [&request](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) {
          request.sensorTimes.push_back(parseFrameTime("--sensor-time", text));
        }
      },
      "When frame I was captured; may be given several times");
  auto* arrived = command.add_option_function<std::vector<std::string>>(
      "--arrived-time",
      [&request](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) {
          request.arrivedTimes.push_back(parseFrameTime("--arrived-time", text));
        }
      },
      "img: when frame I arrived; may be given several times");
  for (CLI::Option* option : {sensor, arrived})
    option->type_name("I=TIME")->allow_extra_args(false);
  auto* times = command.add_option("--times", options.timesFile,
                                   "A table with a row for every frame in order: the columns "
                                   "sensor_time_us and, for img, arrived_time_us");
  times->type_name("CSV")->excludes(sensor)->excludes(arrived);
  addParsedOption(
      command, "--shift-time", "OFFSET",
      "Offset to add to all times, including the start of an rtv: a duration such as -1.5s or "
      "+1h, or microseconds",
      [&request](const std::string& text) { request.shift = parseTimeShift("--shift-time", text); })
      ->excludes(start)
      ->excludes(sensor)
      ->excludes(arrived)
      ->excludes(times);
}

void addHeaderOptions(CLI::App& command, Options& options) {
  EditRequest& request = options.request;
  addDeviceIdOption(
      command, [&request](const std::string& id) { request.deviceId = id; },
      "The camera's identifier");
  addParsedOption(command, "--undistorted", "on|off",
                  "Whether the frames are marked as undistorted",
                  [&request](const std::string& text) { request.undistorted = text == "on"; })
      ->check(CLI::IsMember({"on", "off"}));
  command.add_option("--camera-params", options.cameraParamsFile, "img: JSON; - is standard input")
      ->type_name("FILE");
  command.add_option("--extended-info", options.extendedInfoFile, "img: JSON; - is standard input")
      ->type_name("FILE");
  addParsedOption(command, "--tagging-flags", "N",
                  "rtv: all flags as one decimal number; 16 marks undistorted frames",
                  [&request](const std::string& text) {
                    const auto flags = parseNumber(text);
                    if (!flags || *flags > UINT32_MAX)
                      throw UsageError("--tagging-flags is a number of 32 bits");
                    request.taggingFlags = static_cast<unsigned int>(*flags);
                  });
  command.add_flag("--fix-resolution", request.fixResolution,
                   "Take width and height from frame 0's JPEG");
}

void checkUsage(const Options& options) {
  if (options.asksForNothing()) throw UsageError("edit: there is no change to make");
  if (options.request.undistorted && options.request.taggingFlags) {
    throw UsageError("edit: --tagging-flags has the mark of --undistorted in it; give one of them");
  }
  const EditRequest& request = options.request;
  const bool changesTimes = request.startTime || request.shift || !request.sensorTimes.empty() ||
                            !options.timesFile.empty();
  if (options.log.isGiven() && changesTimes) {
    throw UsageError("edit: --log goes by the frames' times; change those in an edit before it");
  }
  std::vector<std::string> read = options.log.request.files;
  read.insert(read.end(), {options.cameraParamsFile, options.extendedInfoFile, options.timesFile});
  checkStandardInputOnce(read);
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("file", options.file, "The recording to change")->required();
  addHeaderOptions(command, options);
  addTimeOptions(command, options);
  options.log.addTo(command);
  command.add_flag("--dry-run", options.dryRun, "Show the changes without making them");
}

}  // namespace

void addEditCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"edit", "Change the header, the frame times and the tags of a recording in place.",
       "edit drive.img --device-id 0aff --shift-time -3600s --dry-run"},
      {addOptions, edit, checkUsage});
}

}  // namespace velmar::tool
