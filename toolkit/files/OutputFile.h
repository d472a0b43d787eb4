#ifndef VELMAR_TOOLKIT_OUTPUT_FILE_H
#define VELMAR_TOOLKIT_OUTPUT_FILE_H

#include <string>

namespace velmar::toolkit {

/// Writes a whole file under a temporary name and renames it, so that `path` never stands for a
/// part of it. What was there is replaced. Throws Failure and leaves nothing behind.
void replaceFile(const std::string& path, const std::string& bytes);

}  // namespace velmar::toolkit

#endif
