#include "toolkit/catalog/Catalog.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>

#include "support/TestSupport.h"
#include "toolkit/catalog/Candidates.h"
#include "toolkit/tables/FrameExpression.h"
#include "toolkit/writing/RecordingWriter.h"

using namespace velmar::toolkit;

namespace {

using Access = Database::Access;
using Frames = std::map<std::string, std::vector<unsigned int>>;

// Numbers that are the same everywhere.
class Dice {
 public:
  explicit Dice(unsigned int seed) : engine_(seed) {}
  int below(int count) { return static_cast<int>(engine_() % static_cast<unsigned int>(count)); }
  double between(double least, double greatest) {
    return least + (greatest - least) * (below(1000001) / 1e6);
  }
  template <typename Choices>
  auto of(const Choices& choices) {
    return *(std::begin(choices) + below(static_cast<int>(std::size(choices))));
  }

 private:
  std::mt19937 engine_;
};

// One of them is at the meridian of 180 degrees.
constexpr std::pair<double, double> kStarts[] = {
    {11.57, 48.13}, {11.58, 48.14}, {179.9995, -16.5}, {-70.9, -53.1}, {24.9, 89.99}};

std::string draw(const std::string& stem, Dice& dice) {
  RecordingDescription description;
  const version_e versions[] = {RTV_VER_02, RTV_VER_03, RTV_VER_04};
  description.version = dice.of(versions);
  description.startTime = 1700000000000000 + 60000000ULL * dice.below(1000);
  const auto [lng, lat] = dice.of(kStarts);
  description.lng = nearestNds(lng);
  description.lat = nearestNds(lat);
  description.deviceId = dice.below(2) ? "\x0a\xff" : "\x01";
  const bool isRtv = dice.below(4) != 0;
  const std::string path = stem + (isRtv ? ".rtv" : ".img");
  const int count = 1 + dice.below(90);
  RecordingWriter writer(path, description, static_cast<unsigned int>(count),
                         RecordingWriter::OnFailure::RemoveFrames);
  const bool hasPlaces = dice.below(4) != 0;
  const bool clockFalls = !isRtv && dice.below(3) == 0;
  std::uint64_t time = description.startTime;
  FrameTag tag;
  double speed = dice.below(30);
  for (int i = 0; i < count; ++i) {
    speed = std::max(0.0, speed + dice.between(-2, 2));
    if (hasPlaces) {
      tag.x += static_cast<int>(speed * 10);
      tag.y += dice.below(200) - 100;
      tag.z = dice.below(100);
      tag.relativeDistance += static_cast<unsigned int>(speed * 10);
      tag.speed = static_cast<unsigned short>(speed * 100);
      tag.direction = static_cast<unsigned short>((tag.direction + dice.below(20)) % 360);
    }
    FrameTag stored = tag;
    if (dice.below(3) == 0) stored.can.brake_active = static_cast<unsigned char>(dice.below(2));
    if (dice.below(2) == 0) stored.can.yaw_rate = static_cast<float>(dice.between(-1, 1));
    if (dice.below(60) == 0) tag.x += 5000000;  // jumps
    writer.add(std::string(static_cast<std::size_t>(10 + dice.below(90)), 'x'), {time, time + 500},
               stored);
    time += static_cast<std::uint64_t>(dice.below(12) == 0 ? 3000000 : 33000 + dice.below(50000));
    if (clockFalls && dice.below(15) == 0) time -= 2000000;
  }
  writer.finish();
  if (dice.below(12) == 0) std::filesystem::resize_file(path, dice.below(200));
  return path;
}

// A condition of the language.
class Questions {
 public:
  explicit Questions(Dice& dice) : dice_(dice) {}

  std::string condition(int depth) {
    if (depth == 0) return comparison();
    switch (dice_.below(10)) {
      case 0:
        return "!(" + condition(depth - 1) + ")";
      case 1:
      case 2:
      case 3:
        return "(" + condition(depth - 1) + " || " + condition(depth - 1) + ")";
      case 4:
        return "(" + condition(depth - 1) + " ? " + condition(depth - 1) + " : " + comparison() +
               ")";
      case 5:
        return comparison();
      default:
        return condition(depth - 1) + " && " + condition(depth - 1);
    }
  }

 private:
  std::string number(double least, double greatest) {
    return std::to_string(dice_.between(least, greatest));
  }

  // The name of a fact, and a number that some frames may have.
  std::pair<std::string, std::string> fact() {
    const std::tuple<const char*, double, double> facts[] = {
        {"index", 0, 60},          {"size", 10, 100},         {"time", 0, 20},
        {"speed_m_s", 0, 40},      {"speed_km_h", 0, 150},    {"x_m", 0, 300},
        {"y_cm", -500, 500},       {"distance_ft", 0, 900},   {"direction", 0, 360},
        {"lng_deg", 11.57, 11.58}, {"lat_rad", 0.8, 0.9},     {"acceleration_m_s2", -40, 40},
        {"yaw_rate", -1, 1},       {"brake_active", 0, 1},    {"duration", 0, 60},
        {"alt_m", 0, 1},           {"time_flag_ms", 0, 9000}, {"arrived_time_s", 1.7e9, 1.70006e9}};
    const auto [name, least, greatest] = dice_.of(facts);
    return {name, number(least, greatest)};
  }

  std::string term() {
    const auto [name, value] = fact();
    switch (dice_.below(8)) {
      case 0:
        return name + " * " + number(-2, 2);
      case 1:
        return name + " - " + fact().first;
      case 2:
        return "abs(" + name + ")";
      case 3:
        return name + " ^ 2";
      case 4:
        return "-" + name + " / " + fact().first;
      default:
        return name;
    }
  }

