#include <unistd.h>

#include "program/SelectionOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/base/OutputFile.h"
#include "toolkit/recording/OpenFailure.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/tables/FrameLine.h"
#include "toolkit/tables/Track.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string file;
  FrameSelection selection;
  bool json = false;
  bool csv = false;
  std::string gpxFile;
  std::string geoJsonFile;
  bool force = false;

  // A track alone is no wish for a list.
  bool lists() const { return json || csv || (gpxFile.empty() && geoJsonFile.empty()); }
};

void checkHasTrack(const std::string& file) {
  if (const auto failure = pathFailure(file)) throw Failure(*failure);
  checkExtension(file);
  if (isRtvPath(file)) return;
  throw Failure(file, "an img holds no positions, so it has no track",
                VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

// Before anything is written.
void checkOutputs(const Options& options) {
  const bool gpxToOutput = options.gpxFile == "-";
  const bool geoJsonToOutput = options.geoJsonFile == "-";
  if (gpxToOutput + geoJsonToOutput + (options.json || options.csv) > 1) {
    throw UsageError("frames: standard output takes one of list, GPX and GeoJSON");
  }
  if (!options.gpxFile.empty() && options.gpxFile == options.geoJsonFile) {
    throw UsageError("frames: --gpx and --geojson need a file each");
  }
  checkStandardOutput(options.file);
  for (const std::string& file : {options.gpxFile, options.geoJsonFile}) {
    if (file.empty()) continue;
    checkHasTrack(options.file);
    if (file != "-") checkOutput(file, {options.file}, options.force);
  }
}

void writeText(const std::string& file, const std::string& text) {
  if (file != "-") return replaceFile(file, text);
  StandardOutput output;
  output.write(text);
  output.flush();
}

void writeTracks(const Options& options, const Recording& recording,
                 const std::vector<unsigned int>& frames) {
  if (options.gpxFile.empty() && options.geoJsonFile.empty()) return;
  const Track track(recording);
  if (!options.gpxFile.empty()) writeText(options.gpxFile, track.gpx(frames));
  try {
    if (!options.geoJsonFile.empty()) writeText(options.geoJsonFile, track.geoJson(frames));
  } catch (const Failure&) {
    if (!options.gpxFile.empty() && options.gpxFile != "-") ::unlink(options.gpxFile.c_str());
    throw;
  }
}

void listFrames(const Options& options, const Recording& recording,
                const std::vector<unsigned int>& frames) {
  const FrameLine line(recording);
  StandardOutput output;
  if (!options.json) output.write(options.csv ? line.csvHeader() : FrameLine::textHeader());
  for (const unsigned int index : frames) {
    output.write(options.json  ? line.json(index)
                 : options.csv ? line.csv(index)
                               : line.text(index));
  }
  output.flush();
}

ExitStatus showFrames(const Options& options, CommandJob& job) {
  checkOutputs(options);
  const Recording recording = openRecording(options.file, job);
  const auto frames = options.selection.frames(recording);
  if (options.lists()) listFrames(options, recording, frames);
  writeTracks(options, recording, frames);
  return job.status();
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("file", options.file, "The recording")->required();
  auto* json = command.add_flag("--json", options.json, "One JSON object for each frame");
  command.add_flag("--csv", options.csv, "Comma-separated values with a header line")
      ->excludes(json);
  command.add_option("--gpx", options.gpxFile, "rtv: write the track as GPX instead of the list")
      ->type_name("FILE");
  command.add_option("--geojson", options.geoJsonFile, "rtv: the same as GeoJSON")
      ->type_name("FILE");
  command.add_flag("--force", options.force, "Replace existing tracks");
  addRecordingSelectionOptions(command, options.selection);
}

}  // namespace

void addFramesCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"frames", "List the frames of a recording.", "frames drive.img --time +10s:+12.5s"},
      {addOptions, showFrames});
}

}  // namespace velmar::tool
