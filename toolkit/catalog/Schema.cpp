#include "toolkit/catalog/Schema.h"

#include <iterator>

#include "toolkit/base/Failure.h"
#include "toolkit/tables/FrameFacts.h"

namespace velmar::toolkit {

namespace {

constexpr std::int64_t kApplication = 0x766D6361;

std::string typedFactColumns() {
  std::string columns;
  for (const FrameFact& fact : ownFacts()) {
    columns += "  " + fact.name + "_least REAL,\n  " + fact.name + "_greatest REAL,\n";
  }
  return columns;
}

std::string firstVersion() {
  const std::string facts = typedFactColumns();
  return R"(
CREATE TABLE recordings (
  id INTEGER PRIMARY KEY,
  file TEXT NOT NULL UNIQUE,
  state TEXT NOT NULL CHECK (state IN ('ok', 'unreadable', 'removed')),
  problem TEXT,
  bytes INTEGER NOT NULL,
  mtime_ns INTEGER NOT NULL,
  inode INTEGER NOT NULL,
  added TEXT NOT NULL,
  container TEXT,
  version TEXT,
  device_id TEXT,
  frames INTEGER,
  start_us INTEGER,
  end_us INTEGER,
  duration_us INTEGER,
  info TEXT,
  findings TEXT
);
CREATE TABLE spans (
  recording INTEGER PRIMARY KEY REFERENCES recordings,
  first INTEGER NOT NULL,
  behind INTEGER NOT NULL,
  heading_change_deg REAL,
)" + facts +
         R"(  lacking INTEGER NOT NULL
);
CREATE TABLE stretches (
  id INTEGER PRIMARY KEY,
  recording INTEGER NOT NULL REFERENCES recordings,
  first INTEGER NOT NULL,
  behind INTEGER NOT NULL,
  heading_change_deg REAL,
)" + facts +
         R"(  lacking INTEGER NOT NULL
);
CREATE INDEX stretches_of_recordings ON stretches (recording, first);
CREATE VIRTUAL TABLE places USING rtree (
  stretch, west, east, south, north, start_s, end_s
);
CREATE VIEW overview AS
SELECT file, state, problem, container, version, device_id, frames,
  strftime('%Y-%m-%dT%H:%M:%SZ', start_us / 1000000, 'unixepoch') AS start,
  duration_us / 1e6 AS duration_s, bytes, added
FROM recordings;
CREATE VIEW passages AS
SELECT file, device_id, first, behind,
  strftime('%Y-%m-%dT%H:%M:%fZ', sensor_time_us_least / 1e6, 'unixepoch') AS start,
  lng_deg_least, lng_deg_greatest, lat_deg_least, lat_deg_greatest,
  speed_m_s_least, speed_m_s_greatest, acceleration_m_s2_least, acceleration_m_s2_greatest,
  heading_change_deg
FROM stretches JOIN recordings ON recordings.id = stretches.recording;
)";
}

// Each brings a catalogue from the version of its place to the next.
using Migration = std::string (*)();
constexpr Migration kMigrations[] = {firstVersion};
constexpr std::int64_t kVersion = std::size(kMigrations);

// Its version.
std::int64_t checkKind(Database& database) {
  // In this order: another process may be making it, all in one transaction.
  const bool isEmpty = database.number("SELECT count(*) FROM sqlite_master") == 0;
  const std::int64_t application = database.number("PRAGMA application_id");
  if (application != kApplication && !isEmpty) {
    throw Failure(database.path(), "it is a database, but no catalogue of recordings",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  const std::int64_t version = database.number("PRAGMA user_version");
  if (version > kVersion) {
    throw Failure(database.path(),
                  "it is a catalogue of version " + std::to_string(version) +
                      ", made by a newer program; this one knows version " +
                      std::to_string(kVersion),
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  return isEmpty ? 0 : version;
}

}  // namespace

void prepareCatalog(Database& database) {
  if (checkKind(database) == kVersion) return;
  database.useWriteAheadLog();
  Transaction transaction(database);
  // Another process may have done it meanwhile.
  for (std::int64_t version = checkKind(database); version < kVersion; ++version) {
    database.run(kMigrations[version]());
  }
  database.run("PRAGMA application_id = " + std::to_string(kApplication));
  database.run("PRAGMA user_version = " + std::to_string(kVersion));
  transaction.commit();
}

void checkCatalog(Database& database) {
  const std::int64_t version = checkKind(database);
  if (version == kVersion) return;
  throw Failure(database.path(),
                version == 0 ? "it is no catalogue yet; catalog add makes one"
                             : "it is a catalogue of an older version; catalog add brings it up to "
                               "date",
                VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

std::string factColumns() {
  std::string columns;
  for (const FrameFact& fact : ownFacts()) {
    columns += (columns.empty() ? "" : ", ") + fact.name + "_least, " + fact.name + "_greatest";
  }
  return columns;
}

}  // namespace velmar::toolkit
