#include "toolkit/catalog/Catalog.h"

#include "commands/catalog/CatalogOptions.h"
#include "commands/catalog/CatalogProgress.h"
#include "program/InputOptions.h"
#include "program/SelectionOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/tables/FrameExpression.h"
#include "toolkit/text/CsvTable.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/NumberText.h"
#include "toolkit/text/TimeText.h"

namespace velmar::tool {

namespace {

struct Options {
  std::string file;
  CatalogQuestion question;
  JobsOption jobs;
  bool csv = false;
};

std::string lineOf(const FoundFrames& frames, bool isCsv) {
  const std::string first = std::to_string(frames.first);
  const std::string behind = std::to_string(frames.behind);
  const std::string start = formatTime(frames.start);
  const std::string end = formatTime(frames.end);
  if (isCsv) {
    return csvText(frames.file) + "," + first + "," + behind + "," + start + "," + end + "\n";
  }
  return R"({"file":)" + toJsonText(frames.file) + R"(,"range":[)" + first + "," + behind +
         R"(],"start":")" + start + R"(","end":")" + end + "\"}\n";
}

bool isText(const std::string& name) { return parseJson(toJsonText(name)).asString() == name; }

ExitStatus find(const Options& options, CommandJob& job) {
  Catalog catalog(options.file, Database::Access::Read);
  StandardOutput output;
  if (options.csv) output.write("file,first,behind,start,end\n");
  const std::uint64_t unreadable = catalog.info().unreadable;
  if (unreadable > 0) {
    job.lose(options.file, counted(unreadable, "recording") + " could not be read when added");
  }
  CatalogProgress progress("recordings", 0, job);
  catalog.find(
      options.question, options.jobs.count(),
      [&](const FoundFrames& frames) {
        if (!options.csv && !isText(frames.file)) {
          return job.lose(frames.file, "its name is no UTF-8, which JSON cannot give; --csv can");
        }
        output.write(lineOf(frames, options.csv));
      },
      progress.reporter());
  output.flush();
  return job.status();
}

void checkUsage(const Options& options) {
  if (options.question.where.empty() && options.question.time.empty()) {
    throw UsageError("catalog find: --where or --time is required");
  }
}

void addOptions(CLI::App& command, Options& options) {
  addDatabaseOption(command, options.file);
  addWhereOption(command, [&options](const std::string& text) {
    parseFrameExpression(text);  // to refuse it now
    options.question.where = text;
  });
  addTimeOption(command, [&options](const std::string& text) {
    FrameSelection().setTime(text);
    options.question.time = text;
  });
  addSceneFormOptions(command, options.question.form, nullptr);
  addRowFormOptions(command, options.csv);
  options.jobs.addTo(command, "recordings");
}

}  // namespace

void addCatalogFindCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"catalog find", "Find frames that fulfil a condition.",
       "catalog find fleet.db --where 'speed_m_s > 5 && near(48.137, 11.575, 300)'\n\n"
       "It prints ranges of frames, the first and the one behind the last, which cut, extract,\n"
       "frames and view take by --ranges-from."},
      {addOptions, find, checkUsage});
}

}  // namespace velmar::tool
