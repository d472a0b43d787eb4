/// What there is of a recording while it is being recorded, or of one whose recorder was killed.
#ifndef VELMAR_TOOLKIT_RUNNING_TABLES_H
#define VELMAR_TOOLKIT_RUNNING_TABLES_H

#include <memory>
#include <string>
#include <vector>

#include "toolkit/recording/RecordingTables.h"

namespace velmar::toolkit {

/// The frames in a recorder's temporary file that are whole. What the recorder writes at the end,
/// such as the device id and the start of an rtv, is not there yet; the size is that of frame 0.
class RunningTables : public RecordingTables {
 public:
  /// Throws Failure.
  /// \param path  the temporary file's
  explicit RunningTables(const std::string& path) : file_(path) {}

  const FileBytes& file() const override { return file_; }
  VELMAR_CODEC_E codec() const override { return VELMAR_CODEC_JPG_E; }
  std::string deviceId() const override { return ""; }
  RecordingDescription description() const override;
  unsigned int framesCount() const override { return static_cast<unsigned int>(places_.size()); }
  unsigned int frameSize(unsigned int index) const override;
  const std::vector<FilePlace>& places() const override { return places_; }

 protected:
  /// Throws Failure if there is no such frame.
  const FilePlace& placeOf(unsigned int index) const;

  FileBytes file_;
  std::vector<FilePlace> places_;
};

/// Throws Failure if the file cannot be read, or if it is of an img whose index journal is missing.
/// \param path  the temporary file's
std::unique_ptr<RunningTables> openRunningTables(const std::string& path);

}  // namespace velmar::toolkit

#endif
