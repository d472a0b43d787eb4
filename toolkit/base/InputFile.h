#ifndef VELMAR_TOOLKIT_INPUT_FILE_H
#define VELMAR_TOOLKIT_INPUT_FILE_H

#include <cstddef>
#include <string>
#include <vector>

/// The bytes of the file, or of standard input for "-", at most `limit`. Throws Failure.
std::string readFile(const std::string& path, std::size_t limit = std::string::npos);

/// Throws UsageError if more than one of the files is standard input, "-".
void checkStandardInputOnce(const std::vector<std::string>& files);

#endif
