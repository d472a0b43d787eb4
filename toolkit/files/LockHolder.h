#ifndef VELMAR_TOOLKIT_LOCK_HOLDER_H
#define VELMAR_TOOLKIT_LOCK_HOLDER_H

#include <optional>
#include <string>

namespace velmar::toolkit {

/// Who has locked the file by flock(2), such as "process 1234 (velmar-video)"; nothing if nobody
/// has, or there is no such file.
std::optional<std::string> lockHolder(const std::string& path);

}  // namespace velmar::toolkit

#endif
