#include "toolkit/creating/RecordFiles.h"

#include <algorithm>
#include <memory>
#include <set>

#include "toolkit/base/Failure.h"
#include "toolkit/files/InputFile.h"
#include "toolkit/jpeg/FrameInput.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/video/VideoSource.h"

namespace velmar::toolkit {

namespace {

// Passes on each note once, however many files it is about.
class NotesOnce final : public Job {
 public:
  explicit NotesOnce(Job& job) : job_(job) {}

  std::unique_ptr<Stage> begin(const std::string& name, std::size_t total) override {
    return job_.begin(name, total);
  }
  void lose(const std::string& what, const std::string& words) override { job_.lose(what, words); }
  void loseRest(const std::string& what, std::size_t done, std::size_t wanted) override {
    job_.loseRest(what, done, wanted);
  }
  void note(const std::string& what, const std::string& words) override {
    if (said_.insert(words).second) job_.note(what, words);
  }

 private:
  Job& job_;
  std::set<std::string> said_;
};

class FileFrames final : public FrameSource {
 public:
  // Both must outlive it. Throws Failure unless the pictures are whole and have one size.
  FileFrames(const FrameFiles& files, Job& job)
      : files_(files), job_(job), size_(sizeOf(files.paths.front())) {
    for (const std::string& path : files.paths) check(path);
  }

  detail::JpegSize size() const { return size_; }
  std::size_t count() const override { return files_.paths.size(); }

  bool read(std::size_t at, NewFrame& frame) override {
    const std::string& path = files_.paths[at];
    try {
      frame.jpeg = isOtherPicture(path) ? encoded(path) : readFile(path, kMaxFrameSize + 1);
    } catch (const Failure& failure) {
      job_.lose(failure.what(), "it is left out");
      return false;
    }
    if (!isFit(path, frame.jpeg)) return false;
    frame.times = files_.times[at];
    frame.tag = files_.tags[at];
    return true;
  }

 private:
  detail::JpegSize sizeOf(const std::string& path) const {
    if (!isOtherPicture(path)) return inspector_.sizeOfFile(path);
    const detail::JpegSize size = open(path)->facts().size;
    if (size.width <= 0 || size.height <= 0) throw undecodable(path);
    return size;
  }

  static Failure undecodable(const std::string& path) {
    return {path, "it cannot be decoded as a picture", VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E};
  }

  std::unique_ptr<VideoSource> open(const std::string& path) const {
    return openVideo({path, files_.quality, {}}, notes_);
  }

  void check(const std::string& path) const {
    const detail::JpegSize size = sizeOf(path);
    if (!(size == size_)) {
      throw Failure(path, differenceText(size, size_), VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
    }
    if (!files_.allowTruncated && !isOtherPicture(path) && !isWholeJpegFile(path)) {
      throw Failure(path, "the picture has no end marker; --allow-truncated takes it as it is",
                    VELMAR_ERROR_CODE_DECOMPRESS_ERROR_E);
    }
  }

  std::string encoded(const std::string& path) const {
    const auto source = open(path);
    std::string jpeg;
    if (!source->next()) throw undecodable(path);
    source->readJpeg(jpeg);
    return jpeg;
  }

  bool isFit(const std::string& path, const std::string& jpeg) {
    const auto found = jpeg.size() > kMaxFrameSize ? std::nullopt : inspector_.size(jpeg);
    if (found && *found == size_) return true;
    job_.lose(path, found ? differenceText(*found, size_) + "; it is left out"
                          : "it is not a JPEG picture any more; it is left out");
    return false;
  }

  const FrameFiles& files_;
  Job& job_;
  mutable NotesOnce notes_{job_};
  const JpegInspector inspector_;
  const detail::JpegSize size_;
};

}  // namespace

void recordFiles(const FrameFiles& files, NewRecording recording, Job& job) {
  FileFrames frames(files, job);
  const auto earliest =
      std::min_element(files.times.begin(), files.times.end(),
                       [](auto& one, auto& other) { return one.sensor < other.sensor; });
  recording.description.setSize(frames.size());
  recording.description.startTime = files.startTime.value_or(earliest->sensor);
  checkRtvTimes(recording.path, recording.description, files.times);
  recording.framesMax = static_cast<unsigned int>(frames.count());
  recordFrames(frames, recording, job);
}

}  // namespace velmar::toolkit
