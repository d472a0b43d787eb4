#include "toolkit/text/FileNames.h"

#include <algorithm>
#include <filesystem>

namespace velmar::toolkit {

bool hasExtension(const std::string& path, std::initializer_list<std::string_view> extensions) {
  std::string own = std::filesystem::path(path).extension().string();
  std::transform(own.begin(), own.end(), own.begin(), [](char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character | 0x20) : character;
  });
  return std::find(extensions.begin(), extensions.end(), own) != extensions.end();
}

}  // namespace velmar::toolkit
