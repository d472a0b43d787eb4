#include "toolkit/jpeg/FrameInput.h"

#include <algorithm>
#include <filesystem>

#include "toolkit/base/Failure.h"
#include "toolkit/text/FileNames.h"
#include "toolkit/text/Joined.h"

namespace velmar::toolkit {

namespace {

namespace fs = std::filesystem;

bool isPicture(const std::string& path) {
  return hasExtension(path, {".jpg", ".jpeg"}) || isOtherPicture(path);
}

std::vector<std::string> listFolderOfPictures(const std::string& folder) {
  auto files =
      listFolder(folder, false, isPicture, [](const Failure& failure) { throw Failure(failure); });
  if (files.empty()) {
    throw Failure(folder, "the folder holds no picture", VELMAR_ERROR_CODE_FILE_NOT_EXIST_E);
  }
  return files;
}

std::string someOf(const std::vector<std::string>& files) {
  constexpr std::size_t kShown = 5;
  if (files.size() <= kShown) return joined(files);
  return joined({files.begin(), files.begin() + kShown}) + " and " +
         std::to_string(files.size() - kShown) + " more";
}

}  // namespace

bool isVideoInput(const std::vector<std::string>& inputs) {
  std::error_code error;
  return inputs.size() == 1 && inputs[0] != "-" && !isPicture(inputs[0]) &&
         !fs::is_directory(inputs[0], error);
}

bool isOtherPicture(const std::string& path) {
  return hasExtension(path, {".png", ".bmp", ".tif", ".tiff", ".webp"});
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

std::vector<std::string> withoutOtherPictures(std::vector<std::string> pictures, Job& job) {
  const auto others = std::stable_partition(pictures.begin(), pictures.end(),
                                            [](auto& path) { return !isOtherPicture(path); });
  if (others == pictures.end()) return pictures;
  const std::string remedy = "--encode records PNG, BMP, TIFF and WebP pictures as JPEGs";
  if (others == pictures.begin()) {
    throw Failure(someOf(pictures), "not a JPEG; " + remedy, VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
  }
  job.lose(someOf({others, pictures.end()}), "left out, not a JPEG; " + remedy);
  pictures.erase(others, pictures.end());
  return pictures;
}

}  // namespace velmar::toolkit
