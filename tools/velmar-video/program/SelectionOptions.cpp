#include "program/SelectionOptions.h"

void addSelectionOptions(CLI::App& command, FrameSelection& selection) {
  auto* range = command.add_option_function<std::string>(
      "--range", [&selection](const std::string& text) { selection.setRange(text); },
      "Only frames A to B-1, counted from 0");
  auto* time = command.add_option_function<std::string>(
      "--time", [&selection](const std::string& text) { selection.setTime(text); },
      "Only frames captured from A to before B; each is microseconds since 1970, RFC 3339 "
      "(2023-11-14T22:13:20.5Z) or seconds since frame 0 (+1.5s)");
  range->type_name("A:B")->excludes(time);
  time->type_name("A:B");
}
