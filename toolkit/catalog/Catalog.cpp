#include "toolkit/catalog/Catalog.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <set>

#include "toolkit/base/Failure.h"
#include "toolkit/base/InOrder.h"
#include "toolkit/catalog/Candidates.h"
#include "toolkit/catalog/CatalogWriter.h"
#include "toolkit/catalog/Schema.h"
#include "toolkit/files/RecorderFiles.h"
#include "toolkit/rescue/FindingsJson.h"
#include "toolkit/rescue/Verification.h"
#include "toolkit/tables/FrameExpression.h"

namespace velmar::toolkit {

namespace {

// What the catalogue has of a file.
struct Known {
  FileState state;
  bool isRead = false;
  bool isVerified = false;
};

struct Outcome {
  enum class Kind { Unchanged, Read, Gone, Recorded, Stopped };
  Kind kind = Kind::Stopped;
  RecordingSummary summary;
  std::optional<Failure> failure;
};

std::vector<std::string> absolutePaths(const std::vector<std::string>& files) {
  std::vector<std::string> paths;
  std::set<std::string> seen;
  for (const std::string& file : files) {
    std::string path = absolutePath(file);
    if (seen.insert(path).second) paths.push_back(std::move(path));
  }
  return paths;
}

std::vector<std::optional<Known>> knownOf(Database& database,
                                          const std::vector<std::string>& files) {
  Statement rows(database,
                 "SELECT bytes, mtime_ns, inode, state = 'ok', findings IS NOT NULL "
                 "FROM recordings WHERE file = ? AND state != 'removed'");
  std::vector<std::optional<Known>> known(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    rows.bind(files[i]);
    if (rows.step()) {
      known[i] = {{rows.number(0), rows.number(1), rows.number(2)},
                  rows.number(3) != 0,
                  rows.number(4) != 0};
    }
    rows.run();
  }
  return known;
}

// Nothing if it was to stop.
std::optional<std::string> findingsIn(const std::string& file, const std::atomic<bool>& isStopped) {
  FindingsJson findings;
  const unsigned int frames = verify(
      file, false, [&](const Finding& finding) { findings.add(finding); },
      [&](std::uint64_t) { return !isStopped; });
  return isStopped ? std::nullopt : std::optional(findings.text(file, frames));
}

bool isBeingRecorded(const std::string& file) {
  const std::string temporary = temporaryPath(file);
  return temporary == file || ::access(temporary.c_str(), F_OK) == 0;
}

void summarise(const std::string& file, bool isVerified, const std::atomic<bool>& isStopped,
               Outcome& outcome) {
  const FileState state = outcome.summary.state;
  try {
    outcome.summary = summaryOf(Recording(file));
    if (isVerified) outcome.summary.findings = findingsIn(file, isStopped);
  } catch (const Failure& failure) {
    outcome.failure = failure;
  } catch (const std::exception& error) {
    // What a damaged file makes of memory, say, is no end for the others.
    outcome.failure = Failure(file, error.what(), VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E);
  }
  if (outcome.failure) {
    outcome.summary = {};
    outcome.summary.problem = outcome.failure->wordsFor(file);
  }
  outcome.summary.file = file;
  outcome.summary.state = state;
  outcome.kind = isStopped ? Outcome::Kind::Stopped : Outcome::Kind::Read;
}

bool isThere(const std::string& file) { return ::access(file.c_str(), F_OK) == 0; }

Outcome lookAt(const std::string& file, const std::optional<Known>& known, bool isVerified,
               const std::atomic<bool>& isStopped) {
  Outcome outcome;
  if (isStopped) return outcome;
  std::optional<FileState> state;
  try {
    state = fileStateOf(file);
  } catch (const Failure& failure) {
    outcome.kind = Outcome::Kind::Gone;
    outcome.failure = failure;
    return outcome;
  }
  if (!state || temporaryPath(file) == file) {
    outcome.kind = isBeingRecorded(file) ? Outcome::Kind::Recorded : Outcome::Kind::Gone;
    return outcome;
  }
  const bool isEnough = known && known->isRead && (known->isVerified || !isVerified);
  if (isEnough && known->state == *state) {
    outcome.kind = Outcome::Kind::Unchanged;
    return outcome;
  }
  outcome.summary.state = *state;
  summarise(file, isVerified, isStopped, outcome);
  // What was read of the same file before is worth more than that it failed now.
  const bool isKept = known && known->isRead && known->state == *state;
  if (outcome.failure && (isKept || !isThere(file))) outcome.kind = Outcome::Kind::Gone;
  return outcome;
}

// Writes what has come, a good second's worth at a time.
class Batch {
 public:
  explicit Batch(CatalogWriter& writer) : writer_(writer) {}

