#include "GrowingFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

namespace {

constexpr unsigned int kFramesPerRun = 16;
constexpr unsigned int kFramesPerHollow = 256;

// A recording that is added to run after run.
class GrowingRecording {
 public:
  GrowingRecording(Container container, const Frames& frames, unsigned int framesBefore)
      : frames_(frames),
        path_(Workspace::path(std::string("growing.") + extension(container))),
        creater_(openCreater(path_)),
        hollow_(path_ + ".tmp", startOf(container)) {
    for (unsigned int i = 0; i < framesBefore; ++i) {
      addFrame();
      if (i % kFramesPerHollow == 0) hollow_.empty();
    }
  }
  ~GrowingRecording() {
    hollow_.empty();
    creater_->close();
    ::unlink(path_.c_str());
  }
  GrowingRecording(const GrowingRecording&) = delete;
  GrowingRecording& operator=(const GrowingRecording&) = delete;

  double addFrames() {
    hollow_.empty();
    const CpuTimer timer;
    for (unsigned int i = 0; i < kFramesPerRun; ++i) addFrame();
    return timer.seconds();
  }

  unsigned long length() const {
    struct stat status {};
    require(::stat((path_ + ".tmp").c_str(), &status) == 0, "no growing file");
    return static_cast<unsigned long>(status.st_size);
  }

 private:
  static unsigned long startOf(Container container) {
    if (container == Container::Img) return sizeof(std::uint64_t);
    return rtvHeaderSize(container) + std::size_t{kRtvFramesMax} * rtvTagSize(container);
  }

  void addFrame() {
    const unsigned int frame = count_++;
    require(creater_->addFrame(frames_[frame], timeOf(frame), timeOf(frame)), "frame not added");
  }

  const Frames frames_;
  std::string path_;
  std::shared_ptr<VelmarVideoFileCreater> creater_;
  Hollow hollow_;
  unsigned int count_ = 0;
};

// The same without a format.
class GrowingBareFile {
 public:
  GrowingBareFile(const Frames& frames, unsigned long length)
      : frames_(frames),
        path_(Workspace::path("growing.bare")),
        file_(path_, O_WRONLY | O_CREAT | O_TRUNC),
        hollow_(path_, 0) {
    const auto end = static_cast<off_t>(length);
    require(::ftruncate(file_.get(), end) == 0 && ::lseek(file_.get(), end, SEEK_SET) == end,
            "no long file");
  }
  ~GrowingBareFile() {
    hollow_.empty();
    ::unlink(path_.c_str());
  }
  GrowingBareFile(const GrowingBareFile&) = delete;
  GrowingBareFile& operator=(const GrowingBareFile&) = delete;

  double addFrames() {
    hollow_.empty();
    const CpuTimer timer;
    for (unsigned int i = 0; i < kFramesPerRun; ++i) file_.write(frames_[count_++]);
    return timer.seconds();
  }

 private:
  const Frames frames_;
  std::string path_;
  OpenFile file_;
  Hollow hollow_;
  unsigned int count_ = 0;
};

}  // namespace

void Hollow::empty() {
  // Cut off and grown again: digging the hole would write the data to the disk first.
  const OpenFile file(path_, O_WRONLY);
  struct stat status {};
  require(::fstat(file.get(), &status) == 0, path_ + ": no size");
  const auto length = static_cast<unsigned long>(status.st_size);
  if (length <= from_) return;
  require(::ftruncate(file.get(), static_cast<off_t>(from_)) == 0 &&
              ::ftruncate(file.get(), status.st_size) == 0,
          path_ + ": not emptied");
  from_ = length;
}

Row addingRow(Container container, const Frames& frames, unsigned int framesBefore,
              std::optional<double> reach) {
  const auto recording = std::make_shared<GrowingRecording>(container, frames, framesBefore);
  const auto bare = std::make_shared<GrowingBareFile>(frames, recording->length());
  return {.limitName = "write(2) at the end of a file as long",
          .limit = [=] { return bare->addFrames(); },
          .ours = [=] { return recording->addFrames(); },
          .reach = reach,
          .reachExtra = {},
          .operations = kFramesPerRun};
}
