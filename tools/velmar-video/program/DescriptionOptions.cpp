#include "program/DescriptionOptions.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>

#include "toolkit/base/Failure.h"
#include "toolkit/text/JsonText.h"
#include "toolkit/text/NumberText.h"
#include "toolkit/text/TimeText.h"

namespace velmar::tool {

namespace {

const std::map<std::string, version_e> kVersions = {
    {"02", RTV_VER_02}, {"03", RTV_VER_03}, {"04", RTV_VER_04}};

// Says if the version has no unit as small as the altitude needs.
void setStartPosition(RecordingDescription& description, const StartPosition& position,
                      const std::string& output, Job& job) {
  description.lng = position.lng;
  description.lat = position.lat;
  if (!position.alt) return;
  if (description.version == RTV_VER_02) {
    throw UsageError("--start-position: version 02 of rtv holds no altitude");
  }
  const StoredAltitude altitude = storedAltitude(*position.alt, description.version);
  description.alt = altitude.units;
  if (altitude.isExact) return;
  const double stored = double{1} * altitude.units / altitudesPerMetre(description.version);
  job.lose(output, "its start position is " + numberText(stored) + " m high, the nearest to " +
                       numberText(*position.alt) + " that its version holds");
}

int parseSide(std::string_view text) {
  const auto pixels = parseNumber(text);
  if (!pixels || *pixels < 1 || *pixels > 65500) {
    throw UsageError("--size is WIDTHxHEIGHT, each 1 to 65500 pixels");
  }
  return static_cast<int>(*pixels);
}

// The bytes of hexadecimal text.
std::string parseDeviceId(const std::string& text) {
  if (text.empty() || text.size() % 2 != 0 ||
      text.find_first_not_of("0123456789abcdefABCDEF") != text.npos) {
    throw UsageError("--device-id is pairs of hexadecimal digits");
  }
  return bytesOfHex(text);
}

}  // namespace

CLI::Option* addParsedOption(CLI::App& command, const std::string& name, const std::string& type,
                             const std::string& help,
                             const std::function<void(const std::string&)>& take) {
  return command.add_option_function<std::string>(name, take, help)->type_name(type);
}

void addDeviceIdOption(CLI::App& command, const std::function<void(const std::string&)>& take,
                       const std::string& help) {
  addParsedOption(command, "--device-id", "HEX", help,
                  [take](const std::string& text) { take(parseDeviceId(text)); });
}

std::uint64_t parseTimeOption(const std::string& option, const std::string& text) {
  const auto time = parseUtcTime(text);
  if (time && *time <= kLastFormattedTime) return *time;
  throw UsageError(option + " is " + kTimeForms);
}

std::int64_t parseTimeShift(const std::string& option, const std::string& text) {
  if (const auto duration = parseDuration(text)) return *duration;
  const bool hasPlus = text.starts_with('+') && !text.starts_with("+-");
  if (const auto micros = numberOf<std::int64_t>(text.substr(hasPlus ? 1 : 0))) return *micros;
  throw UsageError(option + " is a duration such as -1.5s, +100ms or -1h, or microseconds");
}

CLI::Option* addDurationOption(CLI::App& command, const std::string& name, const std::string& help,
                               const std::function<void(std::int64_t)>& set, std::int64_t least) {
  return addParsedOption(command, name, "TIME", help, [=](const std::string& text) {
    const std::int64_t micros = parseDuration(text).value_or(-1);
    if (micros >= least) return set(micros);
    throw UsageError(name + " is a duration " +
                     (least > 0 ? "longer than 0" : "that is not negative") +
                     ": a number with the unit us, ms, s, min, h or d, such as 1.5s");
  });
}

CLI::Option* addStartTimeOption(CLI::App& command, std::optional<std::uint64_t>& time,
                                const std::string& help) {
  return addParsedOption(
      command, "--start-time", "TIME", help + "; TIME is " + kTimeForms,
      [&time](const std::string& text) { time = parseTimeOption("--start-time", text); });
}

void addStartPositionOption(CLI::App& command, std::optional<StartPosition>& position,
                            const std::string& help) {
  addParsedOption(command, "--start-position", "LNG,LAT[,ALT]", help,
                  [&position](const std::string& text) { position = parseStartPosition(text); });
}

void addTagsOption(CLI::App& command, std::string& file, const std::string& rows) {
  command
      .add_option(
          "--tags", file,
          "rtv: a table such as frames --csv writes. " + rows +
              "; x, y, z and relative_distance are hundredths of a metre, speed is "
              "hundredths of a metre a second, direction is degrees; x_m, speed_kmh and the "
              "like name other units. Version 02 has no z. Version 04 also takes the CAN "
              "signals by name; an empty cell means that the signal is absent")
      ->type_name("CSV");
}

void checkStandardInputOnce(const std::vector<std::string>& files) {
  if (std::count(files.begin(), files.end(), "-") > 1) {
    throw UsageError("- is there more than once, but standard input can be read only once");
  }
}

void addFrameRateOption(CLI::App& command, const std::function<void(double)>& take,
                        const std::string& help) {
  addParsedOption(command, "--fps", "RATE", help,
                  [take](const std::string& text) { take(parseFrameRate(text)); });
}

detail::JpegSize parsePictureSize(std::string_view text) {
  const std::size_t cross = text.find('x');
  return {parseSide(text.substr(0, cross)),
          parseSide(cross == text.npos ? "" : text.substr(cross + 1))};
}

void RtvVersionOption::addTo(CLI::App& command) {
  command.add_option("--rtv-version", text, "Version of an rtv: 02, 03 or 04")
      ->type_name("VERSION")
      ->check(CLI::IsMember({"02", "03", "04"}));
}

std::optional<version_e> RtvVersionOption::version(const std::string& output) const {
  if (text.empty()) return std::nullopt;
  if (!isRtvPath(output)) throw UsageError("--rtv-version needs an .rtv");
  return kVersions.at(text);
}

void DescriptionOptions::addTo(CLI::App& command) {
  addDeviceIdOption(
      command, [this](const std::string& id) { deviceId = id; },
      "The camera's identifier; 24 bytes at the most in an rtv");
  command.add_option("--camera-params", cameraParamsFile, "img: JSON about the camera")
      ->type_name("FILE");
  command.add_option("--extended-info", extendedInfoFile, "img: JSON about anything else")
      ->type_name("FILE");
  command.add_flag("--undistorted", undistorted, "Mark the frames as undistorted");
  command
      .add_option("--frame-format", frameFormat,
                  "The pixel format to name in the recording, BGR if nothing says otherwise")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"YUV420", "RGB", "BGR", "GRAY"}));
  rtvVersion.addTo(command);
  addStartPositionOption(command, startPosition,
                         "rtv: where the frames' positions are counted from, degrees and metres");
}

