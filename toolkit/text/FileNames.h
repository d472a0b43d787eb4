#ifndef VELMAR_TOOLKIT_FILE_NAMES_H
#define VELMAR_TOOLKIT_FILE_NAMES_H

#include <initializer_list>
#include <string>
#include <string_view>

namespace velmar::toolkit {

/// Whether the name ends in one of these, such as ".jpg", in upper or lower case. (Recordings'
/// names have to end in .img and .rtv as they are written here.)
bool hasExtension(const std::string& path, std::initializer_list<std::string_view> extensions);

}  // namespace velmar::toolkit

#endif
