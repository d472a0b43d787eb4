#include "program/SelectionOptions.h"

#include "program/DescriptionOptions.h"
#include "toolkit/base/Failure.h"
#include "toolkit/tables/FrameExpression.h"

namespace velmar::tool {

std::vector<const CLI::Option*> addSelectionOptions(CLI::App& command, FrameSelection& selection) {
  auto* range =
      addParsedOption(command, "--range", "A:B", "Only frames A to B-1, counted from 0",
                      [&selection](const std::string& text) { selection.setRange(text); });
  auto* time = addParsedOption(
      command, "--time", "A:B",
      "Only frames captured from A to before B; each is RFC 3339 (2023-11-14T22:13:20.5Z; without "
      "a zone it is UTC), a day (2023-11-14), the time since frame 0 (+1.5s, +500ms, +2h) or "
      "microseconds since 1970",
      [&selection](const std::string& text) { selection.setTime(text); });
  range->excludes(time);
  auto* every = addParsedOption(
      command, "--every", "N|TIME",
      "Of the frames that are selected so only the first and each N-th after it, 1 to 1000000, or "
      "the first in each time such as 1s or 500ms",
      [&selection](const std::string& text) { selection.setEvery(text); });
  return {range, time, every};
}

CLI::Option* addRecordingSelectionOptions(CLI::App& command, FrameSelection& selection) {
  addSelectionOptions(command, selection);
  return addParsedOption(
      command, "--where", "EXPRESSION",
      "Only frames for which it holds, such as 'speed_m_s > 20 && near(48.137, 11.575, 200)'. "
      "Names: index, size, time (seconds since frame 0), sensor_time_us, arrived_time_us; of an "
      "rtv speed_m_s, distance_m, x_m, y_m, z_m, lat_deg, lng_deg, direction (degrees), "
      "acceleration_m_s2, the CAN signals, and the same in other units (speed_km_h). Functions: "
      "near(lat, lng, metres), within(lng1, lat1, lng2, lat2), absent(name). What depends on an "
      "absent value does not hold",
      [&selection](const std::string& text) {
        selection.setCondition([text] { return parseFrameExpression(text); });
      });
}

void addStripOption(CLI::App& command, Strip& strip) {
  addParsedOption(
      command, "--strip", "WHAT",
      "Leave out, to give the copy away: positions (the start position, and of the frames places, "
      "distances and directions), ids (the device id), exif (Exif, XMP, IPTC and comments of the "
      "JPEGs, places of the pictures among "
      "them), or several of these with commas. Pictures stay as they are",
      [&strip](const std::string& names) { strip = Strip::named(names); });
}

std::vector<unsigned int> SelectedFrames::of(const Recording& recording) {
  auto frames = recordings_ == 1 ? selection_.frames(recording) : selection_.find(recording);
  if (!frames.empty()) areThere_ = true;
  return frames;
}

void SelectedFrames::check(const CommandJob& job) const {
  if (areThere_ || recordings_ == 0 || job.status() != ExitStatus::Done) return;
  throw Failure(std::to_string(recordings_) + " recordings", selection_.emptyWords(),
                VELMAR_ERROR_CODE_OUT_RANGE_E);
}

}  // namespace velmar::tool
