#include "program/SelectionOptions.h"

#include "program/DescriptionOptions.h"

namespace velmar::tool {

std::vector<const CLI::Option*> addSelectionOptions(CLI::App& command, FrameSelection& selection) {
  auto* range =
      addParsedOption(command, "--range", "A:B", "Only frames A to B-1, counted from 0",
                      [&selection](const std::string& text) { selection.setRange(text); });
  auto* time = addParsedOption(
      command, "--time", "A:B",
      "Only frames captured from A to before B; each is microseconds since 1970, RFC 3339 "
      "(2023-11-14T22:13:20.5Z) or seconds since frame 0 (+1.5s)",
      [&selection](const std::string& text) { selection.setTime(text); });
  range->excludes(time);
  auto* every = command
                    .add_option_function<unsigned int>(
                        "--every", [&selection](unsigned int step) { selection.setEvery(step); },
                        "Of the frames that are selected so only the first and each N-th after it, "
                        "1 to 1000000")
                    ->type_name("N")
                    ->check(CLI::Range(1U, 1000000U).description(""));
  return {range, time, every};
}

}  // namespace velmar::tool
