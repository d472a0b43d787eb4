#ifndef VELMAR_TOOLKIT_RECORDING_H
#define VELMAR_TOOLKIT_RECORDING_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/base/FileBytes.h"
#include "toolkit/base/FileLock.h"
#include "toolkit/base/Job.h"
#include "toolkit/base/UndoFile.h"
#include "toolkit/recording/FrameTag.h"
#include "toolkit/recording/FrameTimes.h"
#include "toolkit/recording/RecordingDescription.h"
#include "velmar_video/VelmarVideoFile.h"
#include "velmar_video/rtv/TaggedVideoParser.h"

namespace velmar::toolkit {

/// Whether the path's extension names a container.
bool isRecordingName(const std::string& path);

/// Throws Failure otherwise.
void checkExtension(const std::string& path);

/// Throws Failure unless the output is of the input's container.
void checkSameContainer(const std::string& input, const std::string& output);

/// An open recording, with failures as exceptions that name it. Use it from one thread at a time.
///
/// The library maps the file. A map kills the program where the disk cannot read or the file has
/// become shorter, so frames are read from file() here, and what the library looks at in its map is
/// read from there first.
class Recording {
 public:
  /// Waits for a running edit, so that it is opened as it was before or as it is after.
  explicit Recording(const std::string& path);
  /// While the caller keeps others away.
  Recording(const std::string& path, const FileLock& lock);

  const std::string& path() const { return path_; }
  const FileBytes& file() const { return *file_; }
  /// Where the frames are by the index or the tags, perhaps past the end of the file.
  const std::vector<FilePlace>& places() const;
  bool isRtv() const { return parser_ != nullptr; }
  /// For calls whose error code the caller handles itself. Not for frames.
  VelmarVideoFileReader& reader() const { return *reader_; }
  /// Below the facade; null unless isRtv().
  TaggedVideoParser* parser() const { return parser_; }
  /// What an interrupted edit has left beside it.
  UndoState undoState() const { return undoState_; }

  unsigned int framesCount() const;
  std::uint64_t sensorTime(unsigned int index) const;
  FrameTimes times(unsigned int index) const;
  unsigned int frameSize(unsigned int index) const;
  RecordingDescription description() const;
  /// The camera's identifier as hexadecimal text; empty if all its bytes are 0 in an rtv, where it
  /// has a fixed size.
  std::string deviceId() const;
  /// Whether that text is what a writer makes of its bytes: lower-case pairs of digits.
  bool hasPlainDeviceId() const;

  /// Milliseconds, as stored; 0 unless the recording is an rtv.
  int timeFlag(unsigned int index) const;
  /// Empty unless the recording is an rtv.
  FrameTag tag(unsigned int index) const;
  /// The same without CAN signals, which take longer to read.
  FrameTag motion(unsigned int index) const { return FrameTag::of(storedTag(index)); }

 private:
  void check(VELMAR_ERROR_CODE_E code) const;
  void readAhead(std::uint64_t offset, std::uint64_t length) const;
  void readAheadOfImg() const;
  void readAheadOfRtv() const;
  std::vector<FilePlace> readIndex() const;
  std::vector<FilePlace> readRanges() const;
  frametag03Ver_t storedTag(unsigned int index) const;

  std::string path_;
  std::optional<FileBytes> file_;
  mutable std::optional<std::vector<FilePlace>> places_;
  std::shared_ptr<VelmarVideoFileReader> reader_;
  TaggedVideoParser* parser_ = nullptr;  ///< the reader's
  UndoState undoState_;
};

/// Tells the job if an edit of it was interrupted.
void noteInterruptedEdit(const Recording& recording, Job& job);

/// Opens it and does the same. Throws Failure.
Recording openRecording(const std::string& path, Job& job);

}  // namespace velmar::toolkit

#endif
