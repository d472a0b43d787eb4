#ifndef VELMAR_TOOLKIT_OUTPUT_FOLDERS_H
#define VELMAR_TOOLKIT_OUTPUT_FOLDERS_H

#include <filesystem>
#include <mutex>
#include <vector>

namespace velmar::toolkit {

/// Folders for outputs, made as they are needed.
class OutputFolders {
 public:
  OutputFolders() = default;
  OutputFolders(const OutputFolders&) = delete;
  OutputFolders& operator=(const OutputFolders&) = delete;
  /// Takes away what was made, as far as nothing is in it.
  ~OutputFolders();

  /// Makes the folder and those above it, as far as they are missing. Thread-safe. Throws Failure.
  void make(const std::filesystem::path& folder);

 private:
  std::mutex mutex_;
  std::vector<std::filesystem::path> made_;  ///< outer ones first
};

}  // namespace velmar::toolkit

#endif
