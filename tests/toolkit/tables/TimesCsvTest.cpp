#include "toolkit/tables/TimesCsv.h"

#include <gtest/gtest.h>

#include "toolkit/base/Failure.h"

using namespace velmar::toolkit;

namespace {

const std::string kHeader = "file,sensor_time_us,arrived_time_us\n";
const std::vector<std::string> kFiles = {"in/1.jpg", "in/2.jpg"};

// The capture times of the files, or the failure's text.
std::string match(const std::string& rows, const std::vector<std::string>& files = kFiles) {
  std::string text;
  try {
    for (const FrameTimes& times : readTimes(CsvTable("t.csv", rows), files)) {
      text += std::to_string(times.sensor) + "/" + std::to_string(times.arrived) + " ";
    }
  } catch (const Failure& failure) {
    text = failure.what();
    text = text.substr(0, text.find(" ("));
  }
  return text;
}

TEST(TimesCsv, GivesEachFileItsTimes) {
  EXPECT_EQ(match(kHeader + "1.jpg,10,11\n2.jpg,20,21\n"), "10/11 20/21 ");
  EXPECT_EQ(match(kHeader + "in/2.jpg,20,21\r\n\r\n1.jpg,10,11"), "10/11 20/21 ");
  EXPECT_EQ(match(kHeader + "a/1.jpg,1,2\nb/1.jpg,3,4\n", {"b/1.jpg", "a/1.jpg"}), "3/4 1/2 ");
  EXPECT_EQ(match(kHeader + "1.jpg,1,2\na/1.jpg,3,4\n", {"1.jpg", "a/1.jpg"}), "1/2 3/4 ");
  EXPECT_EQ(match(kHeader + "\"a \"\"b\"\", c.jpg\",1,2\n", {"a \"b\", c.jpg"}), "1/2 ");
  // Of a spreadsheet, with columns that nobody asked for and a row that was cleared.
  EXPECT_EQ(match("\xEF\xBB\xBF Size,Arrived_Time_US,,\"INDEX\" ,sensor_time_us,\r\n"
                  "9, 21,,1,20 ,\r\n9,11,,0, 10,\r\n,,,,,\r"),
            "10/11 20/21 ");
  EXPECT_EQ(match(kHeader + "x.jpg,1,18446744073709551615\n", {"x.jpg"}),
            "1/18446744073709551615 ");
  EXPECT_EQ(match("index;Arrived_Time;SENSOR_TIME_S\n0;1970-01-01T00:00:02Z;1,0000019\n", {"x"}),
            "1000001/2000000 ");
  EXPECT_EQ(match("arrived_time_ms\tindex\tsensor_time_ns\n2.5\t0\t1999\n", {"x"}), "1/2500 ");
}

TEST(TimesCsv, NamesTheLineThatDoesNotFit) {
  const struct {
    std::string text;
    std::string failure;
  } cases[] = {
      {"1.jpg,10,11\n", "line 1: there is no column sensor_time_us; there are 1.jpg, 10, 11"},
      {"file,sensor_time_us\n",
       "line 1: there is no column arrived_time_us; there are file, sensor_time_us"},
      {"sensor_time_us,arrived_time_us\n",
       "line 1: there is no column file or index; there are sensor_time_us, arrived_time_us"},
      {"FILE ," + kHeader, "line 1: the column file is there twice"},
      {kHeader + "1.jpg,10\n", "line 2: it has 2 fields, the header 3"},
      {kHeader + "\n1.jpg,-1,11\n2.jpg,1,1\n", "line 3: sensor_time_us cannot be -1"},
      {kHeader + "2.jpg,1,1\n1.jpg,1.5,11\n", "line 3: sensor_time_us cannot be 1.5"},
      {kHeader + "2.jpg,1,1\n1.jpg,1,18446744073709551616\n",
       "line 3: arrived_time_us cannot be 18446744073709551616"},
      {"index,sensor_time_ms,arrived_time_us\n0,-1,1\n1,1,1\n",
       "line 2: sensor_time_ms cannot be -1"},
      {"index,sensor_time_s,sensor_time_us,arrived_time_us\n",
       "line 1: both columns, sensor_time_us and sensor_time_s, are the sensor_time; leave one "
       "out"},
      {kHeader + "1.jpg,1,2\n2.jpg,1,2\n3.jpg,1,2\n", "line 4: there is no frame 3.jpg"},
      {kHeader + "1.jpg,1,2\nin/1.jpg,1,2\n", "line 3: its frame has a row already, line 2"},
      {kHeader + "1.jpg,1,2\n", "it has no row for in/2.jpg"},
      {"", "line 1: there is no column sensor_time_us; the table is empty"},
      {kHeader + "\"1.jpg,1,2\n", "line 2: a quotation mark is not closed"},
  };
  for (const auto& [text, failure] : cases) EXPECT_EQ(match(text), "t.csv: " + failure);
  EXPECT_EQ(match(kHeader + "1.jpg,1,2\n", {"a/1.jpg", "b/1.jpg"}),
            "t.csv: line 2: there are several frames 1.jpg");
}

}  // namespace
