#include "toolkit/writing/RecordingWriter.h"
#include "toolkit/files/RecorderFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "base/PublishFile.h"
#include "toolkit/files/LockHolder.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

RecordingWriter::RecordingWriter(std::string path, const RecordingDescription& description,
                                 unsigned int framesMax, OnFailure onFailure,
                                 const std::string& shownAs)
    : path_(std::move(path)), shownAs_(shownAs.empty() ? path_ : shownAs), onFailure_(onFailure) {
  checkExtension(path_);
  backend_ = makeRecordingBackend(path_, description, framesMax);
  const VELMAR_ERROR_CODE_E code = backend_->open();
  if (code != VELMAR_ERROR_CODE_SUCCESS_E) throw creationFailure(code);
  temporary_ = detail::FileDescriptor(temporaryPath(path_), O_RDONLY);
}

RecordingWriter::~RecordingWriter() {
  if (finished_) return;
  // A writer that is let go finishes its file. Without the temporary file it cannot.
  if (!keepsFrames()) removeTemporaryFiles();
  backend_.reset();
  if (!keepsFrames()) removeTemporaryFiles();
}

void RecordingWriter::add(const std::string& jpeg, FrameTimes times, const FrameTag& tag) {
  if (!backend_ || !backend_->add(jpeg, times, tag)) {
    throw failure("cannot write frame " + std::to_string(frames_) + ", the disk may be full",
                  VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  }
  ++frames_;
  writeBack(jpeg.size());
  if (syncInterval_ > 0 && frames_ % syncInterval_ == 0) sync();
}

void RecordingWriter::finish() {
  if (frames_ == 0) {
    throw failure("there was no frame to record", VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  }
  const VELMAR_ERROR_CODE_E code =
      backend_ ? backend_->close() : VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E;
  if (code != VELMAR_ERROR_CODE_SUCCESS_E) {
    throw failure("cannot finish it, the disk may be full", code);
  }
  finished_ = true;
}

// A backend that is let go finishes its file, unless the temporary name stands for another one.
void RecordingWriter::abandon() {
  const std::string temporary = temporaryPath(path_);
  const std::string aside = temporary + ".kept";
  const bool isAside = ::rename(temporary.c_str(), aside.c_str()) == 0;
  backend_.reset();
  // Another recorder may have taken the name meanwhile.
  if (isAside && ::link(aside.c_str(), temporary.c_str()) == 0) ::unlink(aside.c_str());
}

Failure RecordingWriter::failure(const std::string& words, VELMAR_ERROR_CODE_E code) {
  if (!keepsFrames()) return {shownAs_, words, code};
  if (backend_ && onFailure_ == OnFailure::KeepTemporary) {
    abandon();
  } else if (backend_) {
    backend_->close();
  }
  const std::string temporary = temporaryPath(path_);
  const std::string place = ::access(temporary.c_str(), F_OK) != 0
                                ? path_
                                : temporary + "; the command recover makes a recording of it";
  return {shownAs_, words + "; the frames recorded so far are in " + place, code};
}

void RecordingWriter::syncEvery(unsigned int frames) {
  syncInterval_ = frames;
  if (frames == 0) return;
  // Neither an rtv has one nor an img that could not make one.
  journal_ = detail::FileDescriptor(path_ + ".tmp.index", O_RDONLY);
}

void RecordingWriter::writeBack(std::size_t added) {
  constexpr std::uint64_t kPiece = std::uint64_t{8} << 20;
  bytes_ += added;
  if (bytes_ - writtenBack_ < kPiece) return;
  // Advice: what goes wrong is heard of when the file has to be on the disk.
  // To the end of the file: the frames lie behind a header that is not counted here.
  constexpr off64_t kToEnd = 0;
  ::sync_file_range(temporary_.get(), static_cast<off64_t>(writtenBack_), kToEnd,
                    SYNC_FILE_RANGE_WRITE);
  writtenBack_ = bytes_;
}

void RecordingWriter::sync() {
  const bool isNamed = frames_ != syncInterval_ || detail::syncName(temporaryPath(path_)) == 0;
  // The frames before the index journal, which must not lead to any that are not there.
  if (isNamed && temporary_.sync() && (!journal_.isOpen() || journal_.sync())) return;
  const std::string words = "frames " + std::to_string(frames_ - syncInterval_) + " to " +
                            std::to_string(frames_ - 1) +
                            " may not be on the disk: " + std::strerror(errno);
  // Another sync may succeed, although it brings nothing to the disk that this one has lost.
  if (keepsFrames()) abandon();
  throw failure(words, VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
}

// The library does not say why; trying once more does.
Failure RecordingWriter::creationFailure(VELMAR_ERROR_CODE_E code) const {
  const std::string temporary = temporaryPath(path_);
  if (const auto holder = lockHolder(temporary)) {
    return {temporary, *holder + " is recording to it", code};
  }
  const bool isThere = ::access(temporary.c_str(), F_OK) == 0;
  const detail::FileDescriptor file(temporary, O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK, 0666);
  if (!file.isOpen()) return Failure::ofCreation(isThere ? temporary : shownAs_, errno);
  removeTemporaryFiles();
  return {shownAs_, "cannot create it, the disk may be full", code};
}

void RecordingWriter::removeTemporaryFiles() const {
  ::unlink(temporaryPath(path_).c_str());
  ::unlink((path_ + ".tmp.index").c_str());
}

}  // namespace velmar::toolkit
