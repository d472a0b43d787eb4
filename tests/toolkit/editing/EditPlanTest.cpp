#include "toolkit/editing/EditPlan.h"

#include <chrono>
#include <cstring>
#include <iterator>
#include <random>
#include <sstream>
#include <thread>

#include "support/Pictures.h"
#include "support/TestSupport.h"
#include "toolkit/TestJob.h"
#include "toolkit/text/JsonText.h"

using namespace velmar::toolkit;

namespace {

using namespace std::string_literals;

constexpr unsigned int kFrames = 5;

// Large enough for frames that are in neither sample.
void record(const std::string& path, unsigned int firstPicture = 0) {
  std::vector<std::string> frames;
  for (unsigned int i = 0; i < kFrames; ++i) {
    frames.push_back(numberedJpeg(firstPicture + i, 40000));
  }
  recordFrames(path, frames);
}

void edit(const std::string& path, const EditRequest& request) {
  TestJob job;
  editRecording(path, request, job);
}

UndoState undo(const std::string& path) {
  return undoEdit(path, FileLock(path, FileLock::Kind::Edit));
}

// An undo file of a file of that size, with no head, no tail and a right checksum.
std::string undoOf(unsigned long size, const std::string& parts) {
  std::string text = "velmar.undo\1" + bigEndianBytes(size, 8);
  for (const unsigned long number : {0UL, 0UL, 0UL}) text += bigEndianBytes(number, 8);
  text += parts;
  unsigned long sum = 0xCBF29CE484222325;
  for (const char byte : text) sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
  return text + bigEndianBytes(sum, 8);
}

std::string part(unsigned long offset, unsigned long length) {
  return bigEndianBytes(offset, 8) + bigEndianBytes(length, 8);
}

// What stands in the file and its undo file before, in between and after.
struct Edited {
  Edited(const std::string& path, const EditRequest& request) : before(readFile(path)) {
    keepForUndo(path, EditPlan(Recording(path), request).places());
    undo = readFile(path + ".undo");
    dropUndo(path);
    edit(path, request);
    after = readFile(path);
  }
  // Some of the bytes are written, and the file may have got its new size.
  std::string interrupted(std::mt19937& random) const {
    std::string file = random() % 2 == 0 ? before : after;
    for (std::size_t at = 0; at < std::min(file.size(), after.size()); at += 8) {
      const std::string& from = random() % 2 == 0 || at >= before.size() ? after : before;
      for (std::size_t i = at; i < std::min({at + 8, file.size(), from.size()}); ++i) {
        file[i] = from[i];
      }
    }
    return file;
  }

