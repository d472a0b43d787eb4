#include <memory>

#include "FrameLine.h"
#include "FrameSelection.h"
#include "Recording.h"
#include "StandardOutput.h"
#include "Tool.h"

namespace {

struct Options {
  std::string file;
  FrameSelection selection;
  bool json = false;
  bool csv = false;
};

ExitStatus listFrames(const Options& options) {
  const Recording recording(options.file);
  const auto selected = options.selection.frames(recording);
  const FrameLine line(recording);
  StandardOutput output;
  if (!options.json) output.write(options.csv ? line.csvHeader() : FrameLine::textHeader());
  for (const unsigned int index : selected) {
    output.write(options.json  ? line.json(index)
                 : options.csv ? line.csv(index)
                               : line.text(index));
  }
  output.flush();
  return ExitStatus::Done;
}

}  // namespace

void addFramesCommand(Tool& tool) {
  CLI::App* command = tool.addCommand("frames", "List the frames of a recording.",
                                      "frames drive.img --time +10s:+12.5s");
  const auto options = std::make_shared<Options>();
  command->add_option("file", options->file, "The recording")->required();
  auto* json = command->add_flag("--json", options->json, "One JSON object for each frame");
  command->add_flag("--csv", options->csv, "A table with commas")->excludes(json);
  options->selection.addTo(*command);
  command->callback([&tool, options] { tool.run = [options] { return listFrames(*options); }; });
}
