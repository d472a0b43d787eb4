#include "toolkit/recording/Recording.h"
#include "toolkit/files/RecorderFiles.h"

#include <unistd.h>

#include <chrono>
#include <thread>

#include "base/HexText.h"
#include "toolkit/base/Failure.h"
#include "toolkit/files/LockHolder.h"
#include "toolkit/recording/OpenFailure.h"
#include "toolkit/recording/RunningTables.h"
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
  if (const auto failure = pathFailure(path)) throw Failure(*failure);
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
  if (!isMeant || !isRecordingName(finalPath(path_))) return false;
  // A recorder makes the journal of an img a moment after the file, and deletes it a moment before
  // that has its final name.
  constexpr int kTries = 10;
  for (int tries = 1; isThere(temporary); ++tries) {
    try {
      tables_ = openRunningTables(temporary);
      isRtv_ = isRtvPath(finalPath(path_));
      return file().isAt(temporary);
    } catch (const Failure&) {
      if (isThere(temporary) && (tries == kTries || !lockHolder(temporary))) throw;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
  return false;
}

const FinishedTables& Recording::finished() const {
  if (finished_ != nullptr) return *finished_;
  throw Failure(path_, "it is not finished", VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
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

Recorder recorderOf(const Recording& recording) {
  if (recording.isFinished()) return {Recorder::State::Done, ""};
  // Asked in this order: a recorder gives up its lock when the file has its final name.
  const std::string temporary = temporaryPath(recording.path());
  const auto holder = lockHolder(temporary);
  if (!recording.file().isAt(temporary)) return {Recorder::State::Done, ""};
  if (recording.isReplaced()) {
    return {Recorder::State::Ended, "another recording has begun in its place"};
  }
  const Recorder::State state = holder ? Recorder::State::AtWork : Recorder::State::Ended;
  return {state, recorderWords(holder)};
}

void noteState(const Recording& recording, Job& job) {
  std::string words = undoWords(recording.path(), recording.undoState());
  if (!words.empty()) job.note(recording.path(), words);
  words = recorderOf(recording).words;
  if (words.empty()) return;
  if (recording.isRtv()) words += "; its start is not known, so that its times count from 1970";
  job.note(recording.path(), words);
}

Recording openRecording(const std::string& path, Job& job, Accept accept) {
  Recording recording(path, accept);
  noteState(recording, job);
  return recording;
}

}  // namespace velmar::toolkit
