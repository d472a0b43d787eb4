#include <unistd.h>

#include "program/SelectionOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/recording/FrameLosses.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string file;
  FrameSelection selection;
};

ExitStatus writeFrames(const Options& options, CommandJob& job) {
  if (isatty(STDOUT_FILENO) != 0) {
    throw UsageError("cat: standard output is a terminal; send it to a file or to a program");
  }
  const Recording recording = openRecording(options.file, job);
  checkStandardOutput(options.file);
  const auto selected = options.selection.frames(recording);
  StandardOutput output;
  StoredFrames frames(recording);
  FrameLosses losses;
  std::string frame;
  for (const unsigned int index : selected) {
    if (const FrameFlaw flaw = frames.read(index, frame)) {
      losses.add(index, flaw);
    } else {
      output.write(frame);
    }
  }
  output.flush();
  losses.report(options.file, selected.size(), job);
  return job.status();
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("file", options.file, "The recording")->required();
  addRecordingSelectionOptions(command, options.selection);
}

}  // namespace

void addCatCommand(Tool& tool) {
  tool.addCommand<Options>({"cat", "Write the stored JPEGs one after another to standard output.",
                            "cat drive.img --range 10:11 >frame.jpg\n"
                            "  velmar-video cat drive.img | ffmpeg -f mjpeg -i - preview.mp4"},
                           {addOptions, writeFrames});
}

}  // namespace velmar::tool
