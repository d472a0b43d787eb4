#include <unistd.h>

#include <algorithm>

#include "program/DescriptionOptions.h"
#include "program/EachFile.h"
#include "program/FollowOption.h"
#include "program/InputOptions.h"
#include "program/SelectionOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/files/OutputFile.h"
#include "toolkit/files/RecorderFiles.h"
#include "toolkit/frames/FollowedFrames.h"
#include "toolkit/frames/FrameLosses.h"
#include "toolkit/recording/OpenFailure.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/tables/FrameLine.h"
#include "toolkit/tables/FrameTable.h"
#include "toolkit/tables/Track.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/writing/OutputGuard.h"

namespace velmar::tool {

namespace {

struct Options {
  InputOptions inputs;
  JobsOption jobs;
  std::vector<std::string> files;  // of these
  FrameSelection selection;
  bool json = false;
  bool csv = false;
  FrameTable columns;
  std::optional<HashKind> hash;
  std::string gpxFile;
  std::string geoJsonFile;
  bool force = false;
  bool follow = false;

  bool makesTracks() const { return !gpxFile.empty() || !geoJsonFile.empty(); }
  // A track alone is no wish for a list.
  bool lists() const { return json || csv || !columns.empty() || hash || !makesTracks(); }
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
  const bool listToOutput = options.makesTracks() && options.lists();
  if (gpxToOutput + geoJsonToOutput + listToOutput > 1) {
    throw UsageError("frames: standard output takes one of list, GPX and GeoJSON");
  }
  if (!options.gpxFile.empty() && options.gpxFile == options.geoJsonFile) {
    throw UsageError("frames: --gpx and --geojson need a file each");
  }
  for (const std::string& file : options.files) checkStandardOutput(file);
  for (const std::string& file : {options.gpxFile, options.geoJsonFile}) {
    if (file.empty()) continue;
    checkHasTrack(options.files.front());
    if (file != "-") checkOutput(file, options.files, options.force);
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
  if (!options.makesTracks()) return;
  const Track track(recording);
  if (!options.gpxFile.empty()) writeText(options.gpxFile, track.gpx(frames));
  try {
    if (!options.geoJsonFile.empty()) writeText(options.geoJsonFile, track.geoJson(frames));
  } catch (const Failure&) {
    if (!options.gpxFile.empty() && options.gpxFile != "-") ::unlink(options.gpxFile.c_str());
    throw;
  }
}

// The list of all recordings, in one table. Several threads may add to it.
class FrameList {
 public:
  explicit FrameList(const Options& options)
      : options_(options), table_(options.inputs.isOneFile() ? FrameTable() : columns(nullptr)) {
    for (const std::string& file : options.files) {
      fileWidth_ = std::max(fileWidth_, printable(file).size());
    }
  }

  // Of several recordings; one alone has its own with its first frame.
  void writeHeader() const {
    StandardOutput output;
    if (!options_.inputs.isOneFile()) output.write(header(table_));
    output.flush();
  }

  void add(const Recording& recording, const std::vector<unsigned int>& frames, Job& job,
           StandardOutput& output) const {
    const bool isOne = options_.inputs.isOneFile();
    const FrameTable table = isOne ? columns(&recording) : table_;
    if (isOne) output.write(header(table));
    FrameNews news(recording.path(), job);
    FrameLine line(recording, table, &news);
    for (const unsigned int index : frames) output.write(textOf(line, index));
    news.finish();
  }

  // The lines of one alone, which come with its frames.
  void follow(Job& job) const {
    const std::string& file = options_.files.front();
    const FrameTable given = options_.columns;
    const bool neighbours = std::any_of(given.begin(), given.end(), [](const FrameColumn& column) {
      return column.fact && column.fact->needsNeighbours();
    });
    FollowedFrames followed(file, options_.selection, neighbours, job);
    FrameNews news(file, job);
    FrameTable table;
    std::optional<FrameLine> line;
    for (auto frames = followed.next(); !frames.empty(); frames = followed.next()) {
      StandardOutput output;
      if (!line) {
        output.write(header(table = columns(&followed.recording())));
        line.emplace(followed.recording(), table, &news);
      }
      for (const unsigned int index : frames) output.write(textOf(*line, index));
      output.flush();
    }
    news.finish();
  }

 private:
  std::string textOf(FrameLine& line, unsigned int index) const {
    return options_.json  ? line.json(index)
           : options_.csv ? line.csv(index)
                          : line.text(index, fileWidth_);
  }

  std::string header(const FrameTable& table) const {
    if (options_.json) return "";
    return options_.csv ? csvHeader(table) : FrameLine::textHeader(table, fileWidth_);
  }

