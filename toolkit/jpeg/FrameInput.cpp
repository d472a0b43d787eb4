#include "toolkit/jpeg/FrameInput.h"

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <string_view>

#include "toolkit/base/Failure.h"
#include "toolkit/text/FileNames.h"

namespace velmar::toolkit {

namespace {

namespace fs = std::filesystem;

bool endsIn(std::initializer_list<std::string_view> extensions, const fs::path& path) {
  std::string extension = path.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(), [](char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character | 0x20) : character;
  });
  return std::find(extensions.begin(), extensions.end(), extension) != extensions.end();
}

bool isPicture(const fs::path& path) {
  return endsIn({".jpg", ".jpeg"}, path) || isOtherPicture(path);
}

std::vector<std::string> listFolderOfPictures(const std::string& folder) {
  const auto files =
      listFolder(folder, false, isPicture, [](const Failure& failure) { throw Failure(failure); });
  if (files.empty()) {
    throw Failure(folder, "the folder holds no picture", VELMAR_ERROR_CODE_FILE_NOT_EXIST_E);
  }
  return files;
}

}  // namespace

bool isVideoInput(const std::vector<std::string>& inputs) {
  std::error_code error;
  return inputs.size() == 1 && inputs[0] != "-" && !isPicture(inputs[0]) &&
         !fs::is_directory(inputs[0], error);
}

bool isOtherPicture(const std::string& path) {
  return endsIn({".png", ".bmp", ".tif", ".tiff", ".webp"}, path);
}

std::vector<std::string> listPictures(const std::vector<std::string>& inputs) {
  std::vector<std::string> files;
  for (const std::string& input : inputs) {
    std::error_code error;
    const fs::file_status status = fs::status(input, error);
    if (!fs::exists(status)) throw Failure::ofSystem(input, "cannot open it", error.value());
    if (fs::is_directory(status)) {
      const std::vector<std::string> found = listFolderOfPictures(input);
      files.insert(files.end(), found.begin(), found.end());
    } else {
      files.push_back(input);
    }
  }
  return files;
}

}  // namespace velmar::toolkit
