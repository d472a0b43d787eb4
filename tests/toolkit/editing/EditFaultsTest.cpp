// Editing while one call after the other fails.
#include <gtest/gtest.h>

#include <cerrno>

#include "faults/FaultInjection.h"
#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "toolkit/TestJob.h"
#include "toolkit/editing/EditPlan.h"

using namespace velmar::toolkit;

namespace {

bool edits(const std::string& path) {
  TestJob job;
  EditRequest request{.shift = 1000, .extendedInfo = "\"" + std::string(9000, 'x') + "\""};
  if (path.ends_with(".rtv")) {
    request = {.cleared = {Contents::DeviceId, Contents::Speed},
               .startPosition = StartPosition{1, 2, 3},
               .changeTags = [](auto&, auto& tags, auto&) { tags[0].x = tags[1].y = 5; }};
  }
  try {
    editRecording(path, request, job);
  } catch (const Failure&) {
    return false;
  }
  return true;
}

class EditFaults : public testing::TestWithParam<const char*> {};

TEST_P(EditFaults, LeaveTheOldOrTheNew) {
  const TempFolder folder;
  const LogCapture quiet;
  const std::string path = folder / GetParam();
  recordFrames(path, {numberedJpeg(0), numberedJpeg(1)});
  const std::string before = readFile(path);
  ASSERT_TRUE(edits(path));
  const std::string after = readFile(path);
  for (const Call call :
       {Call::Fallocate, Call::Ftruncate, Call::Mmap, Call::Open, Call::Pread, Call::Pwrite,
        Call::Stat, Call::SyncData, Call::SyncFolder, Call::Write}) {
    for (const Extent extent : {Extent::Once, Extent::FromThereOn}) {
      unsigned failed = 1;
      unsigned number = 1;
      for (; failed > 0; ++number) {
        writeFile(path, before);
        arm(call, number, extent, EIO);
        const bool done = edits(path);
        failed = disarm();
        // What is not on the disk is not done.
        if (call == Call::SyncData || call == Call::SyncFolder || call == Call::Write) {
          EXPECT_EQ(done, failed == 0);
        }
        // The undo file has gone, but perhaps not from the disk.
        const bool isKept = call == Call::SyncFolder && number == 2;
        EXPECT_TRUE(extent == Extent::FromThereOn || isKept || !exists(path + ".undo"));
        if (exists(path + ".undo")) undoEdit(path, FileLock(path, FileLock::Kind::Edit));
        ASSERT_TRUE(readFile(path) == (done || isKept ? after : before))
            << static_cast<int>(call) << ", " << number;
      }
      // Two were there to fail: of undo file and recording, of the folder with and without it.
      if (call == Call::SyncData || call == Call::SyncFolder) {
        EXPECT_EQ(number, 4U);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, EditFaults, testing::Values("a.img", "a.rtv"));

}  // namespace
