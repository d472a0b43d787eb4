/// Refuses outputs that would destroy something, before anything is written.
#ifndef VELMAR_TOOL_OUTPUT_GUARD_H
#define VELMAR_TOOL_OUTPUT_GUARD_H

#include <string>
#include <vector>

namespace velmar::tool {

/// Throws Failure if a file that is written must not be: one that exists, unless `force` is given,
/// one that is no regular file, and one that is among `inputs` ("-" is standard input) under
/// whatever name.
void checkOutput(const std::string& path, const std::vector<std::string>& inputs, bool force);

/// The same for a recording, whose temporary files count as well: what an interrupted recording
/// left there can be saved.
void checkRecordingOutput(const std::string& path, const std::vector<std::string>& inputs,
                          bool force);

/// Throws Failure if standard output goes into `input`.
void checkStandardOutput(const std::string& input);

}  // namespace velmar::tool

#endif
