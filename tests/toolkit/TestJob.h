#ifndef VELMAR_TESTS_TEST_JOB_H
#define VELMAR_TESTS_TEST_JOB_H

#include <cstdint>
#include <string>
#include <vector>

#include "toolkit/base/Job.h"
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

/// Records the frames, of 32 x 16 pixels by their description, one a microsecond.
inline void recordFrames(const std::string& path, const std::vector<std::string>& frames,
                         velmar::detail::JpegSize size = {32, 16}) {
  velmar::toolkit::RecordingDescription description;
  description.setSize(size);
  velmar::toolkit::RecordingWriter writer(
      path, description, static_cast<unsigned int>(frames.size()),
      velmar::toolkit::RecordingWriter::OnFailure::RemoveFrames);
  for (const std::string& frame : frames) writer.add(frame, {writer.frames(), writer.frames()});
  writer.finish();
}

#endif
