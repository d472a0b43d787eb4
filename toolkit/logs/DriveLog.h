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
  /// a field is in two logs whose times overlap.
  DriveLog(const LogRequest& request, RecordingDescription& description);

  /// Tells the job what is understood of the logs and what is not.
  void tell(Job& job) const;

  /// Sets the fields in the tag of a frame captured at that time for which the logs have a value,
  /// and leaves the others.
  void fill(FrameTag& tag, std::uint64_t time);

  /// Behind the last frame: tells the job how many have no value, and what of the values the
  /// version of `recording`, the output, loses. Throws Failure if a log ends before the earliest of
  /// the frames or begins behind the latest.
  void finish(const std::string& recording, Job& job) const;

  /// All of it for frames whose times are known.
  void fillAll(std::vector<FrameTag>& tags, const std::vector<std::uint64_t>& times,
               const std::string& recording, Job& job);

 private:
  /// The values of a field in one log.
  struct Part {
    LogField::Between between;
    std::vector<LogSample> samples;
    std::string log;
    std::int64_t begin, end;  ///< of the log
  };
  /// A field that goes into the tags.
  struct Target {
    TagColumn column;
    std::vector<Part> parts;
    std::size_t missing = 0;  ///< frames
  };

  void add(const ReadLog& log, const LogSeries& series, const std::string& name);
  void addPositions(ReadLog& log, RecordingDescription& description);
  std::optional<double> valueAt(const Part& part, std::uint64_t frameTime) const;
  bool set(const Target& target, FrameTag& tag, std::uint64_t time) const;
  void checkOverlap() const;
  void tellMissing(Job& job) const;

  std::int64_t maxAge_;
  version_e version_;
  std::vector<TagColumn> columns_;
  std::vector<ReadLog> logs_;
  std::vector<Target> targets_;
  TagContents contents_;
  std::size_t frames_ = 0;
  std::uint64_t earliest_ = UINT64_MAX;  ///< of their times
  std::uint64_t latest_ = 0;
};

}  // namespace velmar::toolkit

#endif