  // Of one recording, or of several all that their containers may hold, whichever of them come.
  FrameTable columns(const Recording* one) const {
    FrameTable table = options_.columns;
    if (table.empty()) {
      const bool isForPeople = !options_.json && !options_.csv;
      const bool hasRtv =
          std::any_of(options_.files.begin(), options_.files.end(),
                      [](const std::string& file) { return isRtvPath(finalPath(file)); });
      table = isForPeople      ? columnsForPeople(hasRtv)
              : one != nullptr ? columnsOf(*one)
                               : columnsForPrograms(hasRtv, hasRtv);
      if (one == nullptr) table.insert(table.begin(), namedColumns("file").front());
    }
    if (options_.hash) addHash(table);
    return table;
  }

  // Unless --columns has put it elsewhere.
  void addHash(FrameTable& table) const {
    const FrameColumn hash = hashColumn(*options_.hash);
    const bool isThere = std::any_of(table.begin(), table.end(), [&](const FrameColumn& column) {
      return column.name == hash.name;
    });
    if (!isThere) table.push_back(hash);
  }

  const Options& options_;
  const FrameTable table_;  // of several recordings
  std::size_t fileWidth_ = 0;
};

ExitStatus showFrames(const Options& given, CommandJob& job) {
  Options options = given;
  options.files = given.inputs.files(job);
  if (options.files.empty()) return job.status();
  if (options.makesTracks() && options.files.size() > 1) {
    throw UsageError("frames: --gpx and --geojson are of one recording");
  }
  checkOutputs(options);
  const FrameList list(options);
  if (options.follow) {
    list.follow(job);
    return job.status();
  }
  SelectedFrames selected(options.selection, options.files.size());
  if (options.lists()) list.writeHeader();
  const auto work = [&](std::size_t at, Job& fileJob, StandardOutput& output) {
    // A track counts from the start position, which is not known before the end.
    const Accept accept = options.makesTracks() ? Accept::Finished : Accept::Running;
    const Recording recording = openRecording(options.files[at], fileJob, accept);
    const auto frames = selected.of(recording);
    if (frames.empty()) return;
    if (options.lists()) list.add(recording, frames, fileJob, output);
    writeTracks(options, recording, frames);
  };
  forEachFile(options.files, options.jobs.count(), "recordings", work, job);
  selected.check(job);
  return job.status();
}

void checkUsage(const Options& options) {
  options.inputs.checkUsage("frames");
  if (!options.follow) return;
  checkFollowsOne("frames", options.inputs);
  if (options.makesTracks())
    throw UsageError("frames: --gpx and --geojson do not go with --follow");
}

void addColumnOptions(CLI::App& command, Options& options) {
  addParsedOption(
      command, "--columns", "NAMES",
      "Only these, with commas between them: the columns of --csv, the names of --where, "
      "file, captured and arrived (RFC 3339), xxh3_128 and sha256",
      [&options](const std::string& names) { options.columns = namedColumns(names); });
  addParsedOption(command, "--hash", "KIND",
                  "Also a hash of each frame as it is stored: xxh3 (XXH3 of 128 bits), which is "
                  "quick and the one if not given, or sha256",
                  [&options](const std::string& kind) {
                    options.hash = kind == "sha256" ? HashKind::Sha256 : HashKind::Xxh3;
                  })
      ->expected(0, 1)
      ->check(CLI::Validator(
          [](const std::string& kind) {
            return kind == "xxh3" || kind == "sha256"
                       ? std::string()
                       : kind + " is neither xxh3 nor sha256; --hash alone goes behind the files";
          },
          "{xxh3,sha256}"));
}

void addOptions(CLI::App& command, Options& options) {
  options.inputs.addTo(command, InputOptions::kWithRunning);
  options.inputs.addRangesTo(command, &options.selection);
  auto* json = command.add_flag("--json", options.json, "One JSON object for each frame");
  command.add_flag("--csv", options.csv, "Comma-separated values with a header line")
      ->excludes(json);
  addColumnOptions(command, options);
  command.add_option("--gpx", options.gpxFile, "rtv: write the track as GPX instead of the list")
      ->type_name("FILE");
  command.add_option("--geojson", options.geoJsonFile, "rtv: the same as GeoJSON")
      ->type_name("FILE");
  command.add_flag("--force", options.force, "Replace existing tracks");
  addRecordingSelectionOptions(command, options.selection);
  addFollowOption(command, options.follow);
  options.jobs.addTo(command, "recordings");
}

}  // namespace

void addFramesCommand(Tool& tool) {
  tool.addCommand<Options>({"frames", "List the frames of recordings.",
                            "frames drive.img --time +10s:+12.5s\n"
                            "  velmar-video frames drive.rtv --where 'speed_km_h > 30' --columns "
                            "index,captured,speed_km_h"},
                           {addOptions, showFrames, checkUsage});
}

}  // namespace velmar::tool
