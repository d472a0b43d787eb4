#include "toolkit/writing/OutputFolders.h"

#include <unistd.h>

#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

namespace fs = std::filesystem;

OutputFolders::~OutputFolders() {
  for (auto folder = made_.rbegin(); folder != made_.rend(); ++folder) ::rmdir(folder->c_str());
}

void OutputFolders::make(const fs::path& folder) {
  const std::lock_guard lock(mutex_);
  std::vector<fs::path> missing;
  std::error_code error;
  for (fs::path path = folder; !path.empty() && !fs::exists(path, error);
       path = path.parent_path()) {
    missing.push_back(path);
  }
  for (auto path = missing.rbegin(); path != missing.rend(); ++path) {
    if (fs::create_directory(*path, error)) made_.push_back(*path);
    if (error) throw Failure::ofSystem(folder, "cannot create the folder", error.value());
  }
}

}  // namespace velmar::toolkit
