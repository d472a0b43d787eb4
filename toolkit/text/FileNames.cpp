#include "toolkit/text/FileNames.h"

#include <algorithm>
#include <filesystem>

#include "toolkit/text/NaturalOrder.h"

namespace velmar::toolkit {

namespace fs = std::filesystem;

bool hasExtension(const std::string& path, std::initializer_list<std::string_view> extensions) {
  std::string own = std::filesystem::path(path).extension().string();
  std::transform(own.begin(), own.end(), own.begin(), [](char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character | 0x20) : character;
  });
  return std::find(extensions.begin(), extensions.end(), own) != extensions.end();
}

std::vector<std::string> listFolder(const std::string& folder, bool recursive,
                                    const std::function<bool(const std::string&)>& isWanted,
                                    const std::function<void(const Failure&)>& fail) {
  std::vector<std::string> files;
  std::vector<std::string> folders;
  std::error_code error;
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    const std::string path = entry->path().string();
    std::error_code unknown;
    if (fs::is_directory(entry->symlink_status(unknown))) {
      folders.push_back(path);
    } else if (isWanted(path) && !entry->is_directory(unknown)) {
      files.push_back(path);
    }
  }
  if (error) fail(Failure::ofSystem(folder, "cannot list it", error.value()));
  std::sort(files.begin(), files.end(), naturalLess);
  if (!recursive) return files;
  std::sort(folders.begin(), folders.end(), naturalLess);
  for (const std::string& below : folders) {
    const auto found = listFolder(below, recursive, isWanted, fail);
    files.insert(files.end(), found.begin(), found.end());
  }
  return files;
}

std::vector<std::string> splitNames(const std::string& text, char separator) {
  std::vector<std::string> names;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(separator, at), text.size());
    const std::string name = text.substr(at, end - at);
    if (!name.empty()) names.push_back(name);
    at = end + 1;
  }
  return names;
}

}  // namespace velmar::toolkit
