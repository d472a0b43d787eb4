#include "toolkit/pictures/Extraction.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <thread>
#include <utility>

#include "toolkit/base/Failure.h"
#include "toolkit/files/InputFile.h"
#include "toolkit/files/OutputFile.h"
#include "toolkit/jpeg/DecodingLimits.h"
#include "toolkit/recording/FramePlaces.h"
#include "toolkit/tables/FrameLine.h"
#include "toolkit/writing/OutputFolders.h"

namespace velmar::toolkit {

namespace {

namespace fs = std::filesystem;

constexpr char kTableName[] = "frames.csv";

}  // namespace

Extraction::Extraction(const std::string& file, const FrameChoice& choose, const PictureForm& form,
                       PictureFolder folder)
    : source_(file, form),
      folder_(std::move(folder)),
      frames_(choose(source_.recording())),
      written_(frames_.size()),
      earlierRows_(rowsOfEarlierRuns()) {
  // All names get the width of the recording's last one.
  const unsigned int count = source_.recording().framesCount();
  SharedBytes shared(source_.recording().file());
  for (const unsigned int frame : frames_) {
    repeated_.push_back(shared.repeats(source_.recording().places().at(frame)));
  }
  digits_ = std::max<std::size_t>(6, std::to_string(count - std::min(count, 1U)).size());
}

std::vector<std::string> Extraction::outputs() const {
  std::vector<std::string> paths;
  for (const unsigned int frame : frames_) paths.push_back(pathOf(frame));
  if (folder_.hasTable) paths.push_back(tablePath());
  return paths;
}

void Extraction::run(unsigned int threads, Job& job) {
  noteState(source_.recording(), job);
  OutputFolders folders;
  folders.make(folder_.path);
  runThreads(threads, *job.begin(folder_.path, frames_.size()));
  const auto count = static_cast<std::size_t>(std::count(written_.begin(), written_.end(), 1));
  if (failure_) std::rethrow_exception(failure_);
  if (folder_.hasTable && count > 0) replaceFile(tablePath(), table());
  const std::string& file = source_.recording().path();
  losses_.report(file, frames_.size(), job);
  if (count + losses_.count() < frames_.size()) job.loseRest(file, count, frames_.size());
}

std::string Extraction::pathOf(unsigned int frame) const {
  std::string number = std::to_string(frame);
  number.insert(0, digits_ - number.size(), '0');
  return fs::path(folder_.path) / ("frame_" + number + "." + source_.form().extension());
}

// The calling thread is one of them; it alone has to do with the job.
void Extraction::runThreads(unsigned int count, Job::Stage& stage) {
  // All together take no more memory than is fit for the file.
  const std::uint64_t memory = memoryFor(source_.recording().file().size());
  const std::uint64_t most = std::clamp<std::uint64_t>(
      memory / source_.memory(), 1, std::min<std::size_t>(count, frames_.size()));
  source_.limitMemory(memory / most);
  std::vector<std::jthread> threads;
  for (std::uint64_t i = 1; i < most; ++i) {
    threads.emplace_back([this, share = memory / most] {
      guarded([this, share] {
        PictureSource source(source_.recording().path(), source_.form());
        source.limitMemory(share);
        while (extractNext(source)) continue;
      });
    });
  }
  guarded([&] {
    while (!stage.stopRequested() && extractNext(source_))
      stage.advance(std::min(next_.load(), frames_.size()));
    stopped_ = true;
  });
}

// A thread's work; its failure ends that of the others.
template <typename Work>
void Extraction::guarded(Work work) {
  try {
    work();
  } catch (...) {
    const std::lock_guard lock(failureMutex_);
    if (!failure_) failure_ = std::current_exception();
    stopped_ = true;
  }
}

// False if there is nothing more to do.
bool Extraction::extractNext(PictureSource& source) {
  if (stopped_) return false;
  const std::size_t at = next_++;
  if (at >= frames_.size()) return false;
  const std::string path = pathOf(frames_[at]);
  std::string bytes;
  if (folder_.keepsExisting && fs::exists(path)) {
    written_[at] = 1;
  } else if (const FrameFlaw flaw =
                 repeated_[at] != 0 ? FrameFlaw::ofRepetition() : source.read(frames_[at], bytes)) {
    losses_.add(frames_[at], flaw);
  } else {
    replaceFile(path, bytes);
    written_[at] = 1;
  }
  return true;
}

std::string Extraction::tablePath() const { return fs::path(folder_.path) / kTableName; }

std::string Extraction::tableHeader() const {
  return "file," + csvHeader(columnsOf(source_.recording()));
}

std::map<std::string, std::string> Extraction::rowsOfEarlierRuns() const {
  std::map<std::string, std::string> rows;
  if (!folder_.hasTable || !folder_.keepsExisting || !fs::exists(tablePath())) return rows;
  std::istringstream lines(readFile(tablePath()));
  std::string line;
  std::getline(lines, line);
  if (line + "\n" != tableHeader()) {
    throw Failure(tablePath(),
                  "it is not the table of an earlier run; --no-table leaves it as it is",
                  VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
  }
  while (std::getline(lines, line)) rows.emplace(line.substr(0, line.find(',')), line + "\n");
  return rows;
}

// In the order of the names, which is that of the frames.
std::string Extraction::table() const {
  const FrameTable columns = columnsOf(source_.recording());
  FrameLine lines(source_.recording(), columns);
  std::map<std::string, std::string> rows = earlierRows_;
  for (std::size_t i = 0; i < frames_.size(); ++i) {
    if (written_[i] == 0) continue;
    const std::string name = fs::path(pathOf(frames_[i])).filename().string();
    rows.insert_or_assign(name, name + "," + lines.csv(frames_[i]));
  }
  std::string text = tableHeader();
  for (const auto& [name, row] : rows) text += row;
  return text;
}

}  // namespace velmar::toolkit
