#ifndef VELMAR_TOOL_TIMES_CSV_H
#define VELMAR_TOOL_TIMES_CSV_H

#include <string>
#include <string_view>
#include <vector>

#include "FrameTimes.h"

/// A table with the times of frames: the header "file,sensor_time_us,arrived_time_us", then a row
/// for each frame, in any order.
class TimesCsv {
 public:
  /// \param name  of the table, for messages
  /// Throws Failure that names the line.
  TimesCsv(std::string name, const std::string& text);

  /// The times of the files, in their order. A row names a file by its path as it is given here,
  /// or by the path's last part. Throws Failure unless rows and files match one to one.
  std::vector<FrameTimes> match(const std::vector<std::string>& files) const;

 private:
  struct Row {
    std::size_t line;
    std::string file;
    FrameTimes times;
  };

  void addRow(std::size_t line, std::string_view text);
  [[noreturn]] void fail(std::size_t line, const std::string& words) const;

  std::string name_;
  std::vector<Row> rows_;
};

#endif
