#include <map>

#include "program/SelectionOptions.h"
#include "program/Tool.h"
#include "toolkit/editing/Extraction.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

const std::map<std::string, PictureForm::Kind> kKinds = {{"jpg", PictureForm::Kind::Stored},
                                                         {"png", PictureForm::Kind::Png},
                                                         {"ppm", PictureForm::Kind::Pnm}};

const std::map<std::string, SCALE_FACTOR_E> kScales = {
    {"1/1", SCALE_FACTOR_1_1_E}, {"7/8", SCALE_FACTOR_7_8_E}, {"3/4", SCALE_FACTOR_3_4_E},
    {"5/8", SCALE_FACTOR_5_8_E}, {"1/2", SCALE_FACTOR_1_2_E}, {"3/8", SCALE_FACTOR_3_8_E},
    {"1/4", SCALE_FACTOR_1_4_E}, {"1/8", SCALE_FACTOR_1_8_E}};

const std::map<std::string, VELMAR_FORMAT_E> kFormats = {
    {"rgb", VELMAR_FORMAT_RGB_E}, {"bgr", VELMAR_FORMAT_BGR_E}, {"gray", VELMAR_FORMAT_GRAY_E}};

struct Options {
  std::string file;
  std::string folder;
  FrameSelection selection;
  PictureForm form;
  unsigned int jobs = 1;
  bool force = false;
  std::vector<const CLI::Option*> decoding;  // make no sense for stored bytes
};

ExitStatus extract(const Options& options, CommandJob& job) {
  Extraction extraction(options.file, options.selection, options.form, options.folder);
  for (const std::string& path : extraction.outputs()) {
    checkOutput(path, {options.file}, options.force);
  }
  extraction.run(options.jobs, job);
  return job.status();
}

void checkUsage(const Options& options) {
  for (const CLI::Option* option : options.decoding) {
    if (!options.form.decodes() && option->count() > 0) {
      throw UsageError("extract: " + option->get_name() + " needs --as png or --as ppm");
    }
  }
}

// An option that takes one of the names.
template <typename Value>
CLI::Option* addChoice(CLI::App& command, const std::string& name, const std::string& type,
                       const std::string& help, const std::map<std::string, Value>& choices,
                       Value& chosen) {
  std::vector<std::string> names;
  names.reserve(choices.size());
  for (const auto& choice : choices) names.push_back(choice.first);
  return command
      .add_option_function<std::string>(
          name, [&](const std::string& text) { chosen = choices.at(text); }, help)
      ->type_name(type)
      ->check(CLI::IsMember(names));
}

void addDecodingOptions(CLI::App& command, Options& options) {
  PictureForm& form = options.form;
  options.decoding = {
      addChoice(command, "--format", "FORMAT",
                "Pixels of png and ppm: rgb, gray, or bgr, which stores blue first although the "
                "file type says red; rgb if not given",
                kFormats, form.format),
      addChoice(command, "--scale", "SCALE", "Size of png and ppm, 1/1 if not given", kScales,
                form.scale),
      command
          .add_option("--crop-top", form.cropTop, "Rows to cut at the top, counted before scaling")
          ->type_name("N"),
      command
          .add_option("--crop-bottom", form.cropBottom,
                      "Rows to cut at the bottom, counted before scaling")
          ->type_name("N")};
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("file", options.file, "The recording")->required();
  command.add_option("--output", options.folder, "The folder, made if it is not there")
      ->required()
      ->type_name("DIR");
  addChoice(command, "--as", "KIND", "jpg: the stored bytes; png, ppm: decoded; jpg if not given",
            kKinds, options.form.kind);
  addDecodingOptions(command, options);
  addSelectionOptions(command, options.selection);
  command
      .add_option(
          "--jobs", options.jobs,
          "Frames to work on at a time, 1 to 256; 1 if not given. Fewer if they would take too "
          "much memory for the size of the recording")
      ->type_name("N")
      ->check(CLI::Range(1U, 256U).description(""));
  command.add_flag("--force", options.force, "Replace existing pictures");
}

}  // namespace

void addExtractCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"extract", "Write frames as pictures into a folder.",
       "extract drive.img --output pictures --range 0:10 --as png --scale 1/2 --crop-top 100"},
      {addOptions, extract, checkUsage});
}

}  // namespace velmar::tool
