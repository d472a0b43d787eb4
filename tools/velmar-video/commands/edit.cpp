#include <sys/stat.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <utility>

#include "program/DescriptionOptions.h"
#include "program/EachFile.h"
#include "program/InputOptions.h"
#include "program/LogOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/editing/EditPlan.h"
#include "toolkit/editing/PicturePlaces.h"
#include "toolkit/logs/DriveLog.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/TagsCsv.h"
#include "toolkit/tables/TimesCsv.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/text/TimeText.h"

namespace velmar::tool {

namespace {

const std::map<std::string, Contents> kContents = {
    {"positions", Contents::Positions},
    {"speed", Contents::Speed},
    {"can", Contents::Can},
    {"extended-info", Contents::ExtendedInfo},
    {"device-id", Contents::DeviceId},
};

struct Options {
  InputOptions inputs;
  EditRequest request;
  std::string timesFile;
  std::string tagsFile;
  std::string cameraParamsFile;
  std::string extendedInfoFile;
  LogOptions log;
  bool dryRun = false;

  bool asksForNothing() const {
    return !request.deviceId && !request.undistorted && !request.startTime && !namesFrames() &&
           !request.shift && !request.taggingFlags && !request.fixResolution &&
           !request.startPosition && request.cleared.empty() && cameraParamsFile.empty() &&
           extendedInfoFile.empty() && !log.isGiven();
  }
  // Of a single recording.
  bool namesFrames() const {
    return !request.sensorTimes.empty() || !request.arrivedTimes.empty() || !timesFile.empty() ||
           !tagsFile.empty();
  }
};

// The lines of a text with what files hold in it.
std::string printableLines(const std::string& text, const std::string& prefix) {
  std::istringstream lines(text);
  std::string shown;
  for (std::string line; std::getline(lines, line);) shown += prefix + printable(line) + "\n";
  return shown;
}

// The edits that the options ask for, with what files say.
class Edits {
 public:
  Edits(const Options& options, CommandJob& job)
      : options_(options), job_(job), request_(options.request) {
    if (!options.cameraParamsFile.empty()) {
      request_.cameraParams = readJsonFile(options.cameraParamsFile);
    }
    if (!options.extendedInfoFile.empty()) {
      request_.extendedInfo = readJsonFile(options.extendedInfoFile);
    }
    if (!options.timesFile.empty()) {
      request_.allTimes = readAllTimes(readFrameTable(options.timesFile, job));
    }
    if (!options.tagsFile.empty()) tags_ = readFrameTable(options.tagsFile, job);
  }

  // What is changed in the recording, a line each.
  std::string edit(const std::string& file) {
    if (tags_) {
      request_.changeTagsOption = "--tags";
      request_.changeTags = [&](const auto&, auto& tags, auto& description) {
        changeByTable(file, tags, description.version);
      };
    } else if (options_.log.isGiven()) {
      request_.changeTags = [&](const auto& times, auto& tags, auto& description) {
        DriveLog(options_.log.request, description).fillAll(tags, times, file, job_);
      };
    }
    std::string text = options_.dryRun ? EditPlan(openRecording(file, job_), request_).text()
                                       : editRecording(file, request_, job_);
    if (request_.clears(Contents::Positions)) tellPicturePlaces(Recording(file), job_);
    return text;
  }

 private:
  void changeByTable(const std::string& file, std::vector<FrameTag>& tags, version_e version) {
    changeTags(*tags_, version, tags);
    TagContents contents;
    for (const FrameTag& tag : tags) contents.add(tag);
    const std::string lost = contents.lostBy(version);
    if (!lost.empty()) job_.lose(file, "it does not hold " + lost);
  }

  const Options& options_;
  CommandJob& job_;
  EditRequest request_;
  std::optional<CsvTable> tags_;
};

// What is done with several recordings.
struct Summary {
  std::size_t files = 0;
  std::size_t changed = 0;
  std::size_t failed = 0;

