#ifndef VELMAR_TOOLKIT_OUTPUT_FOLDER_H
#define VELMAR_TOOLKIT_OUTPUT_FOLDER_H

#include <filesystem>
#include <vector>

namespace velmar::toolkit {

/// A folder for outputs, made with the folders above it as far as they are missing.
class OutputFolder {
 public:
  /// Throws Failure and leaves nothing behind.
  explicit OutputFolder(const std::filesystem::path& path);
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;
  /// Takes away what was made, as far as nothing is in it.
  ~OutputFolder();

 private:
  std::vector<std::filesystem::path> made_;  ///< innermost first
};

}  // namespace velmar::toolkit

#endif
