#include "toolkit/creating/RecordStream.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "toolkit/TestJob.h"
#include "toolkit/recording/Recording.h"

using namespace velmar::toolkit;

namespace {

// A socket cannot be read to its end if its peer goes with something unread, here inside a frame.
TEST(RecordStream, NamesWhatIsLeftOutAndWhyItEnds) {
  const TempFolder folder;
  int ends[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  const std::string other = uniformJpeg(8, 8, Coding::Optimized);
  const std::string stream =
      numberedJpeg(0) + other + other + numberedJpeg(3) + numberedJpeg(4).substr(0, 200);
  ASSERT_EQ(::write(ends[1], stream.data(), stream.size()), static_cast<long>(stream.size()));
  ASSERT_EQ(::write(ends[0], "?", 1), 1);
  ::close(ends[1]);
  TestJob job;
  const RecordingDescription description;
  const NewRecording recording{folder / "a.img", description};
  recordStream({ends[0], "stream"}, FrameClock(0, 10), recording, job);
  ::close(ends[0]);
  EXPECT_EQ(job.lines, (std::vector<std::string>{
                           "stream cannot read on: Connection reset by peer",
                           "stream frames 1 to 2 are skipped: the picture is 8x8, but the first "
                           "one is 32x16"}));
  EXPECT_EQ(Recording(folder / "a.img").sensorTime(1), 300000U);
}

}  // namespace
