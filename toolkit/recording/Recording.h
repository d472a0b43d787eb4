#ifndef VELMAR_TOOLKIT_RECORDING_H
#define VELMAR_TOOLKIT_RECORDING_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "toolkit/base/Job.h"
#include "toolkit/files/FileBytes.h"
#include "toolkit/files/FileLock.h"
#include "toolkit/files/RecorderFiles.h"
#include "toolkit/files/UndoFile.h"
#include "toolkit/recording/FinishedTables.h"
#include "toolkit/recording/FrameTag.h"
#include "toolkit/recording/FrameTimes.h"
#include "toolkit/recording/RecordingDescription.h"

namespace velmar::toolkit {

/// Whether the path's extension names a container.
bool isRecordingName(const std::string& path);

/// Throws Failure otherwise.
void checkExtension(const std::string& path);

/// Throws Failure unless the output is of the input's container.
void checkSameContainer(const std::string& input, const std::string& output);

/// Whether a recording has to be finished.
enum class Accept {
  Finished,
  Running,  ///< or is being recorded still: its temporary file, or its path if there is only that
};

/// An open recording, with failures as exceptions that name it. Use it from one thread at a time.
class Recording {
 public:
  /// Waits for a running edit, so that it is opened as it was before or as it is after.
  explicit Recording(const std::string& path, Accept accept = Accept::Finished);
  /// While the caller keeps others away.
  Recording(const std::string& path, const FileLock& lock);

  /// As it was given.
  const std::string& path() const { return path_; }
  const FileBytes& file() const { return tables_->file(); }
  /// Where the frames are by the index or the tags, perhaps past the end of the file.
  const std::vector<FilePlace>& places() const { return tables_->places(); }
  /// See RecordingTables.
  std::string tryReadFrame(unsigned int index, std::string& bytes) const {
    return tables_->tryReadFrame(index, bytes);
  }
  bool isRtv() const { return isRtv_; }
  /// Otherwise it is what there is of one that is being recorded, or whose recorder was killed.
  bool isFinished() const { return finished_ != nullptr; }
  /// For calls whose error code the caller handles itself. Throws Failure unless it is finished.
  VelmarVideoFileReader& reader() const { return finished().reader(); }
  /// Of an rtv, below the facade. Throws Failure unless it is finished.
  TaggedVideoParser& parser() const { return *finished().parser(); }
  /// Takes in the frames that a recorder has added since the last time.
  void update() { tables_->update(); }
  /// Whether another recording has begun in the temporary file.
  bool isReplaced() const { return tables_->isReplaced(); }
  /// What an interrupted edit has left beside it.
  UndoState undoState() const { return undoState_; }

  unsigned int framesCount() const { return tables_->framesCount(); }
  unsigned int framesMax() const { return tables_->framesMax(); }
  std::uint64_t sensorTime(unsigned int index) const { return tables_->sensorTime(index); }
  std::uint64_t arrivedTime(unsigned int index) const { return tables_->arrivedTime(index); }
  FrameTimes times(unsigned int index) const { return {sensorTime(index), arrivedTime(index)}; }
  unsigned int frameSize(unsigned int index) const { return tables_->frameSize(index); }
  VELMAR_VERSION_E version() const { return tables_->version(); }
  VELMAR_CODEC_E codec() const { return tables_->codec(); }
  RecordingDescription description() const { return tables_->description(); }
  /// The camera's identifier as hexadecimal text; empty if all its bytes are 0 in an rtv, where it
  /// has a fixed size.
  std::string deviceId() const { return tables_->deviceId(); }
  /// Whether that text is what a writer makes of its bytes: lower-case pairs of digits.
  bool hasPlainDeviceId() const;

  /// Milliseconds, as stored; 0 unless the recording is an rtv.
  int timeFlag(unsigned int index) const { return isRtv_ ? tables_->tag(index).time_flag : 0; }
  /// Empty unless the recording is an rtv.
  FrameTag tag(unsigned int index) const;
  /// The same without CAN signals, which take longer to read.
  FrameTag motion(unsigned int index) const;

 private:
  void openFinished();
  bool openRunning();
  const FinishedTables& finished() const;

  std::string path_;
  bool isRtv_ = false;
  std::unique_ptr<RecordingTables> tables_;
  const FinishedTables* finished_ = nullptr;  ///< the tables, if they are
  UndoState undoState_ = UndoState::None;
};

/// What has become of the recorder of a recording that was not finished when it was opened.
struct Recorder {
  enum class State {
    AtWork,
    Done,   ///< its file has not got the temporary name any more
    Ended,  ///< without finishing it
  };
  State state;
  std::string words;  ///< who it is or how it ended; empty if it is done
};

Recorder recorderOf(const Recording& recording);

/// Tells the job if an edit of it was interrupted, if it is being recorded, or if its recorder has
/// ended without finishing it.
void noteState(const Recording& recording, Job& job);

/// Opens it and does the same. Throws Failure.
Recording openRecording(const std::string& path, Job& job, Accept accept = Accept::Finished);

}  // namespace velmar::toolkit

#endif
