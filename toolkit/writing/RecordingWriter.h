#ifndef VELMAR_TOOLKIT_RECORDING_WRITER_H
#define VELMAR_TOOLKIT_RECORDING_WRITER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "base/FileDescriptor.h"
#include "toolkit/base/Failure.h"
#include "toolkit/writing/RecordingBackend.h"

namespace velmar::toolkit {

/// Writes one recording and tidies up if that fails.
class RecordingWriter {
 public:
  enum class OnFailure {
    RemoveFrames,   ///< they can be had again
    KeepFrames,     ///< what is recorded stays, finished if possible and if it is on the disk
    KeepTemporary,  ///< what is recorded stays in the temporary file
  };

  /// Opens the recording. What is there is replaced; see ReservedOutput.
  /// \param framesMax  see makeRecordingBackend()
  /// \param shownAs    the name to show in failures, the path if empty
  /// Throws Failure.
  RecordingWriter(std::string path, const RecordingDescription& description, unsigned int framesMax,
                  OnFailure onFailure, const std::string& shownAs = "");
  RecordingWriter(const RecordingWriter&) = delete;
  RecordingWriter& operator=(const RecordingWriter&) = delete;
  /// Gives up what is not finished.
  ~RecordingWriter();

  /// Instead of the description's.
  void setSize(unsigned short width, unsigned short height) { backend_->setSize(width, height); }
  /// Brings the frames to the disk after every `frames` of them; never if that is 0.
  void syncEvery(unsigned int frames);
  unsigned int frames() const { return frames_; }

  /// Throws Failure if the frame cannot be written or not be brought to the disk. Then no other
  /// can be added.
  void add(const std::string& jpeg, FrameTimes times, const FrameTag& tag = {});
  /// Leaves the frames in the temporary file, without a recording. Nothing can be added any more.
  void abandon();
  /// Brings the recording under its name. Throws Failure, also if it has no frame.
  void finish();

 private:
  bool keepsFrames() const { return onFailure_ != OnFailure::RemoveFrames && frames_ > 0; }
  /// Says where the frames are that are kept.
  Failure failure(const std::string& words, VELMAR_ERROR_CODE_E code);
  Failure creationFailure(VELMAR_ERROR_CODE_E code) const;
  /// The temporary files.
  void sync();
  /// Has the disk begin with what was added, so that there is little left when all has to be there.
  void writeBack(std::size_t added);
  void removeTemporaryFiles() const;

  std::string path_;
  std::string shownAs_;
  // Open before the first frame: a descriptor hears only of what failed since it was opened.
  detail::FileDescriptor temporary_;
  detail::FileDescriptor journal_;
  OnFailure onFailure_;
  std::unique_ptr<RecordingBackend> backend_;
  unsigned int frames_ = 0;
  unsigned int syncInterval_ = 0;
  std::uint64_t bytes_ = 0;        ///< of the frames
  std::uint64_t writtenBack_ = 0;  ///< of these
  bool finished_ = false;
};

}  // namespace velmar::toolkit

#endif
