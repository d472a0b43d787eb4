#ifndef VELMAR_TOOL_RECORDING_WRITER_H
#define VELMAR_TOOL_RECORDING_WRITER_H

#include <memory>
#include <string>

#include "Failure.h"
#include "FrameTimes.h"
#include "velmar_video/VelmarVideoFile.h"

/// Writes one recording and tidies up if that fails.
class RecordingWriter {
 public:
  enum class OnFailure {
    RemoveFrames,  ///< they can be had again
    KeepFrames,    ///< what is recorded stays in the temporary file
  };

  /// Opens the recording. What is there is replaced; see checkRecordingOutput(). Throws Failure.
  RecordingWriter(std::string path, OnFailure onFailure);
  RecordingWriter(const RecordingWriter&) = delete;
  RecordingWriter& operator=(const RecordingWriter&) = delete;
  /// Gives up what is not finished.
  ~RecordingWriter();

  /// For its setters.
  VelmarVideoFileCreater& creater() { return *creater_; }
  unsigned int frames() const { return frames_; }

  /// Throws Failure if the frame cannot be written.
  void add(const std::string& jpeg, FrameTimes times);
  /// Brings the recording under its name. Throws Failure, also if it has no frame.
  void finish();

 private:
  bool keepsFrames() const { return onFailure_ == OnFailure::KeepFrames && frames_ > 0; }
  Failure failure(const std::string& words, VELMAR_ERROR_CODE_E code) const;
  void removeTemporaryFiles() const;

  std::string path_;
  OnFailure onFailure_;
  std::shared_ptr<VelmarVideoFileCreater> creater_;
  unsigned int frames_ = 0;
  bool finished_ = false;
};

#endif
