#include <memory>

#include "program/OutputGuard.h"
#include "program/SelectionOptions.h"
#include "program/Tool.h"
#include "toolkit/editing/CopyFrames.h"

namespace {

struct Options {
  std::string input;
  std::string output;
  FrameSelection selection;
  bool force = false;
  bool quiet = false;
};

ExitStatus cut(const Options& options) {
  checkExtension(options.output);
  checkSameContainer(options.input, options.output);
  checkRecordingOutput(options.output, {options.input}, options.force);
  const Recording recording(options.input);
  Losses losses;
  checkDeviceId(recording, losses);
  copyFrames({{&recording, options.selection.frames(recording)}}, options.output,
             recording.description(), options.quiet, losses);
  return losses.status();
}

}  // namespace

void addCutCommand(Tool& tool) {
  CLI::App* command =
      tool.addCommand("cut", "Copy some frames into a recording of their own, as they are.",
                      "cut drive.img scene.img --time +10s:+12.5s");
  const auto options = std::make_shared<Options>();
  command->add_option("input", options->input, "The recording to copy from")->required();
  command->add_option("output", options->output, "The recording to make")->required();
  addSelectionOptions(*command, options->selection);
  command->add_flag("--force", options->force, "Replace an existing output");
  command->callback([&tool, options] {
    options->quiet = tool.quiet;
    tool.run = [options] { return cut(*options); };
  });
}
