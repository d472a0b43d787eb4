#include <algorithm>

#include "program/Tool.h"
#include "toolkit/editing/Concatenation.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string output;
  std::vector<std::string> inputs;
  std::string force;  // "true": replace the output; an input: it wins, too

  bool hasWinner() const { return !force.empty() && force != "true"; }
};

void checkInput(const Options& options, const std::string& input) {
  checkExtension(input);
  checkSameContainer(input, options.output);
}

// The recording whose description counts.
const Recording& winnerOf(const Options& options, const std::vector<Recording>& recordings) {
  if (!options.hasWinner()) return recordings.front();
  const auto found = std::find(options.inputs.begin(), options.inputs.end(), options.force);
  if (found == options.inputs.end()) {
    throw UsageError("concat: --force=" + options.force + " names none of the inputs");
  }
  return recordings[static_cast<std::size_t>(found - options.inputs.begin())];
}

ExitStatus concat(const Options& options, CommandJob& job) {
  checkExtension(options.output);
  for (const std::string& input : options.inputs) checkInput(options, input);
  const ReservedOutput reserved(options.output, options.inputs, !options.force.empty());
  std::vector<Recording> recordings;
  for (const std::string& input : options.inputs) recordings.push_back(openRecording(input, job));
  concatenate(recordings, winnerOf(options, recordings), options.hasWinner(), options.output, job);
  return job.status();
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("output", options.output, "The recording to make")->required();
  command.add_option("input", options.inputs, "The recordings to copy, in order")->required();
  command
      .add_flag(
          "--force", options.force,
          "Replace an existing output. --force=INPUT also takes size, codec, device and start "
          "position from that input where the recordings differ")
      ->type_name("");
}

}  // namespace

void addConcatCommand(Tool& tool) {
  tool.addCommand<Options>({"concat", "Join recordings into one, in the given order.",
                            "concat day.img morning.img evening.img"},
                           {addOptions, concat});
}

}  // namespace velmar::tool
