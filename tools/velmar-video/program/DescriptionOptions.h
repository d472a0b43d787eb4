#ifndef VELMAR_TOOL_DESCRIPTION_OPTIONS_H
#define VELMAR_TOOL_DESCRIPTION_OPTIONS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jpeg/JpegHeader.h"
#include "program/Toolkit.h"
#include "toolkit/base/Job.h"
#include "toolkit/recording/RecordingDescription.h"
#include "toolkit/writing/StartPosition.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace velmar::tool {

/// How a point in time is given.
constexpr char kTimeForms[] =
    "microseconds since 1970, RFC 3339 (2023-11-14T22:13:20.5Z; without a zone it is UTC) or a day";

/// A point in time for `option`, microseconds since 1970. Throws UsageError.
std::uint64_t parseTimeOption(const std::string& option, const std::string& text);

/// A difference of times for `option` in microseconds: a duration, or a number of microseconds.
/// Throws UsageError.
std::int64_t parseTimeShift(const std::string& option, const std::string& text);

/// An option whose duration goes to `set`, in microseconds. Throws UsageError for one below
/// `least`.
CLI::Option* addDurationOption(CLI::App& command, const std::string& name, const std::string& help,
                               const std::function<void(std::int64_t)>& set,
                               std::int64_t least = 0);

/// An option whose text goes to `take`, which throws UsageError if it is wrong.
CLI::Option* addParsedOption(CLI::App& command, const std::string& name, const std::string& type,
                             const std::string& help,
                             const std::function<void(const std::string&)>& take);

/// --device-id, whose bytes `take` gets.
void addDeviceIdOption(CLI::App& command, const std::function<void(const std::string&)>& take,
                       const std::string& help);

/// --start-time, which sets `time`; that has to outlive the parsing.
CLI::Option* addStartTimeOption(CLI::App& command, std::optional<std::uint64_t>& time,
                                const std::string& help);

/// --start-position, which sets `position`; that has to outlive the parsing.
void addStartPositionOption(CLI::App& command, std::optional<StartPosition>& position,
                            const std::string& help);

/// --tags, which sets `file`; that has to outlive the parsing.
/// \param rows  which column names the frame of a row
void addTagsOption(CLI::App& command, std::string& file, const std::string& rows);

/// Throws UsageError if more than one of the files is standard input, "-".
void checkStandardInputOnce(const std::vector<std::string>& files);

/// --fps, whose value `take` gets.
void addFrameRateOption(CLI::App& command, const std::function<void(double)>& take,
                        const std::string& help);

/// The pixels of --size, "1280x800". Throws UsageError.
detail::JpegSize parsePictureSize(std::string_view text);

/// --rtv-version. This object has to outlive the parsing.
struct RtvVersionOption {
  void addTo(CLI::App& command);
  /// If given; UsageError if it is for an img.
  std::optional<version_e> version(const std::string& output) const;

  std::string text;
};

/// The options that describe a new recording. This object has to outlive the parsing.
struct DescriptionOptions {
  void addTo(CLI::App& command);
  /// What they say of the recording `output`, files read and checked; the size and the start time
  /// are still to be set. Throws Failure, and UsageError for what the container does not hold.
  /// What the container holds only nearly is a loss.
  RecordingDescription description(const std::string& output, Job& job) const;
  /// The same for a recording of which something is known; what is given goes before that.
  void change(RecordingDescription& description, const std::string& output, Job& job) const;
  /// The files that they read.
  std::vector<std::string> inputs() const;

  RtvVersionOption rtvVersion;
  std::string deviceId;  ///< bytes
  std::string cameraParamsFile;
  std::string extendedInfoFile;
  std::string frameFormat;
  std::optional<StartPosition> startPosition;
  bool undistorted = false;

 private:
  void refuseWhatIsNotHeld(const std::string& output, version_e version) const;
};

}  // namespace velmar::tool

#endif
