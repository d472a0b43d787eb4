#include <algorithm>

#include "program/InputOptions.h"
#include "program/SelectionOptions.h"
#include "program/Tool.h"
#include "toolkit/copying/Concatenation.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string output;
  InputOptions inputs;
  bool inOrder = false;
  bool dropOverlap = false;
  Strip strip;
  std::string force;  // "true": replace the output; an input: it wins, too

  bool hasWinner() const { return !force.empty() && force != "true"; }
};

// The recording whose description counts; null if that does not matter.
const Recording* winnerOf(const Options& options, const std::vector<Recording>& recordings) {
  if (!options.hasWinner()) return nullptr;
  const auto found = std::find_if(recordings.begin(), recordings.end(), [&](const Recording& one) {
    return one.path() == options.force;
  });
  if (found != recordings.end()) return &*found;
  throw UsageError("concat: --force=" + options.force + " names none of the inputs");
}

ExitStatus concat(const Options& options, CommandJob& job) {
  checkExtension(options.output);
  const std::vector<std::string> inputs = options.inputs.files(job);
  if (job.status() != ExitStatus::Done) return job.status();
  if (inputs.empty()) {
    throw Failure(options.output, "there is no recording to make it of",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  for (const std::string& input : inputs) {
    checkExtension(input);
    checkSameContainer(input, options.output);
  }
  const ReservedOutput reserved(options.output, inputs, !options.force.empty());
  std::vector<Recording> recordings;
  recordings.reserve(inputs.size());
  for (const std::string& input : inputs) recordings.push_back(openRecording(input, job));
  std::vector<const Recording*> ordered;
  ordered.reserve(recordings.size());
  for (const Recording& recording : recordings) ordered.push_back(&recording);
  if (!options.inOrder) {
    std::stable_sort(ordered.begin(), ordered.end(), [](auto* one, auto* other) {
      return captureStart(*one) < captureStart(*other);
    });
  }
  const Joint joint{winnerOf(options, recordings), options.dropOverlap, options.strip};
  concatenate(ordered, joint, options.output, job);
  return job.status();
}

void checkUsage(const Options& options) { options.inputs.checkUsage("concat"); }

void addOptions(CLI::App& command, Options& options) {
  command.add_option("output", options.output, "The recording to make")->required();
  options.inputs.addTo(command);
  auto* inOrder = command.add_flag("--in-order", options.inOrder,
                                   "In the given order, not by the capture of their frame 0");
  command
      .add_flag("--drop-overlap", options.dropOverlap,
                "Leave out frames that were captured no later than the last one of the recordings "
                "before")
      ->excludes(inOrder);
  addStripOption(command, options.strip);
  command
      .add_flag(
          "--force", options.force,
          "Replace an existing output. --force=INPUT also takes size, codec, device and start "
          "position from that input where the recordings differ")
      ->type_name("");
}

}  // namespace

void addConcatCommand(Tool& tool) {
  tool.addCommand<Options>({"concat", "Join recordings into one, by their start.",
                            "concat day.img morning.img evening.img\n"
                            "  velmar-video concat day.rtv parts --drop-overlap"},
                           {addOptions, concat, checkUsage});
}

}  // namespace velmar::tool
