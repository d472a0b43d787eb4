#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "Bench.h"
#include "Files.h"
#include "GrowingFile.h"
#include "Peers.h"
#include "toolkit/writing/RecordingWriter.h"

namespace {

constexpr unsigned int kFrames = 200;  // of a whole recording, some 30 MB
constexpr int kRepetitions = 11;

// The same bytes without any format: what comes first, frames, index or nothing, metadata.
double writeBare(const std::string& path, std::size_t before, std::size_t behind) {
  const std::string front(before, '\0');
  const std::string back(behind, '\0');
  const std::string temporary = path + ".tmp";
  const WallTimer timer;
  {
    const OpenFile file(temporary, O_WRONLY | O_CREAT | O_TRUNC);
    file.write(front);
    for (unsigned int i = 0; i < kFrames; ++i) file.write(Frames::camera()[i]);
    file.write(back);
    require(::fdatasync(file.get()) == 0, "no fdatasync");
  }
  require(std::rename(temporary.c_str(), path.c_str()) == 0, "no rename");
  const double seconds = timer.seconds();
  std::filesystem::remove(path);
  return seconds;
}

double writeRecording(const std::string& path) {
  const WallTimer timer;
  const auto creater = openCreater(path);
  for (unsigned int i = 0; i < kFrames; ++i) {
    require(creater->addFrame(Frames::camera()[i], timeOf(i), timeOf(i)), "frame not added");
  }
  require(creater->close() == VELMAR_ERROR_CODE_SUCCESS_E, "not closed");
  const double seconds = timer.seconds();
  std::filesystem::remove(path);
  return seconds;
}

Row wholeRecording(Container container, double reach) {
  const std::string path = Workspace::path(std::string("written.") + extension(container));
  const std::string bare = Workspace::path("bare");
  const bool isImg = container == Container::Img;
  const std::size_t before =
      isImg ? sizeof(std::uint64_t)
            : rtvHeaderSize(container) + std::size_t{kRtvFramesMax} * rtvTagSize(container);
  const std::size_t behind = isImg ? kFrames * sizeof(IndexRecord) + kCameraParams.size() : 0;
  return {.limitName = std::string("write(2), ") + (isImg ? "index, metadata" : "tag table") +
                       ", fdatasync, rename",
          .limit = [=] { return writeBare(bare, before, behind); },
          .ours = [=] { return writeRecording(path); },
          .reach = reach,
          .reachExtra = {},
          .peers = writingPeers(Frames::camera(), kFrames),
          .operations = kFrames};
}

constexpr unsigned int kSyncedFrames = 8;

void syncFolderOf(const std::string& path) {
  const OpenFile folder(std::filesystem::path(path).parent_path(), O_RDONLY | O_DIRECTORY);
  require(::fsync(folder.get()) == 0, "no fsync");
}

// Frames in one file and their records in another.
double addBareSynced(const std::string& path) {
  const std::string record(sizeof(IndexRecord), '\0');
  const OpenFile file(path, O_WRONLY | O_CREAT | O_TRUNC);
  const OpenFile journal(path + ".index", O_WRONLY | O_CREAT | O_TRUNC);
  const WallTimer timer;
  for (unsigned int i = 0; i < kSyncedFrames; ++i) {
    file.write(Frames::camera()[i]);
    journal.write(record);
    if (i == 0) syncFolderOf(path);
    require(::fdatasync(file.get()) == 0 && ::fdatasync(journal.get()) == 0, "no fdatasync");
  }
  const double seconds = timer.seconds();
  std::filesystem::remove(path);
  std::filesystem::remove(path + ".index");
  return seconds;
}

double addSynced(const std::string& path) {
  using namespace velmar::toolkit;
  RecordingWriter writer(path, RecordingDescription(), kSyncedFrames,
                         RecordingWriter::OnFailure::KeepFrames);
  writer.syncEvery(1);
  const WallTimer timer;
  for (unsigned int i = 0; i < kSyncedFrames; ++i) {
    writer.add(Frames::camera()[i], {timeOf(i), timeOf(i)});
  }
  const double seconds = timer.seconds();
  writer.finish();
  std::filesystem::remove(path);
  return seconds;
}

Row syncedRow() {
  const std::string path = Workspace::path("synced.img");
  const std::string bare = Workspace::path("bare-synced");
  return {.limitName = "write(2) of frame and record to two files, fdatasync of each",
          .limit = [=] { return addBareSynced(bare); },
          .ours = [=] { return addSynced(path); },
          .reach = 1.3,
          .reachExtra = {},
          .operations = kSyncedFrames};
}

}  // namespace

void addWriteRows() {
  addRow(
      "write img, camera frames, close() included",
      [] { return wholeRecording(Container::Img, 1.05); }, kRepetitions);
  addRow(
      "write rtv 03, camera frames, close() included",
      [] { return wholeRecording(Container::Rtv03, 1.45); }, kRepetitions);
  addRow("add a camera frame to an img with --sync 1", syncedRow, 3 * kRepetitions);
  // A run is over in a millisecond, so there is time for more of them.
  constexpr int kShortRepetitions = 51;
  addRow(
      "add a camera frame to an img",
      [] { return addingRow(Container::Img, Frames::camera(), 100, 1.05); }, kShortRepetitions);
  for (const unsigned int frame : {100U, 60000U}) {
    addRow(
        "add a camera frame to an rtv 03, at frame " + std::to_string(frame),
        [=] { return addingRow(Container::Rtv03, Frames::camera(), frameCount(frame), 1.45); },
        kShortRepetitions);
  }
}
