#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <iostream>
#include <numeric>
#include <random>
#include <thread>

#include "program/Tool.h"
#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "toolkit/recording/Recording.h"
#include "toolkit/writing/RecordingWriter.h"

using namespace velmar::toolkit;
using namespace velmar::tool;

namespace {

using namespace std::string_literals;

constexpr unsigned long kStart = 1700000000000000;  // microseconds
constexpr unsigned short kSlots = 400;

struct Kind {
  const char* name;
  const char* extension;
  version_e version;  // of an rtv
  unsigned int headerSize;
  unsigned int tagSize;
};
const Kind kImg{"img", ".img", RTV_VER_MAX, 8, 28};
const Kind kRtv02{"rtv02", ".rtv", RTV_VER_02, 68, 29};
const Kind kRtv03{"rtv03", ".rtv", RTV_VER_03, 72, 36};
const Kind kRtv04{"rtv04", ".rtv", RTV_VER_04, 72, 145};
const Kind kKinds[] = {kImg, kRtv02, kRtv03, kRtv04};

std::string picture(unsigned int i) { return numberedJpeg(i, 40 + i % 7 * 300); }

// Its frames have their numbers in all that is kept of them.
RecordingWriter recorder(const Kind& kind, const std::string& path, unsigned int slots = kSlots) {
  RecordingDescription description;
  description.setSize({32, 16});
  description.version = kind.version;
  description.startTime = kStart;
  return {path, description, slots, RecordingWriter::OnFailure::KeepFrames};
}

void add(RecordingWriter& writer, unsigned int i) {
  FrameTag tag;
  tag.y = static_cast<int>(i);
  tag.x = -tag.y;
  tag.relativeDistance = i;
  tag.speed = static_cast<unsigned short>(i);
  writer.add(picture(i), {kStart + i * 1000, kStart + i * 1000 + 5}, tag);
}

// The numbers of the frames in the recording; -1 where a frame is not as it was recorded.
// \param withTags  those of an rtv have to have their tags as well
std::vector<int> framesIn(const std::string& path, bool withTags = true) {
  const Recording recording(path);
  std::vector<int> numbers;
  for (unsigned int i = 0; i < recording.framesCount(); ++i) {
    const std::string jpeg = storedFrame(recording.reader(), i);
    const FrameTag tag = recording.tag(i);
    const bool isImg = !recording.isRtv();
    const int number =
        isImg ? static_cast<int>((recording.sensorTime(i) - kStart) / 1000) : recording.timeFlag(i);
    const bool isRight = jpeg == picture(static_cast<unsigned>(number)) &&
                         (!withTags || isImg || (tag.x == -number && tag.speed == number)) &&
                         !tag.hasCan();
    numbers.push_back(isRight ? number : -1);
  }
  return numbers;
}

std::vector<int> numbersTo(int end) {
  std::vector<int> numbers(end);
  std::iota(numbers.begin(), numbers.end(), 0);
  return numbers;
}

using Options = std::vector<std::string>;

struct ToolRun {
  ExitStatus status;
  std::string diagnostics;
};

// Makes a recording of what is left of it.
ToolRun recover(const std::string& path, Options options = {}) {
  options.insert(options.begin(), {"recover", path + ".tmp", path});
  std::reverse(options.begin(), options.end());  // as the parser takes them
  Tool tool;
  addRecoverCommand(tool);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  ToolRun run{ExitStatus::Failed, ""};
  try {
    tool.app.parse(options);
    run.status = tool.run();
  } catch (const Failure& failure) {
    run.diagnostics = failure.what();
  }
  run.diagnostics += testing::internal::GetCapturedStderr();
  testing::internal::GetCapturedStdout();
  return run;
}

// What the recording process tells of itself.
struct Telling {
  std::atomic<unsigned int> added = 0;
  std::atomic<bool> closing = false;
};

// Kills a recorder after some frames or while it closes the file; the frames it had been told
// were added.
unsigned int recordAndKill(const Kind& kind, const std::string& path, std::mt19937& random) {
  constexpr unsigned int kFrames = kSlots;
  void* shared =
      ::mmap(nullptr, sizeof(Telling), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  auto* telling = new (shared) Telling;
  const pid_t child = ::fork();
  if (child == 0) {
    RecordingWriter writer = recorder(kind, path);
    for (unsigned int i = 0; i < kFrames; telling->added = ++i) add(writer, i);
    telling->closing = true;
    writer.finish();
    ::_exit(0);
  }
  const bool inClose = random() % 3 == 0;
  const unsigned int frames = random() % kFrames;
  while (inClose ? !telling->closing.load() : telling->added < frames) std::this_thread::yield();
  // Closing begins with short steps and ends with the wait for the disk.
  const unsigned int microseconds = random() % (1U << random() % (inClose ? 12 : 6));
  std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
  const unsigned int added = telling->added;
  ::munmap(shared, sizeof(Telling));
  return added;
}

TEST(Recover, KeepsEveryFrameThatWasAddedBeforeTheKill) {
  const unsigned int seed = numberFrom("VELMAR_SEED", std::random_device()());
  const unsigned int kills = numberFrom("VELMAR_KILLS", 60);
  std::mt19937 random(seed);
  for (const Kind& kind : kKinds) {
    std::size_t added = 0, recovered = 0, finished = 0;
    for (unsigned int k = 0; k < kills; ++k) {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", kill " + std::to_string(k) + " of " +
                   kind.name);
      const TempFolder folder;
      const std::string path = folder / "a"s + kind.extension;
      const unsigned int promised = recordAndKill(kind, path, random);
      if (exists(path)) {
        ++finished;
      } else if (exists(path + ".tmp")) {
        const std::string before = readFile(path + ".tmp");
        const ToolRun run = recover(path);
        ASSERT_TRUE(run.status != ExitStatus::Failed || promised == 0) << run.diagnostics;
        ASSERT_EQ(readFile(path + ".tmp"), before);
      }
      std::vector<int> found = exists(path) ? framesIn(path) : std::vector<int>();
      // The one that was being added may have no tag.
      if (found.size() > promised && found.back() == -1) found.pop_back();
      ASSERT_GE(found.size(), promised);
      ASSERT_EQ(found, numbersTo(static_cast<int>(found.size())));
      added += promised;
      recovered += found.size();
    }
    std::cout << kind.name << ": " << kills << " kills (" << finished << " after the end), "
              << added << " frames added, " << recovered << " recovered\n";
    EXPECT_GT(added, 0U);
    EXPECT_LT(finished, kills);
  }
}

constexpr unsigned int kLeft = 5;

// Frames as they were first written.
std::size_t placeOf(unsigned int frame, const Kind& kind, unsigned int slots = kSlots) {
  std::size_t offset = kind.version == RTV_VER_MAX ? 8 : kind.headerSize + slots * kind.tagSize;
  for (unsigned int i = 0; i < frame; ++i) offset += picture(i).size();
  return offset;
}

void leave(const Kind& kind, const std::string& path, bool isFinished, unsigned int slots = kSlots,
           unsigned int frames = kLeft) {
  ASSERT_TRUE(inChildProcess([&]() -> bool {
    RecordingWriter writer = recorder(kind, path, slots);
    for (unsigned int i = 0; i < frames; ++i) add(writer, i);
    if (isFinished) writer.finish();
    ::_exit(0);  // no destructor
  }));
  if (isFinished) std::filesystem::rename(path, path + ".tmp");
}

using Damage = std::function<void(const std::string& leftover)>;

constexpr bool kUnfinished = false;
constexpr bool kFinished = true;

// What may be wrong with what is left, and what comes of it.
struct Case {
  const Kind& kind;
  bool isFinished;  // the recorder came to write all, but not to give the file its name
  Damage damage;
  Options options = {};
  const char* words = "";
  ExitStatus status = ExitStatus::Done;
  std::vector<int> frames = numbersTo(kLeft);
};

Case lossy(const Kind& kind, bool isFinished, Damage damage, Options options, const char* words,
           std::vector<int> frames) {
  return {kind, isFinished, damage, options, words, ExitStatus::Loss, frames};
}

void nothing(const std::string& /*leftover*/) {}

void empty(const std::string& leftover) { writeFile(leftover, ""); }

Damage cut(std::size_t bytes) {
  return [bytes](auto& file) {
    std::filesystem::resize_file(file, std::filesystem::file_size(file) - bytes);
  };
}

Damage zero(std::size_t offset, std::size_t size) {
  return [=](auto& file) {
    std::string bytes = readFile(file);
    writeFile(file, bytes.replace(offset, size, size, '\0'));
  };
}

Damage zeroTag(const Kind& kind, unsigned int tag, unsigned int from, unsigned int size) {
  return zero(kind.headerSize + tag * kind.tagSize + from, size);
}

std::size_t recordAt(std::size_t number) { return 12 + number * 36; }  // in the journal

void cutJournal(const std::string& file) {
  std::filesystem::resize_file(file + ".index", recordAt(2) + 5);
}

void zeroJournalEnd(const std::string& file) { zero(recordAt(3), 2 * 36)(file + ".index"); }

// Only part of a record came to the disk.
void tearTime(const std::string& file) { zero(recordAt(2) + 4, 4)(file + ".index"); }

// As version 1.0 wrote it.
void strip(const std::string& file) {
  const std::string journal = readFile(file + ".index");
  std::string records;
  for (std::size_t at = recordAt(0); at < journal.size(); at += 36)
    records += journal.substr(at, 28);
  writeFile(file + ".index", records);
}

// What a power cut at the end may leave: some records in the journal, some at the front.
void splitRecords(const std::string& file) {
  writeFile(file + ".index", readFile(file).substr(8, 3 * 28));
  zeroTag(kImg, 0, 0, 2 * 28)(file);
}

// A frame that is said to be where a picture is, but to have no byte of it.
void emptyRecord(const std::string& file) {
  strip(file);
  zero(4 * 28 + 24, 4)(file + ".index");
}

void removeJournal(const std::string& file) { std::filesystem::remove(file + ".index"); }

// As the recorder does before it says in the journal where the frames went.
void repeatFront(const std::string& file) {
  writeFile(file, readFile(file) + readFile(file).substr(8, 200));
}

// What `frames --csv` would print.
void cutJournalAndWriteTimes(const std::string& file) {
  cutJournal(file);
  std::string table = "index,sensor_time_us,arrived_time_us\n";
  for (unsigned int i = 0; i < kLeft; ++i) {
    table += std::to_string(i) + "," + std::to_string(kStart + i * 1000) + ",5\n";
  }
  writeFile(file + ".csv", table);
}

const Options kId{"--device-id", "0aff"};
const Options kRate{"--device-id", "0a", "--fps", "1000"};
const Options kRateFromStart{"--device-id", "0a",           "--fps",
                             "1000",        "--start-time", std::to_string(kStart)};
const Options kIdAndStart{"--device-id", "0a", "--start-time", "2020-01-01T00:00:00Z"};
const Options kTable{"--device-id", "0a", "--times", "LEFTOVER.csv"};

std::vector<Case> cases() {
  return {
      {kImg, kUnfinished, nothing, kId},
      {kImg, kUnfinished, removeJournal, kRateFromStart},
      {kImg, kUnfinished, cutJournal, kRate},
      {kImg, kUnfinished, cutJournalAndWriteTimes, kTable},
      {kImg, kUnfinished, zeroJournalEnd, kRate},
      {kImg, kUnfinished, tearTime, kRate},
      {kImg, kUnfinished, strip, kId},
      {kImg, kUnfinished, repeatFront, kId},
      {kImg, kFinished, splitRecords},
      {kImg, kFinished, nothing},
      {kImg, kFinished, zero(0, 8)},
      {kImg, kFinished, cut(50), kId, "it is cut short inside"},
      {kImg, kFinished, zeroTag(kImg, 2, 0, 2 * 28), kRate},
      {kImg, kFinished, zeroTag(kImg, 2, 27, 1 + 12), kRate},
      {kImg, kFinished, zero(0, 8 + kLeft * 28), kRateFromStart},
      {kImg, kUnfinished, nothing, {}, "the device id is not known", ExitStatus::Loss},
      lossy(kImg, kUnfinished, cutJournal, kId, "frames 2 to 4 are lost: the index", {0, 1}),
      lossy(kImg, kUnfinished, cut(3), kId, "frame 4 is lost: the picture is cut", {0, 1, 2, 3}),
      lossy(kImg, kUnfinished, zero(placeOf(1, kImg), 9), kId, "frame 1 is lost: its bytes are no",
            {0, 2, 3, 4}),
      lossy(kImg, kUnfinished, zero(placeOf(3, kImg) - 9, 9), kId,
            "frame 2 is lost: the picture is cut", {0, 1, 3, 4}),
      lossy(kImg, kFinished, zero(placeOf(3, kImg), 9), {}, "frame 3 is lost: its bytes are no",
            {0, 1, 2, 4}),
      lossy(kImg, kUnfinished, emptyRecord, kId, "frame 4 is lost: the index has no", {0, 1, 2, 3}),
      lossy(kImg, kFinished, zeroTag(kImg, 2, 0, 2 * 28), {},
            "frames 2 to 3 are lost: the index has", {0, 1, 4}),
      lossy(kImg, kFinished, zero(placeOf(3, kImg) + 950, 512), {},
            "frame 3 is lost: the picture has", {0, 1, 2, 4}),
      lossy(kImg, kFinished, cut(1200), kId, "it is cut short: ", {1, 2, 3, 4}),
      {kImg, kUnfinished, removeJournal, kId, "there is no index journal", ExitStatus::Failed, {}},
      {kRtv02, kUnfinished, nothing, kIdAndStart},
      {kRtv04, kFinished, nothing},
      {kRtv03, kUnfinished, nothing, kId, "the start time is not known", ExitStatus::Loss},
      lossy(kRtv02, kFinished, cut(3), {}, "frame 4 is lost: the picture is cut", {0, 1, 2, 3}),
      {kRtv04, kFinished, zeroTag(kRtv04, 4, 12, 4)},
      lossy(kRtv04, kFinished, zero(placeOf(0, kRtv04), 9), {},
            "frame 0 is lost: the tag points to no JPEG", {1, 2, 3, 4}),
      {kRtv03, kUnfinished, empty, kId, "it holds no frame of an rtv", ExitStatus::Failed, {}},
  };
}

TEST(Recover, KeepsWhatIsWholeAndSaysWhatIsNot) {
  for (const Case& each : cases()) {
    SCOPED_TRACE(each.kind.name + (each.isFinished ? ", finished: "s : ": "s) + each.words);
    const TempFolder folder;
    const std::string path = folder / "a"s + each.kind.extension;
    leave(each.kind, path, each.isFinished);
    each.damage(path + ".tmp");
    Options options = each.options;
    std::replace(options.begin(), options.end(), "LEFTOVER.csv"s, path + ".tmp.csv");
    const ToolRun run = recover(path, options);
    EXPECT_EQ(run.status, each.status) << run.diagnostics;
    EXPECT_NE(run.diagnostics.find(each.words), std::string::npos) << run.diagnostics;
    EXPECT_EQ(exists(path) ? framesIn(path) : std::vector<int>(), each.frames);
    EXPECT_FALSE(exists(folder / "a.recovering"s + each.kind.extension + ".tmp"));
  }
}

// However large the hole is, the frames behind it are found.
TEST(Recover, FindsTheFramesBehindAHole) {
  constexpr unsigned int kFrames = 9000;
  const TempFolder folder;
  const std::string path = folder / "a.img";
  leave(kImg, path, kFinished, kSlots, kFrames);
  zero(placeOf(1000, kImg), placeOf(8500, kImg) - placeOf(1000, kImg))(path + ".tmp");
  const ToolRun run = recover(path);
  std::vector<int> left = numbersTo(kFrames);
  left.erase(left.begin() + 1000, left.begin() + 8500);
  EXPECT_EQ(framesIn(path), left);
  EXPECT_EQ(run.diagnostics, "velmar-video: " + path +
                                 ".tmp: frames 1000 to 8499 are lost: its bytes are no JPEG "
                                 "picture\n");
}

// Pages of the tag table that did not come to the disk, and frames that have lost parts of tags.
TEST(Recover, FindsTheFramesOfLostTags) {
  struct {
    const Kind& kind;
    unsigned int frames;
    std::size_t page, size;
    const char* words;
    std::vector<int> untagged;  // the first and the last
  } const cases[] = {
      {kRtv02, 300, 0, 4096, "frames 0 to 138 are recovered without the tag; the", {1, 138}},
      {kRtv02, 300, 4096, 4096, "frame 280 is recovered with a torn tag; the time", {139, 279}},
      {kRtv03, 300, 0, 8192, "frame 225 is recovered with a torn tag; the time", {1, 225}},
      {kRtv03, 300, 8192, 4096, "frames 226 to 299 are recovered without the tag", {225, 299}},
      {kRtv03, 112, 4096, 4096, "frame 111 is recovered with a torn tag; pos", {111, 111}},
      {kRtv04, 300, 4096, 4096, "frame 27 is recovered with a torn tag; pos", {28, 55}},
      {kRtv04, 300, 36864, 4096, "frame 253 is recovered with a torn tag; pos", {254, 281}},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.kind.name + ": "s + each.words);
    const TempFolder folder;
    const std::string path = folder / "a.rtv";
    leave(each.kind, path, kUnfinished, kSlots, each.frames);
    zero(each.page, each.size)(path + ".tmp");
    const ToolRun run = recover(path, kIdAndStart);
    EXPECT_EQ(run.status, ExitStatus::Loss);
    EXPECT_NE(run.diagnostics.find(each.words), std::string::npos) << run.diagnostics;
    EXPECT_EQ(framesIn(path, false), numbersTo(static_cast<int>(each.frames)));
    std::vector<int> untagged, right = framesIn(path);
    for (int i = 0; i < static_cast<int>(right.size()); ++i) {
      if (right[i] < 0) untagged.push_back(i);
    }
    ASSERT_FALSE(untagged.empty());
    EXPECT_EQ((std::vector{untagged.front(), untagged.back()}), each.untagged);
    EXPECT_EQ(std::filesystem::file_size(path), std::filesystem::file_size(path + ".tmp"));
  }
}

TEST(Recover, KeepsCutPicturesIfAsked) {
  const TempFolder folder;
  leave(kImg, folder / "a.img", false);
  cut(3)(folder / "a.img.tmp");
  recover(folder / "a.img", {"--keep-damaged", "--size", "640x480"});
  const Recording recording(folder / "a.img");
  EXPECT_EQ(recording.framesCount(), kLeft);
  EXPECT_EQ(recording.description().width, 640);
}

// Tags of 03 and 04 begin alike, and the capacities are such that either reading is possible.
TEST(Recover, TellsTheVersionFromASingleFrame) {
  const std::pair<const Kind&, unsigned int> files[] = {{kRtv03, 145}, {kRtv04, 36}, {kRtv02, 7}};
  for (const auto& [kind, slots] : files) {
    SCOPED_TRACE(kind.name);
    const TempFolder folder;
    leave(kind, folder / "a.rtv", false, slots, 1);
    recover(folder / "a.rtv");
    EXPECT_EQ(Recording(folder / "a.rtv").description().version, kind.version);
    EXPECT_EQ(std::filesystem::file_size(folder / "a.rtv"),
              placeOf(0, kind, slots) + picture(0).size());
  }
}

}  // namespace
