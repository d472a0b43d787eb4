#ifndef VELMAR_TOOL_FOLLOW_OPTION_H
#define VELMAR_TOOL_FOLLOW_OPTION_H

#include <CLI/CLI.hpp>
#include <string>

#include "program/InputOptions.h"
#include "program/Toolkit.h"

namespace velmar::tool {

/// --follow, which sets `follow`; that has to outlive the parsing.
void addFollowOption(CLI::App& command, bool& follow);

/// Throws UsageError if it is asked for with several recordings.
void checkFollowsOne(const std::string& command, const InputOptions& inputs);

}  // namespace velmar::tool

#endif
