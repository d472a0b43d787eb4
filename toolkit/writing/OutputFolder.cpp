#include "toolkit/writing/OutputFolder.h"

#include <unistd.h>

#include <algorithm>

#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

namespace fs = std::filesystem;

OutputFolder::OutputFolder(const fs::path& path) {
  std::vector<fs::path> missing;
  std::error_code error;
  for (fs::path folder = path; !folder.empty() && !fs::exists(folder, error);
       folder = folder.parent_path()) {
    missing.push_back(folder);
  }
  // One by one: another thread may make the same, which then takes it away.
  for (auto folder = missing.rbegin(); folder != missing.rend(); ++folder) {
    if (fs::create_directory(*folder, error)) made_.insert(made_.begin(), *folder);
    if (!error) continue;
    for (const fs::path& made : made_) ::rmdir(made.c_str());
    throw Failure::ofSystem(path, "cannot create the folder", error.value());
  }
}

OutputFolder::~OutputFolder() {
  for (const fs::path& folder : made_) ::rmdir(folder.c_str());
}

}  // namespace velmar::toolkit
