#include <unistd.h>

#include <memory>

#include "program/OutputGuard.h"
#include "program/SelectionOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/base/Losses.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/recording/StoredFrame.h"

namespace {

struct Options {
  std::string file;
  FrameSelection selection;
};

ExitStatus writeFrames(const Options& options) {
  if (isatty(STDOUT_FILENO) != 0) {
    throw UsageError("cat: standard output is a terminal; send it to a file or to a program");
  }
  const Recording recording(options.file);
  checkStandardOutput(options.file);
  const auto selected = options.selection.frames(recording);
  StandardOutput output;
  FrameLosses losses;
  std::string frame;
  for (const unsigned int index : selected) {
    if (const FrameFlaw flaw = readStoredFrame(recording, index, frame)) {
      losses.add(index, flaw);
    } else {
      output.write(frame);
    }
  }
  output.flush();
  return losses.report(options.file, selected.size());
}

}  // namespace

void addCatCommand(Tool& tool) {
  CLI::App* command =
      tool.addCommand("cat", "Write the stored JPEGs one after another to standard output.",
                      "cat drive.img --range 10:11 >frame.jpg\n"
                      "  velmar-video cat drive.img | ffmpeg -f mjpeg -i - preview.mp4");
  const auto options = std::make_shared<Options>();
  command->add_option("file", options->file, "The recording")->required();
  addSelectionOptions(*command, options->selection);
  command->callback([&tool, options] { tool.run = [options] { return writeFrames(*options); }; });
}
