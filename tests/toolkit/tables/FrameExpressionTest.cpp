#include "toolkit/tables/FrameExpression.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/TestSupport.h"
#include "toolkit/base/Failure.h"
#include "toolkit/frames/FrameSelection.h"
#include "toolkit/tables/FrameColumns.h"
#include "toolkit/tables/FrameFacts.h"
#include "toolkit/writing/RecordingWriter.h"

using namespace velmar::toolkit;

namespace {

using Frames = std::vector<unsigned int>;

// Six frames in half a second each: a start at 10 E, then 100 m east and 10 m north a frame.
class Chosen : public testing::Test {
 protected:
  static std::string make(const std::string& path, version_e version, double lat = 0) {
    RecordingDescription description;
    description.version = version;
    description.startTime = kStart;
    description.lng = nearestNds(10);
    description.lat = nearestNds(lat);
    RecordingWriter writer(path, description, 6, RecordingWriter::OnFailure::RemoveFrames);
    const unsigned short speeds[] = {2000, 2000, 2100, 2400, 2400, 0};
    for (int i = 0; i < 6; ++i) {
      FrameTag tag;
      tag.x = 10000 * i;
      tag.y = 1000 * i;
      tag.relativeDistance = 10050U * static_cast<unsigned int>(i);
      tag.speed = speeds[i];
      tag.direction = static_cast<unsigned short>(80 + i);
      // Brakes: no, yes, unknown, and again.
      if (i % 3 < 2) tag.can.brake_active = static_cast<unsigned char>(i % 3);
      if (i == 4) tag.can.yaw_rate = -0.25F;
      const std::uint64_t time = kStart + 500000ULL * static_cast<unsigned int>(i);
      writer.add(std::string(100 + static_cast<std::size_t>(i), 'x'), {time, time}, tag);
    }
    writer.finish();
    return path;
  }
  static Frames choose(const std::string& path, const std::string& expression) {
    FrameSelection selection;
    selection.setCondition([expression] { return parseFrameExpression(expression); });
    return selection.find(Recording(path));
  }

