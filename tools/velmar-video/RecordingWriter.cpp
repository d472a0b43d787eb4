#include "RecordingWriter.h"

#include <unistd.h>

#include <utility>

#include "RecordingFile.h"

RecordingWriter::RecordingWriter(std::string path, OnFailure onFailure)
    : path_(std::move(path)), onFailure_(onFailure) {
  checkExtension(path_);
  creater_ = makeVelmarVideoFileCreater(path_);
  const VELMAR_ERROR_CODE_E code = creater_->open();
  if (code != VELMAR_ERROR_CODE_SUCCESS_E) {
    throw Failure(path_, "cannot create it; is there a folder to write to?", code);
  }
}

RecordingWriter::~RecordingWriter() {
  if (finished_) return;
  // A creater that is let go finishes its file. Without the temporary file it cannot.
  if (!keepsFrames()) removeTemporaryFiles();
  creater_.reset();
  if (!keepsFrames()) removeTemporaryFiles();
}

void RecordingWriter::add(const std::string& jpeg, FrameTimes times) {
  if (!creater_->addFrame(jpeg, times.sensor, times.arrived)) {
    throw failure("cannot write frame " + std::to_string(frames_) + ", the disk may be full",
                  VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  }
  ++frames_;
}

void RecordingWriter::finish() {
  if (frames_ == 0) {
    throw failure("there was no frame to record", VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  }
  const VELMAR_ERROR_CODE_E code = creater_->close();
  if (code != VELMAR_ERROR_CODE_SUCCESS_E) {
    throw failure("cannot finish it, the disk may be full", code);
  }
  finished_ = true;
}

Failure RecordingWriter::failure(const std::string& words, VELMAR_ERROR_CODE_E code) const {
  if (!keepsFrames()) return {path_, words, code};
  return {path_, words + "; the frames recorded so far are in " + path_ + ".tmp", code};
}

void RecordingWriter::removeTemporaryFiles() const {
  ::unlink((path_ + ".tmp").c_str());
  ::unlink((path_ + ".tmp.index").c_str());
}