void DescriptionOptions::refuseWhatIsNotHeld(const std::string& output, version_e version) const {
  if (!isRtvPath(output)) {
    if (startPosition) throw UsageError("--start-position needs an .rtv");
    return;
  }
  if (!cameraParamsFile.empty()) throw UsageError("--camera-params: an rtv holds none");
  if (!extendedInfoFile.empty()) throw UsageError("--extended-info: an rtv holds none");
  if (deviceId.size() > kRtvDeviceIdSize) throw UsageError("--device-id: an rtv holds 24 bytes");
  if (undistorted && version == RTV_VER_02) {
    throw UsageError("--undistorted: version 02 of rtv cannot say so");
  }
}

RecordingDescription DescriptionOptions::description(const std::string& output, Job& job) const {
  RecordingDescription description;
  description.version = rtvVersion.version(output).value_or(RTV_VER_03);
  change(description, output, job);
  return description;
}

void DescriptionOptions::change(RecordingDescription& description, const std::string& output,
                                Job& job) const {
  refuseWhatIsNotHeld(output, description.version);
  if (!frameFormat.empty()) description.format = string2RvelmarFormat(frameFormat);
  if (!deviceId.empty()) description.deviceId = deviceId;
  if (undistorted) description.undistorted = true;
  if (!cameraParamsFile.empty()) description.cameraParams = readJsonFile(cameraParamsFile);
  if (!extendedInfoFile.empty()) description.extendedInfo = readJsonFile(extendedInfoFile);
  if (startPosition) setStartPosition(description, *startPosition, output, job);
}

std::vector<std::string> DescriptionOptions::inputs() const {
  std::vector<std::string> files;
  for (const std::string& file : {cameraParamsFile, extendedInfoFile}) {
    if (!file.empty()) files.push_back(file);
  }
  return files;
}

}  // namespace velmar::tool
