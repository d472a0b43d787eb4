#include "velmar_video/VelmarVideoFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>

#include "base/FileDescriptor.h"
#include "container/rtv/RtvContainerReader.h"
#include "support/TestSupport.h"
#include "velmar_video/rtv/RtvContainerModifier.h"

namespace {

TEST(Factories, ChooseByTheTextAfterTheLastDot) {
  const std::pair<const char*, bool> rows[] = {
      {"/rec/clip.img", true},  {"a.b.img", true},     {"a.rtv.img", true}, {".img", true},
      {"/rec/clip.IMG", false}, {"clip.img ", false},  {"clip", false},     {"img", false},
      {"clip.", false},         {"/rec.1/img", false}, {"", false},         {"a.RTV", false},
  };
  for (const auto& [path, known] : rows) {
    EXPECT_EQ(makeVelmarVideoFileCreater(path) != nullptr, known) << path;
    EXPECT_EQ(makeVelmarVideoFileReader(path) != nullptr, known) << path;
    EXPECT_EQ(makeVelmarVideoFileModifier(path) != nullptr, known) << path;
  }
  // A creater for "rtv" makes a file at once and is tested elsewhere.
  const auto reader = makeVelmarVideoFileReader("a.img.rtv");
  const auto modifier = makeVelmarVideoFileModifier("a.rtv");
  EXPECT_NE(dynamic_cast<RtvContainerReader*>(reader.get()), nullptr);
  EXPECT_NE(dynamic_cast<RtvContainerModifier*>(modifier.get()), nullptr);
}

// Constructed before anything that the library makes while it is used, and destroyed after it.
std::shared_ptr<VelmarVideoFileCreater> leftOpen;
std::string finished;

void readWhileExiting() {
  const auto reader = makeVelmarVideoFileReader(finished);
  unsigned int count = 0;
  if (reader->open() != kSuccess || reader->getFramesCount(count) != kSuccess || count != 1 ||
      reader->getMetaInfo().empty()) {
    std::_Exit(7);
  }
}

TEST(Files, AreFinishedAndReadWhileTheProgramExits) {
  const TempFolder folder;
  for (const std::string name : {"a.img", "a.rtv"}) {
    finished = folder / ("finished." + name);
    const auto start = [&](const std::string& path) {
      leftOpen = makeVelmarVideoFileCreater(path);
      return leftOpen->open() == kSuccess && leftOpen->addFrame(std::string(100, 'x'), 1, 2);
    };
    ASSERT_TRUE(start(finished));
    leftOpen.reset();
    EXPECT_EXIT(
        {
          std::atexit(readWhileExiting);
          readWhileExiting();
          std::exit(start(folder / name) ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EQ(got(*openedReader(folder / name), &VelmarVideoFileReader::getFramesCount), 1U);
  }
}

// What the recorder has open it needs not open again.
TEST(Files, AreFinishedByARecorderThatMayNotReadThem) {
  const TempFolder folder;
  std::filesystem::permissions(folder / "", std::filesystem::perms::all);
  for (const std::string name : {"a.img", "a.rtv"}) {
    EXPECT_TRUE(inChildProcess([&] {
      constexpr uid_t kNobody = 65534;
      if (::geteuid() == 0 && ::seteuid(kNobody) != 0) return false;
      ::umask(0400);
      const auto creater = makeVelmarVideoFileCreater(folder / name);
      return creater->open() == kSuccess && creater->addFrame(std::string(100, 'x'), 1, 2) &&
             creater->close() == kSuccess;
    })) << name;
    EXPECT_TRUE(exists(folder / name)) << name;
  }
}

TEST(Files, SayWhichStepOfFinishingFailed) {
  const TempFolder folder;
  for (const std::string name : {"a.img", "a.rtv"}) {
    const std::string path = folder / name;
    std::filesystem::create_directory(path);
    const LogCapture log;
    const auto creater = makeVelmarVideoFileCreater(path);
    EXPECT_EQ(creater->open(), kSuccess);
    creater->addFrame(std::string(100, 'x'), 1, 2);
    EXPECT_EQ(creater->close(), VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
    const std::string line =
        name == "a.img"
            ? "3 ImgContainerCreater_TAG: rename " + path + ".tmp to " + path + " error: "
            : "3 RecordFileCreater: Error: rename fail " + path + ".tmp, ";
    EXPECT_EQ(log.errors(), std::vector{line + "Is a directory"});
  }
}

class Creaters : public testing::TestWithParam<const char*> {
 protected:
  std::shared_ptr<VelmarVideoFileCreater> start(char frame) const {
    auto creater = makeVelmarVideoFileCreater(path_);
    creater->open();
    creater->addFrame(std::string(100, frame), 1, 2);
    return creater;
  }

  const TempFolder folder_;
  const std::string path_ = folder_ / (std::string("a.") + GetParam());
  const LogCapture quiet_;
};

TEST_P(Creaters, GiveTheNameToNoFileButTheirOwn) {
  const auto first = start('1');
  std::filesystem::remove(path_ + ".tmp");
  const auto second = start('2');
  const bool hasJournal = exists(path_ + ".tmp.index");
  EXPECT_NE(first->close(), kSuccess);
  EXPECT_FALSE(exists(path_));
  EXPECT_EQ(exists(path_ + ".tmp.index"), hasJournal);
  EXPECT_EQ(second->close(), kSuccess);
  EXPECT_EQ(storedFrame(*openedReader(path_), 0), std::string(100, '2'));
}

TEST_P(Creaters, UnlockAFileThatAChildHasOpen) {
  auto creater = start('1');
  const pid_t child = ::fork();
  if (child == 0) {
    ::pause();
    std::_Exit(0);
  }
  EXPECT_EQ(creater->close(), kSuccess);
  const velmar::detail::FileDescriptor file(path_, O_RDONLY);
  EXPECT_EQ(::flock(file.get(), LOCK_EX | LOCK_NB), 0);
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
}

INSTANTIATE_TEST_SUITE_P(Containers, Creaters, testing::Values("img", "rtv"),
                         [](const auto& each) { return std::string(each.param); });

TEST(Modifiers, HoldNoDescriptorAfterAFailedOpen) {
  const TempFolder folder;
  const LogCapture quiet;
  const auto descriptors = [] {
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return std::distance(begin(open), end(open));
  };
  for (const std::string name : {"a.img", "a.rtv"}) {
    writeFile(folder / name, std::string(300, 'x'));
    const auto modifier = makeVelmarVideoFileModifier(folder / name);
    const auto before = descriptors();
    EXPECT_NE(modifier->open(), kSuccess);
    EXPECT_EQ(descriptors(), before) << name;
  }
}

TEST(FileName, IsThePartAfterTheLastSlash) {
  EXPECT_EQ(RtvContainerModifier("/x/y/clip.rtv").getFileName(), "clip.rtv");
  EXPECT_EQ(makeVelmarVideoFileReader("/x/y/clip.img")->getFileName(), "clip.img");
  EXPECT_EQ(makeVelmarVideoFileReader("clip.img")->getFileName(), "clip.img");
}

}  // namespace
