/// Work on several files, with what they have to tell in the order in which they are given.
#ifndef VELMAR_TOOL_EACH_FILE_H
#define VELMAR_TOOL_EACH_FILE_H

#include <cstddef>
#include <functional>
#include <string>

#include "program/CommandJob.h"
#include "program/StandardOutput.h"
#include "program/Toolkit.h"

namespace velmar::tool {

/// What is done with a file, perhaps by a thread beside others. Throws Failure, which ends the work
/// on this file only.
using FileWork = std::function<void(std::size_t at, Job& job, StandardOutput& output)>;

/// Does it with the files 0 to count-1, so many at a time. Those that are not begun before the wish
/// to stop are lost.
/// \param of  what they are, such as "recordings"
void forEachFile(std::size_t count, unsigned int jobs, const std::string& of, const FileWork& work,
                 CommandJob& job);

}  // namespace velmar::tool

#endif
