#include "program/SelectionOptions.h"

#include "program/DescriptionOptions.h"
#include "toolkit/base/Failure.h"
#include "toolkit/tables/FrameExpression.h"

namespace velmar::tool {

std::vector<const CLI::Option*> addSelectionOptions(CLI::App& command, FrameSelection& selection) {
  auto* range =
      addParsedOption(command, "--range", "A:B", "Only frames A to B-1, counted from 0",
                      [&selection](const std::string& text) { selection.setRange(text); });
  auto* time =
      addTimeOption(command, [&selection](const std::string& text) { selection.setTime(text); });
  range->excludes(time);
  auto* every = addParsedOption(
      command, "--every", "N|TIME",
      "Of the frames that are selected so only the first and each N-th after it, 1 to 1000000, or "
      "the first in each time such as 1s or 500ms",
      [&selection](const std::string& text) { selection.setEvery(text); });
  return {range, time, every};
}

CLI::Option* addTimeOption(CLI::App& command, const std::function<void(const std::string&)>& take) {
  return addParsedOption(
      command, "--time", "A:B",
      "Only frames captured from A to before B; each is RFC 3339 (2023-11-14T22:13:20.5Z; without "
      "a zone it is UTC), a day (2023-11-14), the time since frame 0 (+1.5s, +500ms, +2h) or "
      "microseconds since 1970",
      take);
}

CLI::Option* addRecordingSelectionOptions(CLI::App& command, FrameSelection& selection) {
  addSelectionOptions(command, selection);
  return addWhereOption(command, [&selection](const std::string& text) {
    selection.setCondition([text] { return parseFrameExpression(text); });
  });
}

CLI::Option* addWhereOption(CLI::App& command,
                            const std::function<void(const std::string&)>& take) {
  return addParsedOption(
      command, "--where", "EXPRESSION",
      "Only frames for which it holds, such as 'speed_m_s > 20 && near(48.137, 11.575, 200)'. "
      "Names: index, size, time (seconds since frame 0), sensor_time_us, arrived_time_us; of an "
      "rtv speed_m_s, distance_m, x_m, y_m, z_m, lat_deg, lng_deg, direction (degrees), "
      "acceleration_m_s2, the CAN signals, and the same in other units (speed_km_h). Functions: "
      "near(lat, lng, metres), within(lng1, lat1, lng2, lat2), absent(name). Of the recording: "
      "duration (seconds), file(\"*night*\") for its path or its name, device(\"0aff*\"). What "
      "depends on an absent value does not hold",
      take);
}

void addSceneFormOptions(CLI::App& command, SceneForm& form, CLI::Option* needed) {
  auto* join = addDurationOption(
      command, "--join",
      "Join runs of frames that are no farther apart than this, such as 2s, with the "
      "frames between them",
      [&form](std::int64_t micros) { form.join = micros; });
  auto* pad = addDurationOption(
      command, "--pad",
      "Add the frames captured up to this long before and behind each run, such as "
      "1s; runs that overlap then become one",
      [&form](std::int64_t micros) { form.pad = micros; });
  if (needed == nullptr) return;
  join->needs(needed);
  pad->needs(needed);
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
