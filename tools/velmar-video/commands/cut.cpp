#include "program/SelectionOptions.h"
#include "program/Tool.h"
#include "toolkit/editing/CopyFrames.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string input;
  std::string output;
  FrameSelection selection;
  bool force = false;
};

ExitStatus cut(const Options& options, CommandJob& job) {
  checkExtension(options.output);
  checkSameContainer(options.input, options.output);
  const ReservedOutput reserved(options.output, {options.input}, options.force);
  const Recording recording = openRecording(options.input, job);
  checkDeviceId(recording, job);
  copyFrames({{&recording, options.selection.frames(recording)}}, options.output,
             recording.description(), job);
  return job.status();
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("input", options.input, "The recording to copy from")->required();
  command.add_option("output", options.output, "The recording to make")->required();
  addRecordingSelectionOptions(command, options.selection);
  command.add_flag("--force", options.force, "Replace an existing output");
}

}  // namespace

void addCutCommand(Tool& tool) {
  tool.addCommand<Options>({"cut", "Copy some frames into a recording of their own, as they are.",
                            "cut drive.img scene.img --time +10s:+12.5s"},
                           {addOptions, cut});
}

}  // namespace velmar::tool
