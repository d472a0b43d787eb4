#include "server/TemporaryFolder.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include "toolkit/base/Failure.h"

namespace velmar::viewer {

TemporaryFolder::TemporaryFolder() {
  std::error_code error;
  path_ = (std::filesystem::temp_directory_path(error) / "velmar-video-XXXXXX").string();
  if (error || ::mkdtemp(path_.data()) == nullptr) {
    throw toolkit::Failure::ofSystem(path_, "cannot make it", error ? error.value() : errno);
  }
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
}

}  // namespace velmar::viewer