  static constexpr std::uint64_t kStart = 1700000000000000;
  const TempFolder folder_;
  const std::string rtv_ = make(folder_ / "a.rtv", RTV_VER_04);
  const std::string img_ = make(folder_ / "a.img", RTV_VER_04);
};

TEST_F(Chosen, ByWhatAFrameKnows) {
  // A degree of the equator is 111319.49 m long, one of the meridian there 110574.28 m.
  const std::pair<const char*, Frames> cases[] = {
      {"index >= 4", {4, 5}},
      {"1", {0, 1, 2, 3, 4, 5}},
      {"size == 103", {3}},
      {"time == 1.5 || time_ms == 2000", {3, 4}},
      {"sensor_time_us == 1700000000500000", {1}},
      {"arrived_time_s > 1700000002 && time_flag_ms < 2500 + 1", {5}},
      {"speed_m_s > 20 && speed_m_s <= 24", {2, 3, 4}},
      {"speed_km_h == 86.4", {3, 4}},
      {"speed_mph < 1", {5}},
      {"x_m == 200 || y_cm == 3000 && z_m == 0", {2, 3}},
      {"distance_m == 301.5 && relative_distance_m == distance_m", {3}},
      {"direction == 82 || direction_deg == 83", {2, 3}},
      {"lng_deg > 10.0044 && lat_deg > 0.00044", {5}},
      {"near(0, 10, 101)", {0, 1}},
      {"near(0.00018087, 10.00179663, 0.1)", {2}},
      {"near(0, -350, 1)", {0}},
      {"within(10.0008, 0.00008, 10.0028, 0.00028)", {1, 2, 3}},
      {"within(10.0028, 0.00028, 10.0008, 0.00008)", {1, 2, 3}},
      {"within(10.0008, -1, -179, 1)", {1, 2, 3, 4, 5}},
      {"within(-170.1, -1, 170, 1)", {}},
      // 1 m/s in a second, 4 in one, 3, -24; half a second at the ends.
      {"acceleration_m_s2 == 0", {0}},
      {"acceleration_m_s2 >= 3", {2, 3}},
      {"acceleration_m_s2 < -40", {5}},
      {"2 ^ 3 ^ 2 == 512 && -index + 10 / 4 / 5 * 2 == 0 - 1", {2}},
      {"index > 1 ? index < 3 : 0", {2}},
      // What is absent is neither true nor false.
      {"brake_active", {1, 4}},
      {"!brake_active", {0, 3}},
      {"brake_active != 1", {0, 3}},
      {"!(brake_active == 1)", {0, 3}},
      {"brake_active || index == 2", {1, 2, 4}},
      {"!(brake_active && index == 2)", {0, 1, 3, 4, 5}},
      {"absent(brake_active)", {2, 5}},
      {"yaw_rate < 0 && !absent(yaw_rate)", {4}},
      {"yaw_rate", {4}}};
  for (const auto& [expression, frames] : cases) {
    EXPECT_EQ(choose(rtv_, expression), frames) << expression;
  }
  EXPECT_EQ(choose(img_, "time < 1 || speed_m_s > 3"), (Frames{0, 1}));
}

TEST_F(Chosen, KnowsPlacesMoreThanOnceRoundTheEarth) {
  const std::string path = make(folder_ / "pole.rtv", RTV_VER_04, 89.9996);
  EXPECT_EQ(choose(path, "lng_deg > 280"), Frames{5});
  EXPECT_EQ(choose(path, "within(-80, 89, -60, 91)"), Frames{5});
  EXPECT_EQ(choose(path, "near(89.9996, -69, 60) && index > 2"), Frames{5});
}

TEST_F(Chosen, SaysWhatARecordingLacks) {
  const std::tuple<std::string, const char*, std::string> cases[] = {
      {img_, "speed_m_s > 3 && index > 2", "none of the frames has speed_m_s"},
      {img_, "near(0, 10, 5) || brake_active", "none of the frames has brake_active or a position"},
      {rtv_, "abs_active == 1", "none of the frames has abs_active"}};
  for (const auto& [path, expression, words] : cases) {
    try {
      choose(path, expression);
      ADD_FAILURE() << expression;
    } catch (const Failure& failure) {
      EXPECT_NE(failure.words().find(words + " ("), std::string::npos) << failure.what();
    }
  }
  EXPECT_EQ(choose(rtv_, "abs_active == 1 || speed_m_s > 100"), Frames());
  EXPECT_EQ(choose(img_, "size > 1000"), Frames());
}

TEST(FrameExpression, RefusesWhatItDoesNotUnderstand) {
  const std::pair<std::string, const char*> cases[] = {
      {std::string(100000, '1'), "the expression is too long"},
      {"speed > 20", "character 1: speed needs a unit: speed_m_s or speed_km_h or speed_mph"},
      {"index > x", "character 9: x needs a unit: x_m or x_cm or x_ft"},
      {"speed_m_s > sped_m_s", "character 13: there is no sped_m_s; did you mean speed_m_s?"},
      {"1 && neer(1, 2, 3)", "character 6: there is no neer; did you mean near?"},
      {"size > 1 && sizes", "character 13: there is no sizes; did you mean size?"},
      {"index = 3", "character 7: = 3 cannot be there; == compares"},
      {"index == 3 and 4", "character 12: "},
      {"index > ", "the expression ends too early"},
      {"(index > 1", "a closing parenthesis is missing"},
      {"near(1, 2)", "near() needs more arguments"},
      {"absent(index, 2)", "absent() has too many arguments"},
      {"", "the expression ends too early"},
      {"index, size", "one condition"},
      {"\"index\"", "character "},
      {"index > 1\n\x80", "character "}};
  for (const auto& [expression, words] : cases) {
    try {
      parseFrameExpression(expression);
      ADD_FAILURE() << expression;
    } catch (const UsageError& error) {
      EXPECT_NE(std::string(error.what()).find(words), std::string::npos) << error.what();
      EXPECT_TRUE(std::string(error.what()).starts_with("--where")) << error.what();
    }
  }
}

// Each column of a table is a fact of that name, or of that name with a unit.
TEST(FrameFacts, AreThoseOfTheColumns) {
  std::istringstream columns(frameColumns(true, true));
  for (std::string name; std::getline(columns, name, ',');) {
    if (factNamed(name)) continue;
    EXPECT_TRUE(unknownFactWords(name).starts_with(name + " needs a unit: ")) << name;
  }
}

}  // namespace
