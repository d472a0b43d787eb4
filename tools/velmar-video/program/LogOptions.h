#ifndef VELMAR_TOOL_LOG_OPTIONS_H
#define VELMAR_TOOL_LOG_OPTIONS_H

#include <CLI/CLI.hpp>

#include "program/Toolkit.h"
#include "toolkit/logs/LogReader.h"

namespace velmar::tool {

/// --log and the options that say how to read it. This object has to outlive the parsing.
struct LogOptions {
  void addTo(CLI::App& command);
  bool isGiven() const { return !request.files.empty(); }

  LogRequest request;
};

}  // namespace velmar::tool

#endif