  std::string text() const {
    return std::to_string(files) + " files, " + std::to_string(changed) + " with changes, " +
           std::to_string(failed) + " failed\n";
  }
};

// One that is named twice must not be shifted twice.
std::vector<std::string> withoutRepetitions(const std::vector<std::string>& files) {
  std::vector<std::string> once;
  std::set<std::pair<dev_t, ino_t>> seen;
  for (const std::string& file : files) {
    struct stat status {};
    const bool isThere = stat(file.c_str(), &status) == 0;
    if (!isThere || seen.emplace(status.st_dev, status.st_ino).second) once.push_back(file);
  }
  return once;
}

void editFile(const std::string& file, bool isNamed, Edits& edits, Summary& summary,
              StandardOutput& output, CommandJob& job) {
  ++summary.files;
  std::string text;
  try {
    text = edits.edit(file);
  } catch (...) {
    if (!isNamed) throw;
    ++summary.failed;
    return job.fail(failureOf(file, std::current_exception()));
  }
  if (!text.empty()) ++summary.changed;
  output.write(printableLines(text.empty() ? "nothing to change" : text,
                              isNamed ? printable(file) + ": " : ""));
  output.flush();
}

ExitStatus edit(const Options& options, CommandJob& job) {
  const std::vector<std::string> files = withoutRepetitions(options.inputs.files(job));
  const bool isOne = options.inputs.isOneFile();
  if (!isOne && options.namesFrames()) {
    throw UsageError(
        "edit: --sensor-time, --arrived-time, --times and --tags are for the frames of one "
        "recording");
  }
  const auto& logs = options.log.request.files;
  if (!isOne && std::find(logs.begin(), logs.end(), "-") != logs.end()) {
    throw UsageError("edit: standard input can be read for one recording only");
  }
  Edits edits(options, job);
  StandardOutput output;
  Summary summary;
  if (isOne) {
    for (const std::string& file : files) editFile(file, false, edits, summary, output, job);
    return job.status();
  }
  const auto stage = job.beginFiles(std::to_string(files.size()) + " files", files.size());
  for (const std::string& file : files) {
    if (stage->stopRequested()) {
      job.lose("edit", "stopped by a signal after " + std::to_string(summary.files) + " of " +
                           std::to_string(files.size()) + " files");
      break;
    }
    editFile(file, true, edits, summary, output, job);
    stage->advance(summary.files);
  }
  output.write(summary.text());
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
      std::string("When frame I was captured; may be given several times. TIME is ") + kTimeForms);
  auto* arrived = command.add_option_function<std::vector<std::string>>(
      "--arrived-time",
      [&request](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) {
          request.arrivedTimes.push_back(parseFrameTime("--arrived-time", text));
        }
      },
      "img: when frame I arrived, like --sensor-time; may be given several times");
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

// What is cleared is not set as well.
void checkClearing(const EditRequest& request, const Options& options) {
  const struct {
    Contents contents;
    bool isSet;
    const char* option;
  } others[] = {
      {Contents::DeviceId, request.deviceId.has_value(), "--device-id"},
      {Contents::ExtendedInfo, !options.extendedInfoFile.empty(), "--extended-info"},
      {Contents::Positions, request.startPosition.has_value(), "--start-position"},
  };
  for (const auto& other : others) {
    if (!other.isSet || !request.clears(other.contents)) continue;
    throw UsageError(std::string("edit: --clear and ") + other.option +
                     " contradict each other; give one of them");
  }
}

void checkUsage(const Options& options) {
  options.inputs.checkUsage("edit");
  if (options.asksForNothing()) throw UsageError("edit: there is no change to make");
  if (options.request.undistorted && options.request.taggingFlags) {
    throw UsageError("edit: --tagging-flags has the mark of --undistorted in it; give one of them");
  }
  const EditRequest& request = options.request;
  const bool changesTimes = request.startTime || request.shift || !request.sensorTimes.empty() ||
                            !options.timesFile.empty();
  checkClearing(request, options);
  if (options.log.isGiven() && !options.tagsFile.empty()) {
    throw UsageError("edit: --tags and --log both give the frames' tags; give one of them");
  }
  if (options.log.isGiven() && changesTimes) {
    throw UsageError("edit: --log goes by the frames' times; change those in an edit before it");
  }
  std::vector<std::string> read = options.log.request.files;
  read.insert(read.end(), {options.cameraParamsFile, options.extendedInfoFile, options.timesFile,
                           options.tagsFile, options.inputs.listFile});
  checkStandardInputOnce(read);
}

void addTagOptions(CLI::App& command, Options& options) {
  EditRequest& request = options.request;
  addTagsOption(command, options.tagsFile,
                "The column index names the frame, from 0; frames without a row and values without "
                "a column stay as they are");
  options.log.addTo(command);
  addStartPositionOption(command, request.startPosition,
                         "rtv: from where the frames' positions are counted, degrees and metres; "
                         "they stay as they are, so that all frames move with it");
}

void addClearOption(CLI::App& command, EditRequest& request) {
  command
      .add_option_function<std::vector<std::string>>(
          "--clear",
          [&request](const std::vector<std::string>& texts) {
            for (const std::string& text : texts) request.cleared.push_back(kContents.at(text));
          },
          "What to remove, before anything else is set; several with commas. positions: "
          "the start position, x, y, z, distances (also that of CAN) and direction. speed: also of "
          "the CAN signals, with all of the wheels. can: all signals. A path can be computed from "
          "speeds and angles, so clear speed and can as well if nobody is to find it. Pictures and "
          "camera params stay as they are; pictures with a place in their EXIF data are named")
      ->type_name("WHAT")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->check(CLI::IsMember(kContents));
}

void addOptions(CLI::App& command, Options& options) {
  options.inputs.addTo(command);
  addHeaderOptions(command, options);
  addTimeOptions(command, options);
  addTagOptions(command, options);
  addClearOption(command, options.request);
  command.add_flag("--dry-run", options.dryRun, "Show the changes without making them");
}

}  // namespace

void addEditCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"edit", "Change the header, the frame times and the tags of recordings in place.",
       "edit drive.img --device-id 0aff --shift-time -3600s --dry-run"},
      {addOptions, edit, checkUsage});
}

}  // namespace velmar::tool