  std::string before, undo, after;
};

TEST(EditPlan, IsUndoneWhereverItWasInterrupted) {
  const std::pair<const char*, EditRequest> edits[] = {
      {"img", {.deviceId = "another one"}},
      {"img", {.sensorTimes = {{1, 7}, {4, 9}}}},
      {"img", {.cameraParams = "[" + std::string(9000, ' ') + "1]"}},
      {"img", {.shift = 3600, .extendedInfo = "\"" + std::string(9000, 'x') + "\""}},
      {"rtv", {.deviceId = "another one"}},
      {"rtv",
       {.startTime = 1700000000000000,
        .sensorTimes = {{0, 1700000000001000}, {3, 1700000000009000}}}},
      {"rtv",
       {.changeTags =
            [](auto&, auto& tags, auto& description) {
              description.lng = 77;
              tags[1].x = tags[4].y = -9;
            }}},
      {"rtv",
       {.shift = 1000000,
        .startPosition = StartPosition{5, 6, 7},
        .changeTags = [](auto&, auto& tags, auto&) { tags[2].speed = 9; }}},
  };
  const TempFolder folder;
  std::mt19937 random(1);
  for (const auto& [extension, request] : edits) {
    const std::string path = folder / "a."s + extension;
    record(path);
    // Growing, then shrinking.
    for (const EditRequest& each : {request, EditRequest{.deviceId = "b", .undistorted = true}}) {
      const Edited edited(path, each);
      EXPECT_FALSE(exists(path + ".undo"));
      EXPECT_NE(edited.before, edited.after);
      for (int i = 0; i < 15; ++i) {
        writeFile(path, i == 0 ? edited.after : edited.interrupted(random));
        writeFile(path + ".undo", edited.undo);
        EXPECT_EQ(undo(path), UndoState::Pending);
        ASSERT_TRUE(readFile(path) == edited.before);
        ASSERT_FALSE(exists(path + ".undo"));
      }
      writeFile(path, edited.interrupted(random));
      writeFile(path + ".undo", edited.undo);
      edit(path, each);
      EXPECT_TRUE(readFile(path) == edited.after) << "an edit behind it";
    }
  }
}

TEST(EditPlan, AnUndoFileThatIsNotWholeSaysThatNothingWasWritten) {
  const TempFolder folder;
  const std::string path = folder / "a.img";
  record(path);
  const Edited edited(path, {.deviceId = "x"});
  writeFile(path, edited.before);
  for (std::size_t size = 0; size < edited.undo.size(); ++size) {
    std::string half = edited.undo.substr(0, size);
    if (size % 2 == 0) half.resize(edited.undo.size());
    writeFile(path + ".undo", half);
    ASSERT_EQ(undo(path), UndoState::Unused) << size;
    ASSERT_FALSE(exists(path + ".undo"));
  }
  EXPECT_TRUE(readFile(path) == edited.before);
}

TEST(EditPlan, NothingOfAnotherFileIsPutBack) {
  const TempFolder folder;
  const std::string path = folder / "a.img";
  record(path, 10);
  const std::string other = readFile(path);
  record(path);
  const Edited edited(path, {.deviceId = "x"});
  std::string changed = edited.after;
  changed[8 + 28 + 7] ^= 1;  // the time of frame 1, by a later edit
  const std::string cut = edited.after.substr(0, 5000);
  struct {
    const char* what;
    const std::string& file;
    std::string undo;
  } const cases[] = {
      {"another recording", other, edited.undo},
      {"the same with another time", changed, edited.undo},
      {"cut short", cut, edited.undo},
      {"a file that only has the name", edited.before, "my notes on undoing things"},
      {"one that says to be huge", edited.before,
       undoOf(1UL << 60, part((1UL << 60) - 1, 1) + "x")},
      {"one with a part outside", edited.before, undoOf(8, part(8, 1) + "x")},
      {"one with half a part", edited.before, undoOf(8, "half")},
      {"a later version", edited.before, std::string(edited.undo).replace(11, 1, "\2")},
  };
  for (const auto& one : cases) {
    writeFile(path, one.file);
    writeFile(path + ".undo", one.undo);
    EXPECT_THROW(undo(path), Failure) << one.what;
    EXPECT_THROW(edit(path, {.shift = 1}), Failure) << one.what;
    EXPECT_TRUE(readFile(path) == one.file && readFile(path + ".undo") == one.undo) << one.what;
  }
  writeFile(path, edited.before);
  std::filesystem::remove(path + ".undo");
  std::filesystem::create_symlink(folder / "target", path + ".undo");
  EXPECT_THROW(edit(path, {.shift = 1}), Failure);
  EXPECT_TRUE(readFile(path) == edited.before && !exists(folder / "target"));
}

TEST(EditPlan, EditsAloneAndReadersWait) {
  const TempFolder folder;
  const std::string path = folder / "a.img";
  record(path);
  std::filesystem::create_symlink(path, folder / "link.img");
  auto lock = std::make_unique<FileLock>(path, FileLock::Kind::Edit);
  EXPECT_THROW(edit(folder / "link.img", {.deviceId = "x"}), Failure);
  keepForUndo(folder / "link.img", EditPlan(Recording(path, *lock), {}).places());
  std::jthread finishing([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    dropUndo(path);
    lock.reset();
  });
  EXPECT_EQ(Recording(folder / "link.img").undoState(), UndoState::None);
}

TEST(EditPlan, RefusesWhatTheContainerCannotHold) {
  const TempFolder folder;
  record(folder / "a.img");
  record(folder / "a.rtv");
  const struct {
    const char* file;
    EditRequest request;
    const char* words;
  } cases[] = {
      {"a.img", {.sensorTimes = {{5, 1}}}, "--sensor-time: there is no frame 5, only 5 frames"},
      {"a.img", {.startTime = 5}, "--start-time: an img starts when its frame 0 arrived"},
      {"a.img", {.taggingFlags = 5}, "--tagging-flags: an img holds none"},
      {"a.img", {.sensorTimes = {{1, 5}, {1, 6}}}, "--sensor-time: frame 1 is there twice"},
      {"a.img", {.shift = INT64_MIN}, "--shift-time: times would leave 64 bits"},
      {"a.img", {.allTimes = std::vector<FrameTimes>(2)}, "--times: it has 2 rows for 5 frames"},
      {"a.rtv", {.cameraParams = "{}"}, "--camera-params: an rtv holds none"},
      {"a.rtv", {.arrivedTimes = {{0, 5}}}, "--arrived-time: an rtv holds no arrival times"},
      {"a.rtv", {.sensorTimes = {{0, 1}}}, "--sensor-time: an rtv holds whole milliseconds"},
      {"a.rtv",
       {.sensorTimes = {{0, 2147483648000}}},
       "--sensor-time: frame 0 would be captured before the start, or more than 24 days"},
      {"a.rtv", {.deviceId = std::string(25, 'x')}, "--device-id: an rtv holds 24 bytes"},
      {"a.img", {.startPosition = StartPosition{}}, "--start-position: an img holds neither"},
      {"a.img", {.changeTags = [](auto&, auto&, auto&) {}}, "--log: an img holds neither"},
      {"a.rtv",
       {.startPosition = StartPosition{0, 0, 0.5}},
       "--start-position: version 03 of rtv holds whole metres"},
  };
  for (const auto& one : cases) {
    const Recording recording(folder / one.file);
    try {
      EditPlan(recording, one.request);
      ADD_FAILURE() << one.words;
    } catch (const Failure& failure) {
      EXPECT_TRUE(failure.words().starts_with(one.words)) << failure.what();
    }
  }
}

// What tells anything of the car, in every frame.
void recordDrive(const std::string& path, version_e version) {
  RecordingDescription description;
  description.setSize({32, 16});
  description.version = version;
  description.startTime = 1700000000000000;
  description.deviceId = "\x0a\xff";
  description.extendedInfo = "{\"driver\":1}";
  description.lng = description.lat = description.alt = 7;
  FrameTag tag;
  tag.x = tag.y = tag.z = -5;
  tag.relativeDistance = tag.speed = tag.direction = 5;
  for (const CanField& field : canFields()) {
    if (field.offset > 0)
      std::memset(reinterpret_cast<char*>(&tag.can) + field.offset, 1, field.size());
  }
  RecordingWriter writer(path, description, kFrames, RecordingWriter::OnFailure::RemoveFrames);
  for (unsigned int i = 0; i < kFrames; ++i) {
    const std::uint64_t time = description.startTime + 33000 * i;
    writer.add(numberedJpeg(i), {time, time}, tag);
  }
  writer.finish();
}

// What is left of that in the first and the last frame and in the header.
std::string leftIn(const std::string& path) {
  const Recording recording(path);
  const RecordingDescription description = recording.description();
  std::string left;
  const auto note = [&left](bool is, const std::string& what) {
    if (is) left += what + " ";
  };
  note(!recording.deviceId().empty(), "id");
  note(!parseJson(description.extendedInfo).empty(), "info");
  note(description.lng != 0 || description.lat != 0 || description.alt != 0, "start");
  for (const unsigned int frame : {0U, kFrames - 1}) {
    const FrameTag tag = recording.tag(frame);
    note(tag.x != 0 || tag.y != 0 || tag.z != 0, "place");
    note(tag.relativeDistance != 0, "distance");
    note(tag.direction != 0, "direction");
    note(tag.speed != 0, "speed");
    for (const CanField& field : canFields()) {
      note(field.offset > 0 && !canFieldIsAbsent(tag.can, field), field.name);
    }
  }
  return left;
}

TEST(EditPlan, LeavesNothingOfWhatIsCleared) {
  const TempFolder folder;
  const struct {
    Contents contents;
    std::vector<const char*> gone;
  } cases[] = {
      {Contents::Positions, {"start", "place", "direction", "distance"}},
      {Contents::Speed, {"speed", "wheel_tick", "wheel_rotation"}},
      {Contents::DeviceId, {"id"}},
      {Contents::ExtendedInfo, {"info"}},
  };
  for (const auto& [name, version] : {std::pair{"a.img", RTV_VER_03},
                                      {"2.rtv", RTV_VER_02},
                                      {"3.rtv", RTV_VER_03},
                                      {"4.rtv", RTV_VER_04}}) {
    const std::string path = folder / name;
    recordDrive(path, version);
    const std::string before = readFile(path);
    std::istringstream all(leftIn(path));
    const std::vector<std::string> words(std::istream_iterator<std::string>(all), {});
    for (const auto& one : cases) {
      writeFile(path, before);
      edit(path, {.cleared = {one.contents}});
      std::string kept;
      for (const std::string& word : words) {
        const bool isGone = std::any_of(one.gone.begin(), one.gone.end(), [&](const char* part) {
          return word.find(part) != word.npos;
        });
        if (!isGone) kept += word + " ";
      }
      EXPECT_EQ(leftIn(path), kept) << name;
      const Recording recording(path);
      const EditPlan again(recording, {.cleared = {one.contents}});
      EXPECT_TRUE(again.isEmpty()) << name << ": " << again.text();
    }
    edit(path, {.cleared = {Contents::Can, Contents::Speed, Contents::Positions, Contents::DeviceId,
                            Contents::ExtendedInfo}});
    EXPECT_EQ(leftIn(path), "") << name;
  }
}

}  // namespace