  void add(RecordingSummary&& summary) {
    constexpr std::size_t kMostRecordings = 500;
    constexpr std::size_t kMostStretches = 20000;
    stretches_ += summary.stretches.size();
    summaries_.push_back(std::move(summary));
    if (summaries_.size() >= kMostRecordings || stretches_ >= kMostStretches) write();
  }
  void writeLate() {
    constexpr std::chrono::seconds kLongest(1);
    if (std::chrono::steady_clock::now() - start_ > kLongest) write();
  }
  void write() {
    writer_.write(summaries_);
    summaries_.clear();
    stretches_ = 0;
    start_ = std::chrono::steady_clock::now();
  }

 private:
  CatalogWriter& writer_;
  std::vector<RecordingSummary> summaries_;
  std::size_t stretches_ = 0;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Adds those of the folder that are there no more.
void addGone(Database& database, const std::string& folder, const CatalogReporter& reporter,
             std::set<std::string>& gone) {
  // '0' is behind '/'.
  const std::string prefix = std::filesystem::path(absolutePath(folder + "/.")).parent_path() / "";
  std::string behind = prefix;
  behind.back() = '0';
  Statement rows(database,
                 "SELECT file FROM recordings WHERE file >= ? AND file < ? AND state != 'removed'");
  rows.bind(prefix).bind(behind);
  while (rows.step()) {
    std::string file = rows.text(0);
    try {
      if (!fileStateOf(file)) gone.insert(std::move(file));
    } catch (const Failure& failure) {
      reporter.fail(failure);
    }
  }
}

Failure gone(const std::string& file) {
  return {file, "it is not there any more", VELMAR_ERROR_CODE_FILE_NOT_EXIST_E};
}

// The frames that a recording has for a question.
struct Answer {
  std::vector<FoundFrames> frames;
  bool isChanged = false;
  std::optional<Failure> failure;
};

std::uint64_t bytesOf(const Recording& recording, const Scene& scene) {
  std::uint64_t bytes = 0;
  for (unsigned int i = scene.first; i <= scene.last; ++i) bytes += recording.frameSize(i);
  return bytes;
}

Answer answerOf(const Candidate& candidate, const FrameSelection& selection,
                const SceneForm& form) {
  Answer answer;
  try {
    const auto state = fileStateOf(candidate.file);
    if (!state) throw Failure(gone(candidate.file));
    answer.isChanged = *state != candidate.state;
    const Recording recording(candidate.file);
    const FrameSpans all = {{0, recording.framesCount()}};
    const auto frames = selection.find(recording, answer.isChanged ? all : candidate.frames);
    for (const Scene& scene : scenesOf(recording, frames, form)) {
      answer.frames.push_back({candidate.file, scene.first, scene.last + 1,
                               recording.sensorTime(scene.first), recording.sensorTime(scene.last),
                               bytesOf(recording, scene)});
    }
  } catch (const Failure& failure) {
    answer.failure = failure;
  } catch (const std::exception& error) {
    answer.failure = Failure(candidate.file, error.what(), VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E);
  }
  return answer;
}

}  // namespace

Catalog::Catalog(const std::string& path, Database::Access access) : database_(path, access) {
  if (access == Database::Access::Read) {
    checkCatalog(database_);
  } else {
    prepareCatalog(database_);
    database_.run("PRAGMA synchronous = NORMAL");
  }
}

CatalogChanges Catalog::add(const CatalogInputs& inputs, unsigned int jobs,
                            const CatalogReporter& reporter) {
  const std::vector<std::string> files = absolutePaths(inputs.files);
  const auto known = knownOf(database_, files);
  CatalogWriter writer(database_);
  Batch batch(writer);
  CatalogChanges changes;
  std::set<std::string> removed;
  std::atomic<bool> isStopped = false;
  std::size_t done = 0;
  const auto work = [&](std::size_t at) {
    return lookAt(files[at], known[at], inputs.verify, isStopped);
  };
  const auto take = [&](std::size_t at, Outcome& outcome) {
    switch (outcome.kind) {
      case Outcome::Kind::Stopped:
        return false;
      case Outcome::Kind::Unchanged:
        ++changes.unchanged;
        break;
      case Outcome::Kind::Recorded:
        reporter.skip(files[at], "it is being recorded; add it when it is finished");
        break;
      case Outcome::Kind::Gone:
        reporter.fail(
            outcome.failure.value_or(Failure(files[at], VELMAR_ERROR_CODE_FILE_NOT_EXIST_E)));
        if (known[at] && !outcome.failure) removed.insert(files[at]);
        break;
      case Outcome::Kind::Read:
        ++(outcome.failure ? changes.unreadable : changes.added);
        if (outcome.failure) reporter.fail(*outcome.failure);
        batch.add(std::move(outcome.summary));
    }
    ++done;
    return true;
  };
  inOrder<Outcome>(files.size(), jobs, work, take, [&] {
    batch.writeLate();
    isStopped = isStopped || !reporter.goOn(done, files.size());
    return !isStopped;
  });
  batch.write();
  changes.isWhole = done == files.size();
  if (changes.isWhole) {
    for (const std::string& folder : inputs.folders) {
      addGone(database_, folder, reporter, removed);
    }
  }
  writer.markRemoved({removed.begin(), removed.end()});
  changes.removed = removed.size();
  return changes;
}

void Catalog::put(const std::vector<RecordingSummary>& summaries) {
  CatalogWriter(database_).write(summaries);
}

bool Catalog::putUnreadable(const std::string& file, const std::string& problem) {
  const auto state = fileStateOf(file);
  if (!state) return false;
  RecordingSummary summary;
  summary.file = absolutePath(file);
  summary.state = *state;
  summary.problem = problem;
  put({summary});
  return true;
}

std::size_t Catalog::take(const std::string& other) {
  const Catalog checked(other, Database::Access::Read);
  Statement(database_, "ATTACH ? AS other").bind(absolutePath(other)).run();
  struct Detach {
    Database& database;
    ~Detach() {
      try {
        database.run("DETACH other");
      } catch (const Failure&) {
        // The connection is of no use then, and says so.
      }
    }
  } const detach{database_};
  Transaction transaction(database_);
  const auto next = [this](const std::string& table) {
    return database_.number("SELECT coalesce(max(id), 0) FROM " + table);
  };
  const std::string columns = "first, behind, heading_change_deg, " + factColumns() + ", lacking";
  const std::string replaced =
      "SELECT id FROM main.recordings WHERE file IN (SELECT file FROM other.recordings)";
  const std::string recordings = std::to_string(next("main.recordings"));
  const std::string stretches = std::to_string(next("main.stretches"));
  database_.run(
      "DELETE FROM main.places WHERE stretch IN (SELECT id FROM main.stretches WHERE "
      "recording IN (" +
      replaced +
      "));"
      "DELETE FROM main.stretches WHERE recording IN (" +
      replaced +
      ");"
      "DELETE FROM main.spans WHERE recording IN (" +
      replaced +
      ");"
      "DELETE FROM main.recordings WHERE file IN (SELECT file FROM other.recordings);"
      "INSERT INTO main.recordings SELECT id + " +
      recordings +
      ", file, state, problem, bytes, mtime_ns, inode, added, container, version, "
      "device_id, frames, start_us, end_us, duration_us, info, findings "
      "FROM other.recordings;"
      "INSERT INTO main.spans (recording, " +
      columns + ") SELECT recording + " + recordings + ", " + columns +
      " FROM other.spans;"
      "INSERT INTO main.stretches (id, recording, " +
      columns + ") SELECT id + " + stretches + ", recording + " + recordings + ", " + columns +
      " FROM other.stretches;"
      "INSERT INTO main.places SELECT stretch + " +
      stretches + ", west, east, south, north, start_s, end_s FROM other.places");
  const auto count = database_.number("SELECT count(*) FROM other.recordings");
  transaction.commit();
  return static_cast<std::size_t>(count);
}

void Catalog::find(const CatalogQuestion& question, unsigned int jobs,
                   const std::function<void(const FoundFrames&)>& found,
                   const CatalogReporter& reporter) {
  FrameSelection selection;
  if (!question.time.empty()) selection.setTime(question.time);
  if (!question.where.empty()) {
    selection.setCondition([&question] { return parseFrameExpression(question.where); });
  }
  const std::vector<Candidate> candidates = candidatesFor(database_, question.where, selection);
  std::atomic<bool> isStopped = false;
  std::size_t done = 0;
  const auto work = [&](std::size_t at) {
    return isStopped ? Answer() : answerOf(candidates[at], selection, question.form);
  };
  const auto take = [&](std::size_t at, Answer& answer) {
    const std::string& file = candidates[at].file;
    if (answer.failure) reporter.fail(*answer.failure);
    if (answer.isChanged) {
      reporter.note(file, "it has changed since it was added; the answer is about it as it is now");
    }
    for (const FoundFrames& frames : answer.frames) found(frames);
    ++done;
    return true;
  };
  inOrder<Answer>(candidates.size(), jobs, work, take, [&] {
    isStopped = isStopped || !reporter.goOn(done, candidates.size());
    return !isStopped;
  });
  if (done < candidates.size()) {
    reporter.skip(database_.path(), "stopped by a signal after " + std::to_string(done) + " of " +
                                        std::to_string(candidates.size()) + " recordings");
  }
}

CatalogInfo Catalog::info() {
  CatalogInfo info;
  Statement rows(database_,
                 "SELECT container, count(*), sum(frames), sum(duration_us), sum(bytes) "
                 "FROM recordings WHERE state = 'ok' GROUP BY container ORDER BY container");
  while (rows.step()) {
    const auto number = [&rows](int column) {
      return static_cast<std::uint64_t>(rows.number(column));
    };
    const CatalogTotals totals{rows.text(0), number(1), number(2), number(3), number(4)};
    info.containers.push_back(totals);
    info.all.recordings += totals.recordings;
    info.all.frames += totals.frames;
    info.all.duration += totals.duration;
    info.all.bytes += totals.bytes;
  }
  Statement span(database_,
                 "SELECT min(sensor_time_us_least), max(sensor_time_us_greatest) FROM spans");
  if (span.step() && !span.isNull(0)) {
    info.span = {static_cast<std::uint64_t>(span.number(0)),
                 static_cast<std::uint64_t>(span.number(1))};
  }
  const auto count = [this](const std::string& state) {
    return static_cast<std::uint64_t>(
        database_.number("SELECT count(*) FROM recordings WHERE state = '" + state + "'"));
  };
  info.unreadable = count("unreadable");
  info.removed = count("removed");
  return info;
}

}  // namespace velmar::toolkit
