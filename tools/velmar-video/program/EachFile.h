/// Work on several files, with what they have to tell in the order in which they are given.
#ifndef VELMAR_TOOL_EACH_FILE_H
#define VELMAR_TOOL_EACH_FILE_H

#include <cstddef>
#include <exception>
#include <functional>
#include <string>
#include <vector>

#include "program/CommandJob.h"
#include "program/StandardOutput.h"
#include "program/Toolkit.h"

namespace velmar::tool {

/// What is done with a file, perhaps by a thread beside others. What it throws ends the work on
/// this file only.
using FileWork = std::function<void(std::size_t at, Job& job, StandardOutput& output)>;

/// Does it with each of the files, so many at a time. Those that are not begun before the wish to
/// stop are lost. Throws OutputFailure, and UsageError if there is only one file.
/// \param of  what they are, such as "recordings"
void forEachFile(const std::vector<std::string>& files, unsigned int jobs, const std::string& of,
                 const FileWork& work, CommandJob& job);

/// Why the work on a file among several could not be done, whatever was thrown. Throws it again if
/// it is an OutputFailure.
Failure failureOf(const std::string& file, const std::exception_ptr& thrown);

}  // namespace velmar::tool

#endif
