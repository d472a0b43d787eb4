#ifndef VELMAR_TOOLKIT_FILE_NAMES_H
#define VELMAR_TOOLKIT_FILE_NAMES_H

#include <functional>
#include <string>
#include <vector>

#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

/// The files in a folder whose names `isWanted` takes, in natural order, those in the folders below
/// it behind them if `recursive`. Links to folders are not followed. Folders that cannot be read go
/// to `fail`.
std::vector<std::string> listFolder(const std::string& folder, bool recursive,
                                    const std::function<bool(const std::string&)>& isWanted,
                                    const std::function<void(const Failure&)>& fail);

/// The names in a text, a line each, or, with `separator` '\0', as find -print0 writes them. Empty
/// ones are passed over.
std::vector<std::string> splitNames(const std::string& text, char separator);

}  // namespace velmar::toolkit

#endif
