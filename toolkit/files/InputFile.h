#ifndef VELMAR_TOOLKIT_INPUT_FILE_H
#define VELMAR_TOOLKIT_INPUT_FILE_H

#include <cstddef>
#include <string>

namespace velmar::toolkit {

/// The bytes of the file, or of standard input for "-", at most `limit`. Throws Failure.
std::string readFile(const std::string& path, std::size_t limit = std::string::npos);

}  // namespace velmar::toolkit

#endif
