#include <map>

#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/comparison/Comparison.h"
#include "toolkit/text/Joined.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/NumberText.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/text/TimeText.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string a;
  std::string b;
  bool json = false;
};

// In words, what the toolkit names as in JSON.
std::string wordsOf(const std::string& name) {
  static const std::map<std::string, std::string> kWords = {
      {"frames_count", "frames"},         {"frame_format", "frame format"},
      {"frame_codec", "frame codec"},     {"device_id", "device id"},
      {"start_time_us", "start"},         {"start_position", "start position"},
      {"tagging_flags", "tagging flags"}, {"camera_params", "camera params"},
      {"extended_info", "extended info"}, {"sensor_time_us", "captured"},
      {"arrived_time_us", "arrived"},
  };
  const auto words = kWords.find(name);
  return words == kWords.end() ? name : words->second;
}

std::string valueText(const std::string& name, const Json::Value& value) {
  if (value.isNull() || value == "") return "-";
  if (name.ends_with("_time_us")) return formatTime(value.asUInt64());
  if (value.isString()) return printable(value.asString());
  return value.type() == Json::realValue ? numberText(value.asDouble()) : shownJson(value);
}

template <typename Difference>
std::string valuesText(const Difference& difference) {
  return valueText(difference.name, difference.a) + " -> " +
         valueText(difference.name, difference.b);
}

std::string spanText(const FrameSpan& span) { return framesText(span.first, span.end() - 1); }

std::string textOf(const FrameDifference& difference) {
  const FrameSpan& frames = difference.frames.a;
  const std::string text = spanText(frames) + ": ";
  if (difference.name == "picture") {
    return text + (frames.count == 1 ? "another picture\n" : "other pictures\n");
  }
  return text + wordsOf(difference.name) + (frames.count == 1 ? " " : ", the first ") +
         valuesText(difference) + "\n";
}

// Nothing if the frames have the same numbers.
std::string textOf(const FramePairs& frames, const Options& options) {
  const std::string b = printable(options.b);
  if (frames.a.count == 0) return spanText(frames.b) + " of " + b + ": only there\n";
  const std::string text = spanText(frames.a) + ": ";
  if (frames.b.count == 0) return text + "only in " + printable(options.a) + "\n";
  if (frames.a.first == frames.b.first) return "";
  return text + spanText(frames.b) + " of " + b + "\n";
}

std::string containerOf(const Recording& recording) { return recording.isRtv() ? "rtv" : "img"; }

std::string versionOf(const Recording& recording) {
  return velmarVersion2String(recording.version());
}

std::string reportText(const Comparison& comparison, const Recording& a, const Recording& b,
                       const Options& options) {
  const auto container = [](const Recording& recording) {
    return containerOf(recording) + ", version " + versionOf(recording);
  };
  std::string text;
  if (container(a) != container(b)) {
    text += "container: " + container(a) + " -> " + container(b) +
            "; what only one of them can hold is not compared\n";
  }
  for (const HeaderDifference& difference : comparison.header) {
    text += wordsOf(difference.name) + ": " + valuesText(difference) + "\n";
  }
  for (const FramePairs& frames : comparison.frames) text += textOf(frames, options);
  for (const FrameDifference& difference : comparison.frameDifferences) text += textOf(difference);
  return comparison.isSame() ? text + "no difference\n" : text;
}

std::string spanJson(std::uint64_t first, std::uint64_t last) {
  return "[" + std::to_string(first) + "," + std::to_string(last) + "]";
}

std::string jsonOf(const Recording& recording, const std::vector<Finding>& unread) {
  std::vector<std::string> findings;
  findings.reserve(unread.size());
  for (const Finding& finding : unread) {
    findings.push_back("{\"frames\":" + spanJson(*finding.frame, finding.last()) +
                       ",\"text\":" + toJsonText(finding.text) + "}");
  }
  return "{\"file\":" + toJsonText(recording.path()) + ",\"container\":\"" +
         containerOf(recording) + "\",\"version\":\"" + versionOf(recording) +
         "\",\"not_compared\":[" + joined(findings, ",") + "]}";
}

