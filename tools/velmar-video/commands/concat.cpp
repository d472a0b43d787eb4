#include <algorithm>
#include <memory>

#include "program/OutputGuard.h"
#include "program/Tool.h"
#include "toolkit/editing/CopyFrames.h"

namespace {

struct Options {
  std::string output;
  std::vector<std::string> inputs;
  std::string force;  // "true": replace the output; an input: it wins, too
  bool quiet = false;

  bool hasWinner() const { return !force.empty() && force != "true"; }
};

struct Difference {
  std::string what, one, other;
};

std::string deviceText(const Recording& recording) {
  const std::string id = recording.deviceId();
  return id.empty() ? "none" : id;
}

/// What one recording cannot have twice.
std::vector<Difference> differences(const Recording& oneRecording,
                                    const Recording& otherRecording) {
  const RecordingDescription one = oneRecording.description();
  const RecordingDescription other = otherRecording.description();
  const auto size = [](const RecordingDescription& description) {
    return std::to_string(description.width) + "x" + std::to_string(description.height);
  };
  // Two that are known are no difference: the frames' positions are counted from one of them.
  const auto position = [](const RecordingDescription& description) {
    return hasStartPosition(description) ? "known" : "not known";
  };
  std::vector<Difference> all = {
      {"size", size(one), size(other)},
      {"codec", velmarCodec2String(one.codec), velmarCodec2String(other.codec)},
      {"device", deviceText(oneRecording), deviceText(otherRecording)},
      {"start position", position(one), position(other)},
  };
  std::erase_if(all,
                [](const Difference& difference) { return difference.one == difference.other; });
  return all;
}

/// What is taken from the winner without asking.
std::string quietDifferences(const RecordingDescription& one, const RecordingDescription& other) {
  std::string list;
  const auto note = [&list](bool differs, const char* what) {
    if (differs) list += (list.empty() ? "" : ", ") + std::string(what);
  };
  note(one.cameraParams != other.cameraParams, "camera parameters");
  note(one.extendedInfo != other.extendedInfo, "extended information");
  note(one.undistorted != other.undistorted, "mark of undistorted frames");
  note(one.taggingFlags != other.taggingFlags, "tagging flags");
  note(one.format != other.format, "frame format");
  return list;
}

void checkInput(const Options& options, const std::string& input) {
  checkExtension(input);
  checkSameContainer(input, options.output);
}

/// The recording whose description counts.
const Recording& winnerOf(const Options& options, const std::vector<Recording>& recordings) {
  if (!options.hasWinner()) return recordings.front();
  const auto found = std::find(options.inputs.begin(), options.inputs.end(), options.force);
  if (found == options.inputs.end()) {
    throw UsageError("concat: --force=" + options.force + " names none of the inputs");
  }
  return recordings[static_cast<std::size_t>(found - options.inputs.begin())];
}

void compare(const Recording& winner, const Recording& other, bool forced, Losses& losses) {
  const RecordingDescription kept = winner.description();
  const RecordingDescription left = other.description();
  if (isRtv(winner.path()) && kept.version != left.version) {
    throw Failure(
        other.path(),
        "its version is another one than that of " + winner.path() + "; convert can change it",
        VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  for (const Difference& difference : differences(winner, other)) {
    const std::string words = "its " + difference.what + " is " + difference.other + ", that of " +
                              winner.path() + " is " + difference.one;
    if (!forced) {
      throw Failure(other.path(), words + "; --force=INPUT says which one wins",
                    VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
    }
    losses.add(other.path(), words);
  }
  const std::string quiet = quietDifferences(kept, left);
  if (!quiet.empty()) losses.add(other.path(), "not kept: its " + quiet);
}

/// Where one start position is not known, positions stay as they are.
Rebase rebaseTo(const RecordingDescription& description, const Recording& recording) {
  const RecordingDescription from = recording.description();
  if (!hasStartPosition(from) || !hasStartPosition(description)) return {};
  return {from, description};
}

ExitStatus concat(const Options& options) {
  checkExtension(options.output);
  for (const std::string& input : options.inputs) checkInput(options, input);
  checkRecordingOutput(options.output, options.inputs, !options.force.empty());
  std::vector<Recording> recordings;
  for (const std::string& input : options.inputs) recordings.emplace_back(input);

  Losses losses;
  const Recording& winner = winnerOf(options, recordings);
  RecordingDescription description = winner.description();
  checkDeviceId(winner, losses);
  std::vector<FrameRange> ranges;
  for (const Recording& recording : recordings) {
    compare(winner, recording, options.hasWinner(), losses);
    description.startTime = std::min(description.startTime, recording.description().startTime);
    ranges.push_back({&recording, allFrames(recording), rebaseTo(description, recording)});
  }
  copyFrames(ranges, options.output, description, options.quiet, losses);
  return losses.status();
}

}  // namespace

void addConcatCommand(Tool& tool) {
  CLI::App* command = tool.addCommand("concat", "Copy recordings into one, one behind the other.",
                                      "concat day.img morning.img evening.img");
  const auto options = std::make_shared<Options>();
  command->add_option("output", options->output, "The recording to make")->required();
  command->add_option("input", options->inputs, "The recordings to copy, in order")->required();
  command
      ->add_flag("--force", options->force,
                 "Replace an existing output; --force=INPUT also takes size, codec and device from "
                 "that input where the others differ, and its start position")
      ->type_name("");
  command->callback([&tool, options] {
    options->quiet = tool.quiet;
    tool.run = [options] { return concat(*options); };
  });
}
