#include "toolkit/catalog/CatalogWriter.h"

#include <algorithm>
#include <chrono>

#include "toolkit/catalog/Schema.h"
#include "toolkit/tables/FrameFacts.h"
#include "toolkit/text/TimeText.h"

namespace velmar::toolkit {

namespace {

std::string parameters(std::size_t count) {
  std::string text = "?";
  for (std::size_t i = 1; i < count; ++i) text += ",?";
  return text;
}

std::string stretchInsert(const std::string& table) {
  constexpr std::size_t kOthers = 5;
  return "INSERT INTO " + table + " (recording, first, behind, heading_change_deg, " +
         factColumns() + ", lacking) VALUES (" + parameters(kOthers + 2 * ownFacts().size()) + ")";
}

std::string now() {
  using namespace std::chrono;
  return formatTime(static_cast<std::uint64_t>(
      duration_cast<microseconds>(system_clock::now().time_since_epoch()).count()));
}

std::optional<std::string> given(const std::string& text) {
  return text.empty() ? std::nullopt : std::optional(text);
}

// Damaged files have times beyond those of the database, which are negative there.
std::int64_t stored(std::uint64_t time) { return static_cast<std::int64_t>(time); }

}  // namespace

CatalogWriter::CatalogWriter(Database& database)
    : database_(database),
      id_(database, "SELECT id FROM recordings WHERE file = ?"),
      clearPlaces_(database,
                   "DELETE FROM places WHERE stretch IN "
                   "(SELECT id FROM stretches WHERE recording = ?)"),
      clearStretches_(database, "DELETE FROM stretches WHERE recording = ?"),
      clearSpan_(database, "DELETE FROM spans WHERE recording = ?"),
      recording_(database,
                 "INSERT OR REPLACE INTO recordings (id, file, state, problem, bytes, mtime_ns, "
                 "inode, added, container, version, device_id, frames, start_us, end_us, "
                 "duration_us, info, findings) VALUES (" +
                     parameters(17) + ")"),
      span_(database, stretchInsert("spans")),
      stretch_(database, stretchInsert("stretches")),
      place_(database, "INSERT INTO places VALUES (" + parameters(7) + ")"),
      removed_(database, "UPDATE recordings SET state = 'removed' WHERE id = ?") {}

void CatalogWriter::write(const std::vector<RecordingSummary>& summaries) {
  if (summaries.empty()) return;
  const std::string time = now();
  Transaction transaction(database_);
  for (const RecordingSummary& summary : summaries) write(summary, time);
  transaction.commit();
}

void CatalogWriter::markRemoved(const std::vector<std::string>& files) {
  if (files.empty()) return;
  Transaction transaction(database_);
  for (const std::string& file : files) {
    const auto id = idOf(file);
    if (!id) continue;
    clear(*id);
    removed_.bind(*id).run();
  }
  transaction.commit();
}

std::optional<std::int64_t> CatalogWriter::idOf(const std::string& file) {
  id_.bind(file);
  std::optional<std::int64_t> id;
  if (id_.step()) id = id_.number(0);
  id_.run();
  return id;
}

void CatalogWriter::clear(std::int64_t recording) {
  for (Statement* statement : {&clearPlaces_, &clearStretches_, &clearSpan_}) {
    statement->bind(recording).run();
  }
}

void CatalogWriter::write(const RecordingSummary& summary, const std::string& time) {
  const auto known = idOf(summary.file);
  if (known) clear(*known);
  const bool isRead = summary.problem.empty();
  recording_.bind(known).bind(summary.file).bind(std::string(isRead ? "ok" : "unreadable"));
  recording_.bind(given(summary.problem)).bind(summary.state.bytes).bind(summary.state.mtime);
  recording_.bind(summary.state.inode).bind(time);
  if (isRead) {
    recording_.bind(summary.container).bind(summary.version).bind(given(summary.deviceId));
    recording_.bind(std::int64_t{summary.frames});
    recording_.bind(stored(summary.start)).bind(stored(summary.end));
    recording_.bind(stored(summary.duration)).bind(summary.info);
  } else {
    for (int i = 0; i < 8; ++i) recording_.bindNull();
  }
  recording_.bind(summary.findings);
  recording_.run();
  writeStretches(database_.lastId(), summary);
}

void CatalogWriter::writeStretches(std::int64_t recording, const RecordingSummary& summary) {
  if (summary.span) {
    span_.bind(recording);
    bind(span_, *summary.span);
    span_.run();
  }
  constexpr double kMicroseconds = 1e6;
  const std::vector<FrameFact>& facts = ownFacts();
  const auto time = std::find_if(facts.begin(), facts.end(),
                                 [](const FrameFact& fact) {
                                   return fact.source == FrameFact::Source::SensorTime;
                                 }) -
                    facts.begin();
  for (const Stretch& stretch : summary.stretches) {
    stretch_.bind(recording);
    bind(stretch_, stretch);
    stretch_.run();
    if (!stretch.place) continue;
    const auto& [west, east, south, north] = *stretch.place;
    place_.bind(database_.lastId()).bind(west).bind(east).bind(south).bind(north);
    place_.bind(stretch.least[time] / kMicroseconds);
    place_.bind(stretch.greatest[time] / kMicroseconds).run();
  }
}

void CatalogWriter::bind(Statement& statement, const Stretch& stretch) {
  statement.bind(std::int64_t{stretch.first}).bind(std::int64_t{stretch.behind});
  const bool isRtv = stretch.place.has_value();
  isRtv ? statement.bind(stretch.headingChange) : statement.bindNull();
  for (std::size_t i = 0; i < stretch.least.size(); ++i) {
    statement.bind(stretch.least[i]).bind(stretch.greatest[i]);
  }
  statement.bind(static_cast<std::int64_t>(stretch.lacking));
}

}  // namespace velmar::toolkit
