#ifndef VELMAR_TESTS_TEST_JOB_H
#define VELMAR_TESTS_TEST_JOB_H

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "support/TestSupport.h"
#include "toolkit/base/Job.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/writing/RecordingWriter.h"

/// Keeps what it is told, and wants to stop once so many frames are done.
class TestJob : public velmar::toolkit::Job {
 public:
  explicit TestJob(std::size_t stopAfter = SIZE_MAX) : stopAfter_(stopAfter) {}

  std::unique_ptr<Stage> begin(const std::string&, std::size_t) override {
    struct Counter : Stage {
      explicit Counter(std::size_t most) : left(most) {}
      void advance(std::size_t) override { --left; }
      bool stopRequested() override { return left == 0; }
      bool waitReadable(int) override { return left > 0; }
      std::size_t left;
    };
    return std::make_unique<Counter>(stopAfter_);
  }
  void lose(const std::string& what, const std::string& words) override {
    lines.push_back(what.substr(what.rfind('/') + 1) + " " + words);
  }
  void loseRest(const std::string& what, std::size_t done, std::size_t wanted) override {
    lose(what, std::to_string(done) + " of " + std::to_string(wanted));
  }
  void note(const std::string& what, const std::string& words) override { lose(what, words); }

  std::vector<std::string> lines;  ///< of files without their folders

 private:
  std::size_t stopAfter_;
};

/// Records the frames, one a microsecond.
/// \param size   of the description
/// \param slots  of an rtv; 0: as many as there are frames
inline void recordFrames(const std::string& path, const std::vector<std::string>& frames,
                         velmar::detail::JpegSize size = {32, 16}, version_e version = RTV_VER_03,
                         std::size_t slots = 0) {
  velmar::toolkit::RecordingDescription description;
  description.setSize(size);
  description.version = version;
  description.startTime = 1700000000000000;
  velmar::toolkit::RecordingWriter writer(
      path, description, static_cast<unsigned int>(std::max(slots, frames.size())),
      velmar::toolkit::RecordingWriter::OnFailure::RemoveFrames);
  for (const std::string& frame : frames) {
    const std::uint64_t time = description.startTime + 33000 * writer.frames();
    writer.add(frame, {time, time});
  }
  writer.finish();
}

/// The frames of a recording as they are stored.
inline std::vector<std::string> framesOf(const std::string& path) {
  const velmar::toolkit::Recording recording(path);
  std::vector<std::string> frames;
  for (unsigned int i = 0; i < recording.framesCount(); ++i) {
    frames.push_back(storedFrame(recording.reader(), i));
  }
  return frames;
}

#endif
