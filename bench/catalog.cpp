#include "toolkit/catalog/Catalog.h"

#include <cmath>
#include <filesystem>
#include <memory>

#include "Bench.h"
#include "Files.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/tables/FrameExpression.h"
#include "toolkit/writing/RecordingWriter.h"
#include "velmar_video/rtv/TaggedVideoParser.h"

using namespace velmar::toolkit;

namespace {

constexpr int kRepetitions = 5;
constexpr unsigned int kRecordings = 2000;
constexpr unsigned int kFrames = 1000;
constexpr unsigned int kJobs = 2;

const CatalogReporter kQuiet = {[](std::size_t, std::size_t) { return true; },
                                [](const Failure& failure) { require(false, failure.what()); },
                                [](const std::string&, const std::string&) {},
                                [](const std::string&, const std::string&) {}};
// One of a hundred recordings passes there.
const CatalogQuestion kQuestion = {"speed_m_s > 20 && near(48.137, 11.575, 100)", "", {}};

// A drive of frames as large as they are of no interest here, 24 m/s to the east.
std::string drive(const std::string& name, double lng, double lat) {
  std::string path = Workspace::path(name);
  if (std::filesystem::exists(path)) return path;
  RecordingDescription description;
  description.version = RTV_VER_04;
  description.startTime = 1700000000000000;
  description.lng = nearestNds(lng);
  description.lat = nearestNds(lat);
  const unsigned int count = frameCount(kFrames);
  RecordingWriter writer(path, description, count, RecordingWriter::OnFailure::RemoveFrames);
  for (unsigned int i = 0; i < count; ++i) {
    FrameTag tag;
    tag.x = static_cast<int>(80 * i);
    tag.speed = static_cast<unsigned short>(2400 + i % 10);
    tag.direction = 90;
    tag.can.vehicle_speed = static_cast<float>(i % 100) / 4;
    tag.can.yaw_rate = static_cast<float>(i % 7) / 10;
    tag.can.brake_active = i % 50 == 0;
    const std::uint64_t time = description.startTime + 33000ULL * i;
    writer.add(std::string(200, 'x'), {time, time}, tag);
  }
  writer.finish();
  return path;
}

// They are two files under many names.
std::vector<std::string> fleet() {
  const std::string folder = Workspace::path("fleet");
  std::filesystem::create_directories(folder);
  std::vector<std::string> paths;
  for (unsigned int i = 0; i < frameCount(kRecordings); ++i) {
    const bool isThere = i % 100 == 0;
    const std::string original =
        isThere ? drive("there.rtv", 11.575, 48.137) : drive("elsewhere.rtv", 9, 50);
    paths.push_back(folder + "/" + std::to_string(i) + ".rtv");
    if (!std::filesystem::exists(paths.back())) {
      std::filesystem::create_hard_link(original, paths.back());
    }
  }
  return paths;
}

// All that the recordings know of their frames.
double readTables(const std::vector<std::string>& paths) {
  const WallTimer timer;
  for (const std::string& path : paths) {
    const Recording recording(path);
    std::uint64_t sum = 0;
    for (unsigned int i = 0; i < recording.framesCount(); ++i) {
      sum += recording.times(i).arrived + recording.frameSize(i) + recording.tag(i).speed;
    }
    require(sum > 0, path + ": nothing was read");
  }
  return timer.seconds();
}

double add(const std::string& database, const std::vector<std::string>& paths) {
  for (const char* suffix : {"", "-wal", "-shm"}) std::filesystem::remove(database + suffix);
  const WallTimer timer;
  Catalog catalog(database, Database::Access::Write);
  const CatalogChanges changes = catalog.add({paths, {}}, kJobs, kQuiet);
  require(changes.added == paths.size(), "not all were added");
  return timer.seconds();
}

Row addingRow() {
  const auto paths = fleet();
  const std::string database = Workspace::path("fleet.db");
  return {.limitName = "opening them and reading the table of each, one after the other",
          .limit = [=] { return readTables(paths); },
          .ours = [=] { return add(database, paths); },
          .reach = 2,
          .reachExtra = {}};
}

double find(const std::string& database) {
  const WallTimer timer;
  std::size_t ranges = 0;
  Catalog catalog(database, Database::Access::Read);
  catalog.find(
      kQuestion, kJobs, [&](const FoundFrames&) { ++ranges; }, kQuiet);
  require(ranges > 0, "nothing was found");
  return timer.seconds();
}

double scan(const std::vector<std::string>& paths) {
  FrameSelection selection;
  selection.setCondition([] { return parseFrameExpression(kQuestion.where); });
  const WallTimer timer;
  std::size_t frames = 0;
  for (const std::string& path : paths) {
    const Recording recording(path);
    frames += selection.find(recording, {{0, recording.framesCount()}}).size();
  }
  require(frames > 0, "nothing was found");
  return timer.seconds();
}

Row findingRow() {
  constexpr double kShare = 1.0 / 50;
  const auto paths = fleet();
  const std::string database = Workspace::path("asked.db");
  add(database, paths);
  return {.limitName = "asking each of their frames, one recording after the other",
          .limit = [=] { return scan(paths); },
          .ours = [=] { return find(database); },
          .reach = kShare,
          .reachExtra = {}};
}

// Recordings that are made up, spread over a country.
struct Fleet {
  std::string database = Workspace::path("growth.db");
  double adding = 0;

