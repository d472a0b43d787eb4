#include <algorithm>
#include <filesystem>
#include <map>

#include "program/EachFile.h"
#include "program/OutputOptions.h"
#include "program/SelectionOptions.h"
#include "program/Tool.h"
#include "toolkit/pictures/Extraction.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

const std::map<std::string, PictureForm::Kind> kKinds = {{"jpg", PictureForm::Kind::Jpeg},
                                                         {"png", PictureForm::Kind::Png},
                                                         {"ppm", PictureForm::Kind::Pnm}};

const std::map<std::string, SCALE_FACTOR_E> kScales = {
    {"1/1", SCALE_FACTOR_1_1_E}, {"7/8", SCALE_FACTOR_7_8_E}, {"3/4", SCALE_FACTOR_3_4_E},
    {"5/8", SCALE_FACTOR_5_8_E}, {"1/2", SCALE_FACTOR_1_2_E}, {"3/8", SCALE_FACTOR_3_8_E},
    {"1/4", SCALE_FACTOR_1_4_E}, {"1/8", SCALE_FACTOR_1_8_E}};

const std::map<std::string, VELMAR_FORMAT_E> kFormats = {
    {"rgb", VELMAR_FORMAT_RGB_E}, {"bgr", VELMAR_FORMAT_BGR_E}, {"gray", VELMAR_FORMAT_GRAY_E}};

struct Options {
  InputOptions inputs;
  PictureFolder folder;
  FrameSelection selection;
  PictureForm form;
  JobsOption jobs;
  bool force = false;
  const CLI::Option* quality = nullptr;
  const CLI::Option* compression = nullptr;
};

PictureForm formOf(const Options& options) {
  PictureForm form = options.form;
  const bool changes = form.scale != SCALE_FACTOR_1_1_E || form.cropTop != 0 ||
                       form.cropBottom != 0 || form.format == VELMAR_FORMAT_GRAY_E ||
                       options.quality->count() > 0;
  if (form.kind == PictureForm::Kind::Jpeg && !changes) form.kind = PictureForm::Kind::Stored;
  return form;
}

void extractFrames(const OutputTask& task, const Options& options, SelectedFrames& selected,
                   Job& job) {
  PictureFolder folder = options.folder;
  folder.path = task.output;
  Extraction extraction(
      task.input, [&](const Recording& recording) { return selected.of(recording); },
      formOf(options), folder);
  if (extraction.isEmpty()) return;
  for (const std::string& path : extraction.outputs()) {
    checkOutput(path, {task.input}, options.force || folder.keepsExisting);
  }
  extraction.run(options.jobs.count(), job);
}

ExitStatus extract(const Options& options, CommandJob& job) {
  std::vector<OutputTask> tasks;
  if (options.inputs.isOneFile()) {
    tasks.push_back({options.inputs.inputs.front(), options.folder.path});
  } else {
    tasks = tasksInFolder(
        options.inputs.find(job, isRecordingName, "recording"), options.folder.path,
        [](const std::string& name) {
          return std::filesystem::path(name).replace_extension().string();
        },
        job);
  }
  SelectedFrames selected(options.selection, tasks.size());
  const auto work = [&](std::size_t at, Job& fileJob, StandardOutput& /*output*/) {
    extractFrames(tasks[at], options, selected, fileJob);
  };
  // The frames of one are shared out to the threads.
  forEachFile(inputsOf(tasks), 1, "recordings", work, job);
  selected.check(job);
  return job.status();
}

void checkUsage(const Options& options) {
  options.inputs.checkUsage("extract");
  if (options.folder.path == "-") {
    throw UsageError("extract: --output is a folder; cat writes frames to standard output");
  }
  if (options.compression->count() > 0 && options.form.kind != PictureForm::Kind::Png) {
    throw UsageError("extract: --compression needs --as png");
  }
  if (options.form.kind != PictureForm::Kind::Jpeg) {
    if (options.quality->count() > 0) throw UsageError("extract: --quality needs --as jpg");
  } else if (options.form.format == VELMAR_FORMAT_BGR_E) {
    throw UsageError("extract: --format bgr needs --as png or --as ppm");
  }
}

// An option that takes one of the names.
template <typename Value>
void addChoice(CLI::App& command, const std::string& name, const std::string& type,
               const std::string& help, const std::map<std::string, Value>& choices,
               Value& chosen) {
  std::vector<std::string> names;
  names.reserve(choices.size());
  for (const auto& choice : choices) names.push_back(choice.first);
  command
      .add_option_function<std::string>(
          name, [&](const std::string& text) { chosen = choices.at(text); }, help)
      ->type_name(type)
      ->check(CLI::IsMember(names));
}

void addDecodingOptions(CLI::App& command, Options& options) {
  PictureForm& form = options.form;
  addChoice(command, "--format", "FORMAT",
            "Pixels: rgb, gray, or for png and ppm bgr, which stores blue first although the "
            "file type says red; rgb if not given",
            kFormats, form.format);
  addChoice(command, "--scale", "SCALE", "Size of the pictures, 1/1 if not given", kScales,
            form.scale);
  command.add_option("--crop-top", form.cropTop, "Rows to cut at the top, counted before scaling")
      ->type_name("N");
  command
      .add_option("--crop-bottom", form.cropBottom,
                  "Rows to cut at the bottom, counted before scaling")
      ->type_name("N");
  options.quality = command
                        .add_option("--quality", form.quality,
                                    "Of jpg that are encoded again, 1 to 100; 90 if not given")
                        ->type_name("N")
                        ->check(CLI::Range(1, 100).description(""));
  options.compression =
      command
          .add_option("--compression", form.compression,
                      "Of png, from 1, which is quick, to 12, which is small; 1 if not given")
          ->type_name("N")
          ->check(CLI::Range(1, 12).description(""));
}

void addOptions(CLI::App& command, Options& options) {
  options.inputs.addTo(command, InputOptions::kWithRunning);
  options.inputs.addRangesTo(command, &options.selection);
  command
      .add_option("--output", options.folder.path,
                  "The folder, made if it is not there; of several recordings, or of a folder of "
                  "them, each gets one in it by its name")
      ->required()
      ->type_name("DIR");
  options.form.kind = PictureForm::Kind::Jpeg;
  addChoice(command, "--as", "KIND",
            "jpg: the stored bytes, or encoded again if an option below changes them; png, ppm: "
            "decoded; jpg if not given",
            kKinds, options.form.kind);
  addDecodingOptions(command, options);
  addRecordingSelectionOptions(command, options.selection);
  options.jobs.addTo(command, "frames");
  command.add_flag_callback(
      "--no-table", [&options] { options.folder.hasTable = false; },
      "Without frames.csv, the table of the pictures beside them");
  command.add_flag("--skip-existing", options.folder.keepsExisting,
                   "Keep existing pictures, to go on where an earlier run was stopped; their rows "
                   "stay in frames.csv");
  command.add_flag("--force", options.force, "Replace existing pictures");
}

}  // namespace

void addExtractCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"extract", "Write frames as pictures into a folder.",
       "extract drive.img --output pictures --range 0:10 --as png --scale 1/2 --crop-top 100\n"
       "  velmar-video extract day --recursive --output pictures --every 10s --as jpg --scale 1/4"},
      {addOptions, extract, checkUsage});
}

}  // namespace velmar::tool
