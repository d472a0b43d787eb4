// Disks that cannot read, and files that become shorter while they are read.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "toolkit/TestJob.h"
#include "toolkit/base/Failure.h"
#include "toolkit/copying/CopyFrames.h"
#include "toolkit/pictures/Extraction.h"
#include "toolkit/rescue/RecoverFrames.h"
#include "toolkit/rescue/Verification.h"

using namespace velmar::toolkit;

namespace {

using Lines = std::vector<std::string>;

// Of the file that is read, bytes.
FilePlace damage{0, 0};

constexpr unsigned int kFrames = 6;
constexpr char kProblem[] = "cannot read it: Input/output error";
constexpr char kCode[] = " (VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E)";

std::string picture(unsigned int i) { return numberedJpeg(i, 9000); }

// A recording of which the disk cannot read something in the middle of frame 2.
class UnreadableBytes : public testing::TestWithParam<const char*> {
 protected:
  UnreadableBytes() : path_(folder_ / (std::string("a.") + GetParam())) {
    Lines frames;
    for (unsigned int i = 0; i < kFrames; ++i) frames.push_back(picture(i));
    recordFrames(path_, frames);
    frames.erase(frames.begin() + 2);
    others_ = frames;
    damage = {Recording(path_).places()[2].offset + 4500, 10};
  }
  ~UnreadableBytes() override { damage = {0, 0}; }

  std::string line(const std::string& words, const std::string& code = "") const {
    return std::string("a.") + GetParam() + " frame 2 is " + words + kProblem + code;
  }

  const TempFolder folder_;
  const std::string path_;
  TestJob job_;
  Lines others_;  // the frames besides it
};

TEST_P(UnreadableBytes, FrameIsSkippedByExtraction) {
  for (const PictureForm::Kind kind : {PictureForm::Kind::Stored, PictureForm::Kind::Pnm}) {
    TestJob job;
    Extraction extraction(path_, allFrames, {{}, kind}, {folder_ / "out", false, false});
    extraction.run(2, job);
    for (unsigned int i = 0; i < kFrames; ++i) EXPECT_EQ(exists(extraction.outputs()[i]), i != 2);
    EXPECT_EQ(job.lines, Lines{line("skipped: ", kCode)});
  }
}

TEST_P(UnreadableBytes, FrameIsLeftOutOfACopy) {
  const std::string copy = folder_ / (std::string("copy.") + GetParam());
  const Recording recording(path_);
  copyFrames({{&recording, allFrames(recording)}}, copy, recording.description(), job_);
  EXPECT_EQ(job_.lines, Lines{line("left out: ")});
  EXPECT_TRUE(framesOf(copy) == others_);
}

TEST_P(UnreadableBytes, FrameIsAFinding) {
  Lines findings;
  EXPECT_EQ(verify(path_, true, [&](auto& found) { findings.push_back(found.text); }), kFrames);
  EXPECT_EQ(findings, Lines{std::string(kProblem) + kCode});
}

TEST_P(UnreadableBytes, FrameIsLostToRecovery) {
  for (const bool keepDamaged : {false, true}) {
    TestJob job;
    const FileBytes file(path_, Unreadable::AsZeros);
    const Leftover leftover =
        isRtvPath(path_) ? findRtvLeftover(file, {}) : findImgLeftover(file, {});
    const std::string output = folder_ / (std::string("new.") + GetParam());
    EXPECT_EQ(recoverFrames({file, leftover, keepDamaged}, output, leftover.description, job),
              keepDamaged ? 6U : 5U);
    EXPECT_EQ(job.lines,
              Lines{keepDamaged ? line("kept with zeros in it: ")
                                : line("lost: ", " (--keep-damaged keeps what can be read)")});
    Lines found = framesOf(output);
    if (keepDamaged) found.erase(found.begin() + 2);
    EXPECT_TRUE(found == others_);
  }
}

TEST_P(UnreadableBytes, IndexIsAFailure) {
  damage = {100, 1};
  EXPECT_THROW(Recording{path_}, Failure);
}

TEST_P(UnreadableBytes, EndOfAFileThatBecomesShorterIsNamed) {
  damage = {0, 0};
  PictureSource source(path_, {{}, PictureForm::Kind::Pnm});
  const Recording& recording = source.recording();
  std::filesystem::resize_file(path_, recording.places()[3].offset + 100);
  std::string bytes;
  EXPECT_FALSE(source.read(2, bytes));
  EXPECT_EQ(source.read(3, bytes).words, "it has become shorter while it was read");
  EXPECT_EQ(readStoredFrame(recording, 4, bytes).words, "it has become shorter while it was read");
}

INSTANTIATE_TEST_SUITE_P(, UnreadableBytes, testing::Values("img", "rtv"));

// The tags of version 04 are looked at in the map again.
TEST(UnreadableTags, AreAFailure) {
  const TempFolder folder;
  recordFrames(folder / "a.rtv", {picture(0)}, {32, 16}, RTV_VER_04);
  const Recording recording(folder / "a.rtv");
  EXPECT_FALSE(recording.tag(0).hasCan());
  std::filesystem::resize_file(folder / "a.rtv", 0);
  EXPECT_THROW(recording.tag(0), Failure);
}

}  // namespace

// In place of the system's.
extern "C" ssize_t pread(int fd, void* data, std::size_t size, off_t offset) {
  const auto start = static_cast<std::uint64_t>(offset);
  if (start < damage.end() && damage.offset < start + size) {
    errno = EIO;
    return -1;
  }
  static const auto next =
      reinterpret_cast<ssize_t (*)(int, void*, std::size_t, off_t)>(::dlsym(RTLD_NEXT, "pread"));
  return next(fd, data, size, offset);
}