  explicit Fleet(unsigned int count) {
    RecordingSummary summary = summaryOf(Recording(drive("elsewhere.rtv", 9, 50)));
    std::filesystem::remove(database);
    Catalog catalog(database, Database::Access::Write);
    const WallTimer timer;
    constexpr unsigned int kBatch = 500;
    std::vector<RecordingSummary> batch;
    for (unsigned int i = 0; i < count; ++i) {
      // A spiral, so that no two are at one place.
      const double radius = 3 * std::sqrt(double{1} * i / count);
      for (Stretch& stretch : summary.stretches) {
        const double lng = 9 + radius * std::cos(i) - stretch.place->west;
        const double lat = 50 + radius * std::sin(i) - stretch.place->south;
        stretch.place->west += lng;
        stretch.place->east += lng;
        stretch.place->south += lat;
        stretch.place->north += lat;
      }
      summary.file = "/fleet/" + std::to_string(i) + ".rtv";
      batch.push_back(summary);
      if (batch.size() < kBatch && i + 1 < count) continue;
      catalog.put(batch);
      batch.clear();
    }
    adding = timer.seconds();
  }
};

double bytesOf(const std::string& database) {
  return static_cast<double>(std::filesystem::file_size(database));
}

// The last one, which several rows are about.
const Fleet& fleetOf(unsigned int count) {
  static std::unique_ptr<Fleet> fleet;
  static unsigned int last = 0;
  if (last != count) fleet = std::make_unique<Fleet>(count);
  last = count;
  return *fleet;
}

// None of them is there, so that nothing but the catalogue is asked.
double askForNothing(const std::string& database) {
  const WallTimer timer;
  Catalog catalog(database, Database::Access::Read);
  catalog.find(
      {"speed_m_s > 20 && near(40, 20, 100)", "", {}}, kJobs,
      [](const FoundFrames&) { require(false, "nobody was there"); }, kQuiet);
  return timer.seconds();
}

Row growthRow(unsigned int count, const Side& ours, Unit unit, unsigned int operations) {
  fleetOf(count);
  return {.limitName = "",
          .limit = {},
          .ours = ours,
          .reach = {},
          .reachExtra = {},
          .operations = operations,
          .unit = unit};
}

void addGrowthOf(unsigned int full) {
  const std::string name = ", one of " + std::to_string(full) + " recordings of 1,000 frames";
  const auto count = [full] { return frameCount(full); };
  addRow(
      "catalogue: bytes" + name,
      [=] {
        return growthRow(
            count(), [=] { return bytesOf(fleetOf(count()).database); }, Unit::Bytes, count());
      },
      1);
  addRow(
      "catalogue: writing" + name,
      [=] {
        return growthRow(
            count(), [=] { return fleetOf(count()).adding; }, Unit::Seconds, count());
      },
      1);
  addRow(
      "catalogue of " + std::to_string(full) + ": a place where none was",
      [=] {
        return growthRow(
            count(), [=] { return askForNothing(fleetOf(count()).database); }, Unit::Seconds, 1);
      },
      kRepetitions);
}

}  // namespace

void addCatalogRows() {
  addRow("catalog add, 2,000 rtv 04 of 1,000 frames", addingRow, kRepetitions);
  addRow("catalog find, a place and a speed, among 2,000 rtv 04 of 1,000 frames", findingRow,
         kRepetitions);
  addGrowthOf(2000);
  addGrowthOf(100000);
}