// Members of an object.
std::string jsonOf(const FramePairs& frames) {
  std::vector<std::string> members;
  const auto add = [&members](const std::string& name, const FrameSpan& span) {
    if (span.count > 0) members.push_back(name + spanJson(span.first, span.end() - 1));
  };
  add("\"a_frames\":", frames.a);
  add("\"b_frames\":", frames.b);
  return joined(members, ",");
}

template <typename Difference>
std::string valuesJson(const Difference& difference) {
  const auto json = [](const Json::Value& value) {
    return value.type() == Json::realValue ? numberText(value.asDouble()) : toJsonText(value);
  };
  return ",\"a\":" + json(difference.a) + ",\"b\":" + json(difference.b);
}

std::string reportJson(const Comparison& comparison, const Recording& a, const Recording& b) {
  std::vector<std::string> header;
  for (const HeaderDifference& difference : comparison.header) {
    header.push_back("{\"name\":\"" + difference.name + "\"" + valuesJson(difference) + "}");
  }
  std::vector<std::string> frames;
  for (const FramePairs& pairs : comparison.frames) frames.push_back("{" + jsonOf(pairs) + "}");
  std::vector<std::string> differences;
  for (const FrameDifference& difference : comparison.frameDifferences) {
    const std::string values = difference.name == "picture" ? "" : valuesJson(difference);
    differences.push_back("{\"name\":\"" + difference.name + "\"," + jsonOf(difference.frames) +
                          values + "}");
  }
  return "{\"a\":" + jsonOf(a, comparison.unreadOfA) + ",\"b\":" + jsonOf(b, comparison.unreadOfB) +
         ",\"same\":" + (comparison.isSame() ? "true" : "false") + ",\"header\":[" +
         joined(header, ",") + "],\"frames\":[" + joined(frames, ",") +
         "],\"frame_differences\":[" + joined(differences, ",") + "]}\n";
}

void tellUnread(const Recording& recording, const std::vector<Finding>& unread, CommandJob& job) {
  for (const Finding& finding : unread) {
    job.fail({recording.path(),
              framesText(*finding.frame, finding.last()) + " cannot be compared: " + finding.text,
              VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E});
  }
}

ExitStatus diff(const Options& options, CommandJob& job) {
  const Recording a = openRecording(options.a, job);
  const Recording b = openRecording(options.b, job);
  const Comparison comparison = compareRecordings(a, b, job);
  if (!comparison.isWhole) return job.status();
  tellUnread(a, comparison.unreadOfA, job);
  tellUnread(b, comparison.unreadOfB, job);
  StandardOutput output;
  output.write(options.json ? reportJson(comparison, a, b) : reportText(comparison, a, b, options));
  output.flush();
  return comparison.isSame() ? job.status() : ExitStatus::Failed;
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("a", options.a, "The recording to compare with")->required();
  command.add_option("b", options.b, "The one that may differ from it")->required();
  command.add_flag("--json", options.json, "One JSON object");
}

}  // namespace

void addDiffCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"diff", "Tell in what two recordings differ.",
       "diff drive.img copy.img\n\n"
       "Compares what info shows, and the frames: their pictures by a hash of the stored bytes,\n"
       "their times and their tags. Frames that belong together are found by their pictures,\n"
       "those with other pictures by their number or their time, so that what was cut out is\n"
       "said in one line. They are looked for in their order: what stands elsewhere in the other\n"
       "counts as missing. Frame numbers are those of A. Of an img and an rtv, what both can hold\n"
       "is compared: times in whole milliseconds, no arrival times, no tags.\n"
       "Exit status 1 if they differ or cannot be read, which standard error tells; 0 if not."},
      {addOptions, diff});
}

}  // namespace velmar::tool
