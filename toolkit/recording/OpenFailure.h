/// Why a recording cannot be opened, where path and content tell more than the library's code.
#ifndef VELMAR_TOOLKIT_OPEN_FAILURE_H
#define VELMAR_TOOLKIT_OPEN_FAILURE_H

#include <optional>
#include <string>

#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

/// Who is recording a recording that is not finished, or that nobody is.
/// \param lockHolder  of its temporary file
std::string recorderWords(const std::optional<std::string>& lockHolder);

/// What there is at the path if that is no file that could be a recording.
std::optional<Failure> pathFailure(const std::string& path);

/// For a recording whose opening ended with `code`.
Failure openFailure(const std::string& path, VELMAR_ERROR_CODE_E code);

}  // namespace velmar::toolkit

#endif
