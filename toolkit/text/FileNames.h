#ifndef VELMAR_TOOLKIT_FILE_NAMES_H
#define VELMAR_TOOLKIT_FILE_NAMES_H

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

/// Whether the name ends in one of these, such as ".jpg", in upper or lower case. (Recordings'
/// names have to end in .img and .rtv as they are written here.)
bool hasExtension(const std::string& path, std::initializer_list<std::string_view> extensions);

/// The files in a folder whose names `isWanted` takes, in natural order, those in the folders below
/// it behind them if `recursive`. Links to folders are not followed. Folders that cannot be read go
/// to `fail`.
std::vector<std::string> listFolder(const std::string& folder, bool recursive,
                                    const std::function<bool(const std::string&)>& isWanted,
                                    const std::function<void(const Failure&)>& fail);

/// The names in a text, each behind the other with the separator between them. Empty ones are
/// passed over.
std::vector<std::string> splitNames(const std::string& text, char separator);

}  // namespace velmar::toolkit

#endif
