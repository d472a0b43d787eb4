#ifndef VELMAR_TOOL_SELECTION_OPTIONS_H
#define VELMAR_TOOL_SELECTION_OPTIONS_H

#include <CLI/CLI.hpp>

#include "program/Toolkit.h"
#include "toolkit/recording/FrameSelection.h"

namespace velmar::tool {

/// --range and --time, which set `selection`; that has to outlive the parsing.
void addSelectionOptions(CLI::App& command, FrameSelection& selection);

}  // namespace velmar::tool

#endif
