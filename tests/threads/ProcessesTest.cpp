// Recorders, modifiers and readers of one path at once, each in a process of its own.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <vector>

#include "container/img/ImgFiles.h"
#include "support/TestSupport.h"
#include "velmar_video/velmar_video.h"

namespace {

constexpr int kRounds = 20;
constexpr unsigned char kId = 0x11;  // each byte of the modifier's first id, twice that of the next

// Of all processes.
struct Shared {
  std::atomic<int> arrived = 0;
  std::atomic<bool> isOver = false;

  // Waits until so many have come to where they met `meetings` times.
  void meet(int processes, int meetings = 1) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    for (++arrived; arrived < processes * meetings; std::this_thread::yield()) {
      if (std::chrono::steady_clock::now() > end) ::_exit(100);
    }
  }
};

class Processes : public testing::TestWithParam<const char*> {
 protected:
  Processes()
      : shared_(new (::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Shared) {}
  ~Processes() override { ::munmap(shared_, sizeof(Shared)); }

  // What they exit with; -1 is a crash.
  static std::vector<int> run(const std::vector<std::function<int()>>& works) {
    std::vector<pid_t> children;
    for (const auto& work : works) {
      children.push_back(::fork());
      if (children.back() == 0) ::_exit(work());
    }
    std::vector<int> results;
    for (const pid_t child : children) {
      int status = -1;
      ::waitpid(child, &status, 0);
      results.push_back(WIFEXITED(status) ? WEXITSTATUS(status) : -1);
    }
    return results;
  }

  // Beside another one that has been started at the same time: 0 if it has its recording.
  int recordBeside(const std::vector<TestFrame>& frames) const {
    const LogCapture quiet;
    shared_->meet(2);
    const auto creater = makeVelmarVideoFileCreater(path_);
    const auto opened = creater->open();
    shared_->meet(2, 2);
    for (const TestFrame& frame : frames) {
      creater->addFrame(frame.bytes, frame.sensorTime, frame.arrivedTime);
    }
    shared_->meet(2, 3);
    const bool isDone = creater->close() == kSuccess;
    // Only an rtv's open() cannot say.
    return isDone ? 0 : isRtv_ || opened != kSuccess ? 1 : 2;
  }

  int recordAgainAndAgain() const {
    bool isRight = true;
    for (int i = 0; i < kRounds; ++i) isRight &= record(path_, frames_[i % 2]) == kSuccess;
    shared_->isOver = true;
    return isRight ? 0 : 1;
  }

  // Metadata only grow: an img that became shorter would end those who read it.
  int edit(bool untilOver) const {
    const LogCapture quiet;
    bool isRight = true;
    for (int i = 0; untilOver ? !shared_->isOver : i < 10 * kRounds; ++i) {
      const auto modifier = makeVelmarVideoFileModifier(path_);
      unsigned long time = isRtv_ ? 0x11111111UL * 1000 : 0x1111111111111111;
      const std::vector<unsigned char> id(kRtvDeviceIdSize, kId << i % 2);
      isRight &= modifier->open() == kSuccess && modifier->modifyTimestamp(0, time) == kSuccess &&
                 modifier->modifyCameraID(id.data(), kRtvDeviceIdSize) == kSuccess &&
                 modifier->modifyExtendedInfo('"' + std::string(i, 'x') + '"') == kSuccess;
      const auto code = modifier->close();
      isRight &= code == kSuccess || untilOver;  // another file may have got the name
    }
    shared_->isOver = true;
    return isRight ? 0 : 1;
  }

  // Every byte, and digit of the id, is the old or the new one.
  void read(VelmarVideoFileReader& reader) const {
    unsigned char id[kRtvDeviceIdSize] = {};
    reader.getDeviceId(id, sizeof id);
    EXPECT_TRUE(std::all_of(std::begin(id), std::end(id), [](unsigned char byte) {
      return byte >> 4 <= 2 && byte % 16 <= 2;  // an img has it as hexadecimal digits
    }));
    const bool isFirst = got(reader, &VelmarVideoFileReader::getFramesCount) == frames_[0].size();
    const auto& frames = frames_[isFirst ? 0 : 1];
    for (unsigned int i = 0; i < frames.size(); ++i) {
      EXPECT_TRUE(storedFrame(reader, i) == frames[i].bytes) << i;
      if (i == 0) continue;
      EXPECT_EQ(got(reader, &VelmarVideoFileReader::getSensorTime, i), frames[i].sensorTime) << i;
    }
  }

  // Metadata that shift while an img is opened may give any number of frames.
  bool isOneOfBoth(VelmarVideoFileReader& reader) const {
    const unsigned int count = got(reader, &VelmarVideoFileReader::getFramesCount);
    return count == frames_[0].size() || count == frames_[1].size();
  }

  // The reader of before stays open, perhaps over a recording that has been replaced.
  int readUntilOver(bool isEdited) const {
    const LogCapture quiet;
    std::shared_ptr<VelmarVideoFileReader> last;
    while (!shared_->isOver) {
      auto reader = makeVelmarVideoFileReader(path_);
      const bool isOpen = reader->open() == kSuccess && isOneOfBoth(*reader);
      EXPECT_TRUE(isOpen || isEdited);
      if (isOpen) read(*reader);
      if (last) read(*last);
      if (isOpen) last = std::move(reader);
    }
    return HasFailure() ? 1 : 0;
  }

  const bool isRtv_ = std::string(GetParam()) == "rtv";
  const TempFolder folder_;
  const std::string path_ = folder_ / (std::string("a.") + GetParam());
  const std::vector<TestFrame> frames_[2] = {lettered(std::vector<std::size_t>(30, 5000)),
                                             lettered(std::vector<std::size_t>(40, 3000))};
  Shared* const shared_;
};

INSTANTIATE_TEST_SUITE_P(Containers, Processes, testing::Values("img", "rtv"),
                         [](const auto& test) { return std::string(test.param); });

TEST_P(Processes, OneOfTwoRecordersHasThePath) {
  for (int i = 0; i < kRounds; ++i) {
    shared_->arrived = 0;
    const auto results =
        run({[&] { return recordBeside(frames_[0]); }, [&] { return recordBeside(frames_[1]); }});
    ASSERT_EQ(std::min(results[0], results[1]), 0) << "nobody";
    ASSERT_EQ(std::max(results[0], results[1]), 1) << "both, or the other one too late";
    const auto reader = openedReader(path_);
    EXPECT_EQ(got(*reader, &VelmarVideoFileReader::getFramesCount),
              frames_[results[0] == 0 ? 0 : 1].size());
    read(*reader);
    EXPECT_FALSE(exists(path_ + ".tmp") || exists(path_ + ".tmp.index"));
  }
}

TEST_P(Processes, ReadersSeeWholeFramesBesideOthers) {
  const auto recording = [&] { return recordAgainAndAgain(); };
  ASSERT_EQ(record(path_, frames_[1]), kSuccess);
  const std::pair<bool, std::vector<std::function<int()>>> rows[] = {
      {false, {recording}},
      {true, {[&] { return edit(false); }}},
      {true, {recording, [&] { return edit(true); }}}};
  for (auto [isEdited, works] : rows) {
    shared_->isOver = false;
    works.push_back([&, isEdited = isEdited] { return readUntilOver(isEdited); });
    EXPECT_EQ(run(works), std::vector<int>(works.size()));
    read(*openedReader(path_));
  }
}

}  // namespace
