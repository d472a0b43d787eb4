#ifndef VELMAR_TOOLKIT_DRIVE_LOG_H
#define VELMAR_TOOLKIT_DRIVE_LOG_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/base/Job.h"
#include "toolkit/logs/LogReader.h"
#include "toolkit/recording/FrameTag.h"
#include "toolkit/recording/RecordingDescription.h"
#include "toolkit/tables/TagsCsv.h"

namespace velmar::toolkit {

/// What logs say of the moments at which frames are captured. Positions, distance and speed lie on
/// a line between the values before and behind a moment, the direction on the shorter arc; CAN
/// signals keep their last value. Before the first row and behind the last there is no value.
/// Not beside a Track, since both use the radii that the library has once for the process.
class DriveLog {
 public:
  /// Reads the logs; see readLogs(). Latitude and longitude become positions from the start
  /// position of the description; if that has none, it gets the first fix. Throws Failure, also if
  /// a field is in two logs.
  DriveLog(const LogRequest& request, RecordingDescription& description);

  /// Sets the fields of the logs in the tags of frames captured at those times, and leaves the
  /// others. A field without a value is cleared. The job is told what is understood of the logs and
  /// what is not, and how many frames have no value. Throws Failure if a log ends before the
  /// earliest of the times or begins behind the latest.
  void fill(std::vector<FrameTag>& tags, const std::vector<std::uint64_t>& times, Job& job) const;

 private:
  /// A series that goes into the tags.
  struct Target {
    TagColumn column;
    LogField::Between between;
    std::vector<LogSample> samples;
    std::string log;
    std::int64_t end;  ///< of the log
  };

  void add(const ReadLog& log, const LogSeries& series, const std::string& name);
  void addPositions(const ReadLog& log, RecordingDescription& description);
  void tell(Job& job) const;
  /// \return the number of frames without a value
  std::size_t fill(const Target& target, std::vector<FrameTag>& tags,
                   const std::vector<std::uint64_t>& times) const;
  std::optional<double> valueAt(const Target& target, std::int64_t time) const;
  void checkOverlap(const std::vector<std::uint64_t>& times) const;

  std::int64_t maxAge_;
  std::vector<TagColumn> columns_;
  std::vector<ReadLog> logs_;
  std::vector<Target> targets_;
};

}  // namespace velmar::toolkit

#endif
