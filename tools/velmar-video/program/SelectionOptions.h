#ifndef VELMAR_TOOL_SELECTION_OPTIONS_H
#define VELMAR_TOOL_SELECTION_OPTIONS_H

#include <CLI/CLI.hpp>
#include <vector>

#include "program/Toolkit.h"
#include "toolkit/recording/FrameSelection.h"

namespace velmar::tool {

/// --range, --time and --every, which set `selection`; that has to outlive the parsing.
std::vector<const CLI::Option*> addSelectionOptions(CLI::App& command, FrameSelection& selection);

/// The same for frames of recordings, of which more is known: and --where.
/// \return that one
CLI::Option* addRecordingSelectionOptions(CLI::App& command, FrameSelection& selection);

}  // namespace velmar::tool

#endif
