#include "toolkit/catalog/Catalog.h"

#include <cmath>
#include <set>

#include "program/DescriptionOptions.h"
#include "program/InputOptions.h"
#include "program/SelectionOptions.h"
#include "program/StandardOutput.h"
#include "program/Tool.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/tables/FrameExpression.h"
#include "toolkit/text/CsvTable.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/NumberText.h"
#include "toolkit/text/PrintableText.h"
#include "toolkit/text/TimeText.h"

namespace velmar::tool {

namespace {

using Access = Database::Access;

struct Options {
  std::string action;
  std::string file;
  InputOptions inputs;  // or the query
  JobsOption jobs;
  bool verify = false;
  CatalogQuestion question;
  const CLI::Option* where = nullptr;
  const CLI::Option* time = nullptr;
  bool csv = false;
  bool json = false;

  bool hasForm() const { return question.form.join || question.form.pad; }
};

// Tells the job, and shows how far it is.
class Progress {
 public:
  Progress(const std::string& name, std::size_t total, CommandJob& job)
      : job_(job), stage_(job.beginFiles(name, total)) {}

  CatalogReporter reporter() {
    return {[this](std::size_t done, std::size_t /*total*/) {
              stage_->advance(done);
              return !stage_->stopRequested();
            },
            [this](const Failure& failure) { job_.fail(failure); },
            [this](const std::string& file, const std::string& words) { job_.lose(file, words); },
            [this](const std::string& file, const std::string& words) { job_.note(file, words); }};
  }