  std::string comparison() {
    const auto [lng, lat] = dice_.of(kStarts);
    const std::string place = std::to_string(lat) + ", " + std::to_string(lng);
    const char* operators[] = {" < ", " <= ", " > ", " >= ", " == ", " != "};
    const auto [name, value] = fact();
    switch (dice_.below(12)) {
      case 0:
      case 1:
        return "near(" + place + ", " + number(1, 400) + ")";
      case 2:
        return "within(" + number(lng - 0.01, lng + 0.01) + ", -89, " +
               std::to_string(lng > 179 ? -179.999 : lng + 0.002) + ", 89.9901)";
      case 3:
        return "absent(" + name + ")";
      case 4:
        return dice_.below(2) ? "file(\"*/1?.rtv\")" : "device(\"0af*\")";
      case 5:
        return name;
      case 6:
        return term() + dice_.of(operators) + term();
      default:
        return term() + dice_.of(operators) + value;
    }
  }

  Dice& dice_;
};

struct Told {
  std::vector<std::string> failures;
  std::vector<std::string> notes;

  CatalogReporter reporter() {
    const auto note = [this](const std::string& file, const std::string& words) {
      notes.push_back(file + ": " + words);
    };
    return {[](std::size_t, std::size_t) { return true; },
            [this](const Failure& failure) { failures.push_back(failure.what()); }, note, note};
  }
};

Frames found(Catalog& catalog, const CatalogQuestion& question) {
  Frames frames;
  Told told;
  const auto add = [&](const FoundFrames& range) {
    for (unsigned int i = range.first; i < range.behind; ++i) frames[range.file].push_back(i);
  };
  catalog.find(question, 2, add, told.reporter());
  EXPECT_EQ(told.failures, std::vector<std::string>());
  EXPECT_EQ(told.notes, std::vector<std::string>());
  return frames;
}

FrameSelection selectionOf(const CatalogQuestion& question) {
  FrameSelection selection;
  if (!question.time.empty()) selection.setTime(question.time);
  selection.setCondition([question] { return parseFrameExpression(question.where); });
  return selection;
}

Frames looked(const std::vector<std::string>& files, const CatalogQuestion& question) {
  const FrameSelection selection = selectionOf(question);
  Frames all;
  for (const std::string& file : files) {
    try {
      const Recording recording(file);
      auto frames = selection.find(recording, {{0, recording.framesCount()}});
      if (!frames.empty()) all[file] = std::move(frames);
    } catch (const Failure&) {
      // One of those that are damaged.
    }
  }
  return all;
}

TEST(Catalog, FindsWhatLookingAtAllFramesFinds) {
  const TempFolder folder;
  Dice dice(18);
  std::vector<std::string> files;
  for (int i = 0; i < 200; ++i) files.push_back(draw(folder / std::to_string(i), dice));
  Catalog catalog(folder / "catalog.db", Access::Write);
  Told told;
  const CatalogChanges changes = catalog.add({files, {}}, 2, told.reporter());
  EXPECT_EQ(changes.added + changes.unreadable, files.size());
  EXPECT_GT(changes.unreadable, 5U);
  EXPECT_EQ(told.failures.size(), changes.unreadable);

  Questions questions(dice);
  std::size_t answers = 0;
  std::size_t candidates = 0;
  const char* times[] = {"", "", "", "+1s:+3s", "2023-11-14T22:20:00Z:2023-11-15"};
  constexpr std::size_t kQuestions = 100;
  for (std::size_t i = 0; i < kQuestions; ++i) {
    const CatalogQuestion question{questions.condition(dice.below(4)), dice.of(times), {}};
    const Frames frames = found(catalog, question);
    ASSERT_EQ(frames, looked(files, question)) << question.where << " " << question.time;
    answers += frames.empty() ? 0 : 1;
    candidates += candidatesFor(catalog.database(), question.where, selectionOf(question)).size();
  }
  // Neither is trivial.
  EXPECT_GT(answers, kQuestions / 2);
  EXPECT_LT(candidates, kQuestions * files.size() / 2);
}

TEST(Catalog, TakesWhatAnotherHas) {
  const TempFolder folder;
  Dice dice(3);
  std::vector<std::string> files;
  for (int i = 0; i < 30; ++i) files.push_back(draw(folder / std::to_string(i), dice));
  const CatalogQuestion question{"near(48.13, 11.57, 500) || size > 50", "", {}};
  Told told;
  Catalog whole(folder / "whole.db", Access::Write);
  whole.add({files, {}}, 2, told.reporter());
  // The parts have some in common.
  Catalog taken(folder / "taken.db", Access::Write);
  for (const auto& [first, count] : {std::pair(0, 20), std::pair(10, 20)}) {
    const std::string path = folder / std::to_string(first) + ".db";
    Catalog(path, Access::Write)
        .add({{files.begin() + first, files.begin() + first + count}, {}}, 1, told.reporter());
    EXPECT_EQ(taken.take(path), 20U);
  }
  EXPECT_EQ(found(taken, question), found(whole, question));
  EXPECT_FALSE(found(taken, question).empty());
  for (const char* table : {"recordings", "spans", "stretches", "places"}) {
    const std::string count = std::string("SELECT count(*) FROM ") + table;
    EXPECT_EQ(taken.database().number(count), whole.database().number(count)) << table;
  }
  EXPECT_THROW(taken.take(folder / "none.db"), Failure);
}

}  // namespace
