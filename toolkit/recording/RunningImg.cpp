#include "toolkit/recording/RunningImg.h"

#include <algorithm>

#include "container/img/FrameIndexJournal.h"
#include "toolkit/base/Failure.h"
#include "toolkit/files/RecorderFiles.h"

namespace velmar::toolkit {

namespace {

FileBytes journalOf(const std::string& path) {
  try {
    return FileBytes(journalPath(path));
  } catch (const Failure&) {
    throw Failure(path,
                  "there is no index journal beside it, so that its frames are not known before it "
                  "is finished",
                  VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  }
}

// As it is in the index or, with a check sum, in a journal.
std::optional<FrameIndex> recordIn(const std::string& bytes, bool hasCheckSum) {
  if (bytes.size() < (hasCheckSum ? sizeof(detail::JournalRecord) : sizeof(FrameIndex))) return {};
  if (hasCheckSum && !detail::get<detail::JournalRecord>(bytes.data()).isWhole()) return {};
  return detail::readFrameIndex(bytes.data());
}

}  // namespace

RunningImg::RunningImg(const std::string& path) : RunningTables(path), journal_(journalOf(path)) {}

void RunningImg::update() {
  journal_.updateSize();
  file_.updateSize();
  if (read_ == 0 && !readStart()) return;
  constexpr std::uint64_t kRecordsAtOnce = 4096;
  for (bool goesOn = true; goesOn;) {
    const std::string bytes = journal_.read(read_, kRecordsAtOnce * recordSize_);
    goesOn = bytes.size() == kRecordsAtOnce * recordSize_;
    // The last one may not be there as a whole.
    for (std::size_t at = 0; at + recordSize_ <= bytes.size(); at += recordSize_) {
      if (!add(bytes.substr(at, recordSize_))) return;
      read_ += recordSize_;
    }
  }
}

// Version 1.0 wrote records without check sums, and nothing in front of them.
bool RunningImg::readStart() {
  const std::string start = journal_.read(0, detail::kJournalMagic.size());
  if (start.size() < detail::kJournalMagic.size()) return false;
  hasCheckSums_ = start == detail::kJournalMagic;
  recordSize_ = hasCheckSums_ ? sizeof(detail::JournalRecord) : sizeof(FrameIndex);
  if (hasCheckSums_) read_ = start.size();
  return true;
}

bool RunningImg::add(const std::string& bytes) {
  const auto record = recordIn(bytes, hasCheckSums_);
  if (!record || !file_.contains(record->frameOffset, record->frameSize)) return false;
  places_.push_back({record->frameOffset, record->frameSize});
  times_.push_back({record->sensorTime, record->arrivedTime});
  return true;
}

// A recorder that finishes moves the first frames behind the last one, replaces the journal by one
// that leads there, writes the index where those frames were, and deletes the journal.
std::string RunningImg::tryReadFrame(unsigned int index, std::string& bytes) const {
  std::string problem = RunningTables::tryReadFrame(index, bytes);
  if (journal_.isAt(journal_.path())) return problem;
  for (const auto& record : {replacedRecord(index), finalRecord(index)}) {
    if (record && isOf(index, *record)) {
      return file_.tryRead({record->frameOffset, record->frameSize}, bytes);
    }
  }
  return problem;
}

// In what has the journal's name now; it may be another recording's, or gone.
std::optional<FrameIndex> RunningImg::replacedRecord(unsigned int index) const {
  try {
    const FileBytes journal(journal_.path());
    const std::uint64_t at =
        detail::kJournalMagic.size() + std::uint64_t{index} * sizeof(detail::JournalRecord);
    return recordIn(journal.read(at, sizeof(detail::JournalRecord)), true);
  } catch (const Failure&) {
    return std::nullopt;
  }
}

bool RunningImg::isReplaced() const {
  if (times_.empty() || journal_.isAt(journal_.path())) return false;
  const unsigned int last = framesCount() - 1;
  const auto record = replacedRecord(last);
  return record && !isOf(last, *record);
}

std::optional<FrameIndex> RunningImg::finalRecord(unsigned int index) const {
  const std::uint64_t at = detail::kFrameIndexStart + std::uint64_t{index} * sizeof(FrameIndex);
  return recordIn(file_.read(at, sizeof(FrameIndex)), false);
}

bool RunningImg::isOf(unsigned int index, const FrameIndex& record) const {
  const FrameTimes& times = times_.at(index);
  return record.sensorTime == times.sensor && record.arrivedTime == times.arrived &&
         record.frameSize == places_.at(index).size;
}

RecordingDescription RunningImg::description() const {
  RecordingDescription description = RunningTables::description();
  if (!times_.empty()) description.startTime = times_.front().arrived;
  return description;
}

std::uint64_t RunningImg::sensorTime(unsigned int index) const {
  placeOf(index);
  return times_[index].sensor;
}

std::uint64_t RunningImg::arrivedTime(unsigned int index) const {
  placeOf(index);
  return times_[index].arrived;
}

}  // namespace velmar::toolkit