 private:
  CommandJob& job_;
  std::unique_ptr<Job::Stage> stage_;
};

ExitStatus add(const Options& options, CommandJob& job) {
  Catalog catalog(options.file, Access::Write);
  CatalogInputs inputs;
  std::set<std::string> folders;
  for (InputFile& file : options.inputs.find(job, isRecordingName, "recording")) {
    inputs.files.push_back(std::move(file.path));
    if (!file.folder.empty()) folders.insert(std::move(file.folder));
  }
  inputs.folders.assign(folders.begin(), folders.end());
  inputs.verify = options.verify;
  const std::string name = counted(inputs.files.size(), "recording");
  Progress progress(name, inputs.files.size(), job);
  const CatalogChanges changes = catalog.add(inputs, options.jobs.count(), progress.reporter());
  if (!changes.isWhole) job.lose(options.file, "stopped by a signal; add goes on from there");
  StandardOutput output;
  output.write(name + ": " + std::to_string(changes.added) + " added, " +
               std::to_string(changes.unchanged) + " unchanged, " +
               std::to_string(changes.unreadable) + " unreadable, " +
               std::to_string(changes.removed) + " removed\n");
  output.flush();
  return job.status();
}

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
  Catalog catalog(options.file, Access::Read);
  StandardOutput output;
  if (options.csv) output.write("file,first,behind,start,end\n");
  const std::uint64_t unreadable = catalog.info().unreadable;
  if (unreadable > 0) {
    job.lose(options.file, counted(unreadable, "recording") + " could not be read when added");
  }
  Progress progress("recordings", 0, job);
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

std::string hoursText(std::uint64_t micros) {
  constexpr double kHour = 3.6e9;
  return fixedText(static_cast<double>(micros) / kHour, 2) + " h";
}

std::string textOf(const CatalogTotals& totals) {
  return counted(totals.recordings, "recording") + ", " + counted(totals.frames, "frame") + ", " +
         hoursText(totals.duration) + ", " + sizeText(totals.bytes);
}

std::string membersOf(const CatalogTotals& totals) {
  return R"("recordings":)" + std::to_string(totals.recordings) + R"(,"frames":)" +
         std::to_string(totals.frames) + R"(,"duration_us":)" + std::to_string(totals.duration) +
         R"(,"bytes":)" + std::to_string(totals.bytes);
}

std::string jsonOf(const std::string& file, const CatalogInfo& info) {
  std::string text =
      R"({"file":)" + toJsonText(file) + "," + membersOf(info.all) + R"(,"containers":{)";
  for (const CatalogTotals& one : info.containers) {
    text += (&one == info.containers.data() ? "\"" : ",\"") + one.container + R"(":{)" +
            membersOf(one) + "}";
  }
  text += "}";
  if (info.span) {
    text += R"(,"start":")" + formatTime(info.span->first) + R"(","end":")" +
            formatTime(info.span->second) + "\"";
  }
  return text + R"(,"unreadable":)" + std::to_string(info.unreadable) + R"(,"removed":)" +
         std::to_string(info.removed) + "}\n";
}

std::string textOf(const std::string& file, const CatalogInfo& info) {
  std::string text = printable(file) + "\n  all          " + textOf(info.all) + "\n";
  for (const CatalogTotals& one : info.containers) {
    text += "  " + one.container + "          " + textOf(one) + "\n";
  }
  if (info.span) {
    text += "  captured     " + formatTime(info.span->first) + " to " +
            formatTime(info.span->second) + "\n";
  }
  return text + "  unreadable   " + std::to_string(info.unreadable) + "\n  removed      " +
         std::to_string(info.removed) + "\n";
}

ExitStatus showInfo(const Options& options, CommandJob& job) {
  const CatalogInfo info = Catalog(options.file, Access::Read).info();
  StandardOutput output;
  output.write(options.json ? jsonOf(options.file, info) : textOf(options.file, info));
  output.flush();
  return job.status();
}

std::string cellOf(const Statement& row, int column, bool isCsv) {
  const bool isUnknown =
      row.isNull(column) || (row.isReal(column) && !std::isfinite(row.real(column)));
  if (isUnknown) return isCsv ? "" : "null";
  if (row.isInteger(column)) return numberText(row.number(column));
  if (row.isReal(column)) return numberText(row.real(column));
  return isCsv ? csvText(row.text(column)) : toJsonText(row.text(column));
}

std::string lineOf(const Statement& row, bool isCsv) {
  std::string line;
  for (int i = 0; i < row.columns(); ++i) {
    line += i == 0 ? "" : ",";
    if (!isCsv) line += toJsonText(row.columnName(i)) + ":";
    line += cellOf(row, i, isCsv);
  }
  return isCsv ? line + "\n" : "{" + line + "}\n";
}

ExitStatus ask(const Options& options, CommandJob& job) {
  Catalog catalog(options.file, Access::Read);
  catalog.database().allowSelectOnly();
  Statement rows(catalog.database(), options.inputs.inputs.front());
  StandardOutput output;
  if (options.csv) {
    std::string header;
    for (int i = 0; i < rows.columns(); ++i)
      header += (i == 0 ? "" : ",") + csvText(rows.columnName(i));
    output.write(header + "\n");
  }
  while (rows.step()) output.write(lineOf(rows, options.csv));
  output.flush();
  return job.status();
}

ExitStatus work(const Options& options, CommandJob& job) {
  if (options.action == "add") return add(options, job);
  if (options.action == "find") return find(options, job);
  return options.action == "info" ? showInfo(options, job) : ask(options, job);
}

void checkUsage(const Options& options) {
  const std::string name = "catalog " + options.action;
  const bool finds = options.action == "find";
  const bool adds = options.action == "add";
  const bool asks = options.action == "sql";
  if (adds) options.inputs.checkUsage(name);
  if (asks && options.inputs.inputs.size() != 1)
    throw UsageError(name + ": QUERY is missing, one SELECT");
  if (!adds && !asks && !options.inputs.inputs.empty()) {
    throw UsageError(name + ": " + options.inputs.inputs.front() + " is one argument too many");
  }
  const bool hasQuestion = options.where->count() + options.time->count() > 0;
  if (finds && !hasQuestion) throw UsageError(name + ": --where or --time is required");
  if (!finds && hasQuestion) throw UsageError(name + ": --where and --time are for catalog find");
  if (!finds && options.hasForm())
    throw UsageError(name + ": --join and --pad are for catalog find");
  if (!adds && options.verify) throw UsageError(name + ": --verify is for catalog add");
  if (!finds && !asks && options.csv) throw UsageError(name + ": --csv is for find and sql");
}

void addOptions(CLI::App& command, Options& options) {
  command.add_option("action", options.action, "add, find, info or sql")
      ->required()
      ->check(CLI::IsMember({"add", "find", "info", "sql"}).description(""));
  command.add_option("database", options.file, "The catalogue; add makes it if it is not there")
      ->required();
  options.inputs.addTo(
      command, "add: recordings, and folders of them (*.img, *.rtv). sql: a SELECT", "argument");
  options.where = addWhereOption(command, [&options](const std::string& text) {
    parseFrameExpression(text);  // to refuse it now
    options.question.where = text;
  });
  options.time = addTimeOption(command, [&options](const std::string& text) {
    FrameSelection().setTime(text);
    options.question.time = text;
  });
  addSceneFormOptions(command, options.question.form, nullptr);
  command.add_flag("--verify", options.verify, "add: also what verify finds in each recording");
  auto* json = command.add_flag("--json", options.json,
                                "One JSON object for each range or row, which is what find and "
                                "sql print if not told otherwise; info: one for all");
  command.add_flag("--csv", options.csv, "find and sql: comma-separated values with a header line")
      ->excludes(json);
  options.jobs.addTo(command, "recordings");
}

}  // namespace

void addCatalogCommand(Tool& tool) {
  tool.addCommand<Options>(
      {"catalog", "Keep a database of many recordings, and find frames by it.",
       "catalog add fleet.db day --recursive\n"
       "  velmar-video catalog find fleet.db --where 'speed_m_s > 5 && near(48.137, 11.575, 300)'\n"
       "  velmar-video catalog info fleet.db\n"
       "  velmar-video catalog sql fleet.db 'SELECT file, frames FROM recordings' --csv\n\n"
       "add reads recordings that are new or have changed, and marks those that are gone from the\n"
       "given folders. find prints ranges of frames, the first and the one behind the last, which\n"
       "cut, extract, frames and view take by --ranges-from."},
      {addOptions, work, checkUsage});
}

}  // namespace velmar::tool
