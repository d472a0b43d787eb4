#include "program/SelectionOptions.h"
#include "program/Tool.h"
#include "toolkit/files/OutputFile.h"
#include "toolkit/pictures/ContactSheet.h"
#include "toolkit/text/FileNames.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string file;
  std::string output;
  FrameSelection selection;
  const CLI::Option* every = nullptr;
  std::optional<unsigned int> count;
  unsigned int columns = 6;
  bool force = false;
};

ExitStatus makeSheet(const Options& options, CommandJob& job) {
  const bool isPng = hasExtension(options.output, {".png"});
  if (!isPng && !hasExtension(options.output, {".jpg", ".jpeg"})) {
    throw Failure(options.output, "its name has to end in .jpg, .jpeg or .png",
                  VELMAR_ERROR_CODE_INVALID_FILE_NAME_E);
  }
  const Recording recording = openRecording(options.file, job);
  checkOutput(options.output, {options.file}, options.force);
  constexpr std::size_t kCount = 30;
  constexpr int kCompression = 6;
  constexpr int kQuality = 90;
  const std::vector<unsigned int> frames = options.selection.frames(recording);
  const std::size_t count =
      options.count.value_or(options.every->count() > 0 ? frames.size() : kCount);
  const Picture sheet = drawContactSheet(recording, spread(frames, count), options.columns, job);
  replaceFile(options.output, isPng ? encodePng(sheet, kCompression) : encodeJpeg(sheet, kQuality));
  return job.status();
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("file", options.file, "The recording")->required();
  command.add_option("output", options.output, "The sheet, .jpg or .png")->required();
  command
      .add_option("--count", options.count,
                  "Pictures at the most, spread evenly over the frames; if not given 30, or with "
                  "--every all")
      ->type_name("N")
      ->check(CLI::Range(1U, 10000U).description(""));
  command.add_option("--columns", options.columns, "Pictures in a row; 6 if not given")
      ->type_name("N")
      ->check(CLI::Range(1U, 1000U).description(""));
  addRecordingSelectionOptions(command, options.selection);
  options.every = command.get_option("--every");
  command.add_flag("--force", options.force, "Replace an existing file");
}

}  // namespace

void addSheetCommand(Tool& tool) {
  tool.addCommand<Options>({"sheet", "Draw small pictures of frames and their times on one sheet.",
                            "sheet drive.img sheet.jpg --count 40 --columns 8"},
                           {addOptions, makeSheet});
}

}  // namespace velmar::tool
