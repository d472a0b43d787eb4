#include "toolkit/recording/Recording.h"

#include <unistd.h>

#include "base/HexText.h"
#include "toolkit/base/Failure.h"
#include "toolkit/base/LockHolder.h"
#include "toolkit/recording/OpenFailure.h"
#include "velmar_video/VelmarVideoFile.h"

namespace velmar::toolkit {

bool isRecordingName(const std::string& path) {
  // A reader that is not opened touches no file.
  return makeVelmarVideoFileReader(path) != nullptr;
}

void checkExtension(const std::string& path) {
  if (!isRecordingName(path)) {
    throw Failure(path, "its name has to end in .img or .rtv",
                  VELMAR_ERROR_CODE_NOT_VELMAR_VIDEO_FORMAT_E);
  }
}

void checkSameContainer(const std::string& input, const std::string& output) {
  if (isRtvPath(input) == isRtvPath(output)) return;
  throw Failure(output, "it is of another container than " + input + "; convert can change that",
                VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

Recording::Recording(const std::string& path, Accept accept) : path_(path) {
  if (accept == Accept::Running && openRunning()) return;
  const FileLock lock(path, FileLock::Kind::Read);
  openFinished();
}

Recording::Recording(const std::string& path, const FileLock& /*lock*/) : path_(path) {
  openFinished();
}

void Recording::openFinished() {
  if (const auto failure = pathFailure(path_)) throw Failure(*failure);
  checkExtension(path_);
  isRtv_ = isRtvPath(path_);
  undoState_ = toolkit::undoState(path_);
  // Its parts must be of the same file, also if a new one gets the name meanwhile.
  do {
    auto tables = std::make_unique<FinishedTables>(path_);
    const VELMAR_ERROR_CODE_E code = tables->open();
    if (code != VELMAR_ERROR_CODE_SUCCESS_E) {
      if (undoState_ == UndoState::Pending)
        throw Failure(path_, undoWords(path_, undoState_), code);
      throw openFailure(path_, code);
    }
    finished_ = tables.get();
    tables_ = std::move(tables);
  } while (!file().isAt(file().path()));
}

// False if it is finished, perhaps meanwhile.
bool Recording::openRunning() {
  const auto isThere = [](const std::string& file) { return ::access(file.c_str(), F_OK) == 0; };
  const std::string temporary = temporaryPath(path_);
  const bool isMeant = path_ == temporary || !isThere(path_);
  if (!isMeant || !isRecordingName(finalPath(path_)) || !isThere(temporary)) return false;
  try {
    auto tables = openRunningTables(temporary);
    running_ = tables.get();
    tables_ = std::move(tables);
  } catch (const Failure&) {
    if (isThere(temporary)) throw;
    return false;
  }
  isRtv_ = isRtvPath(finalPath(path_));
  return true;
}

bool Recording::hasPlainDeviceId() const {
  const std::string text = deviceId();
  const std::string bytes = bytesOfHex(text);
  return text == detail::bytesToHex(reinterpret_cast<const unsigned char*>(bytes.data()),
                                    static_cast<unsigned int>(bytes.size()));
}

FrameTag Recording::tag(unsigned int index) const {
  FrameTag tag = motion(index);
  if (isRtv_) tag.can = tables_->can(index);
  return tag;
}

FrameTag Recording::motion(unsigned int index) const {
  return isRtv_ ? FrameTag::of(tables_->tag(index)) : FrameTag();
}

void noteState(const Recording& recording, Job& job) {
  const std::string words = undoWords(recording.path(), recording.undoState());
  if (!words.empty()) job.note(recording.path(), words);
  if (recording.running() != nullptr) job.note(recording.path(), runningWords(recording));
}

Recording openRecording(const std::string& path, Job& job, Accept accept) {
  Recording recording(path, accept);
  noteState(recording, job);
  return recording;
}

std::string runningWords(const Recording& recording) {
  const auto holder = lockHolder(recording.file().path());
  const std::string words = holder ? *holder + " is recording it"
                                   : "its recorder has ended without finishing it; the command "
                                     "recover makes a recording of it";
  if (!recording.isRtv()) return words;
  return words + "; times count from 1970, since its start is not known yet";
}

}  // namespace velmar::toolkit
