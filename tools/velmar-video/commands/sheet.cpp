#include "program/SelectionOptions.h"
#include "program/Tool.h"
#include "toolkit/base/OutputFile.h"
#include "toolkit/editing/ContactSheet.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string file;
  std::string output;
  FrameSelection selection;
  unsigned int count = 30;
  unsigned int columns = 6;
  bool force = false;

  bool isPng() const { return output.ends_with(".png"); }
};

ExitStatus makeSheet(const Options& options, CommandJob& job) {
  const Recording recording = openRecording(options.file, job);
  checkOutput(options.output, {options.file}, options.force);
  const auto frames = spread(options.selection.frames(recording), options.count);
  const Picture sheet = drawContactSheet(recording, frames, options.columns, job);
  replaceFile(options.output, options.isPng() ? encodePng(sheet, 6) : encodeJpeg(sheet, 90));
  return job.status();
}

void checkUsage(const Options& options) {
  if (!options.isPng() && !options.output.ends_with(".jpg") && !options.output.ends_with(".jpeg")) {
    throw UsageError("sheet: the name of the sheet has to end in .jpg or .png");
  }
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("file", options.file, "The recording")->required();
  command.add_option("output", options.output, "The sheet, .jpg or .png")->required();
  command
      .add_option("--count", options.count,
                  "Pictures at the most, spread evenly over the frames; 30 if not given")
      ->type_name("N")
      ->check(CLI::Range(1U, 10000U).description(""));
  command.add_option("--columns", options.columns, "Pictures in a row; 6 if not given")
      ->type_name("N")
      ->check(CLI::Range(1U, 1000U).description(""));
  addRecordingSelectionOptions(command, options.selection);
  command.add_flag("--force", options.force, "Replace an existing file");
}

}  // namespace

void addSheetCommand(Tool& tool) {
  tool.addCommand<Options>({"sheet", "Draw small pictures of frames and their times on one sheet.",
                            "sheet drive.img sheet.jpg --count 40 --columns 8"},
                           {addOptions, makeSheet, checkUsage});
}

}  // namespace velmar::tool
