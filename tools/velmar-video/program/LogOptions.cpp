#include "program/LogOptions.h"

#include "program/DescriptionOptions.h"

namespace velmar::tool {

void LogOptions::addTo(CLI::App& command) {
  auto* log = command.add_option(
      "--log", request.files,
      "rtv: a log of the drive, which gives the frames positions, speed, direction and CAN signals "
      "at their capture times: a table with any of , ; tab | between its columns, or GPX; may be "
      "given several times, - is standard input");
  log->type_name("FILE")->allow_extra_args(false);
  auto* map = command.add_option_function<std::vector<std::string>>(
      "--log-map",
      [this](const std::vector<std::string>& texts) {
        for (const std::string& text : texts) request.mappings.push_back(parseLogMapping(text));
      },
      "The column of a field, if its name and unit (speed_kmh, lat, heading_deg) do not say it; "
      "may "
      "be given several times. Fields: time, lat, lng, alt, x, y, z, distance, speed, heading, and "
      "CAN signals by name. Units: m/s km/h mph, deg rad, m cm ft; of times s ms us ns, a pattern "
      "of strptime (local time unless it has %z or ends in Z), or none for RFC 3339");
  map->type_name("FIELD=COLUMN[:UNIT]")->allow_extra_args(false)->needs(log);
  addDurationOption(command, "--log-max-age",
                    "How long a CAN signal keeps its last value, such as 500ms; 1s if not given",
                    [this](std::int64_t micros) { request.maxAge = micros; })
      ->needs(log);
  addParsedOption(
      command, "--log-offset", "OFFSET",
      "Offset to add to the times of the logs: a duration such as +350ms, or microseconds",
      [this](const std::string& text) { request.offset = parseTimeShift("--log-offset", text); })
      ->needs(log);
}

}  // namespace velmar::tool
