#include "toolkit/rescue/ImgRecords.h"
#include "toolkit/files/RecorderFiles.h"

#include <algorithm>

#include "container/img/FrameIndex.h"
#include "container/img/FrameIndexJournal.h"
#include "toolkit/base/Failure.h"
#include "toolkit/files/InputFile.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/recording/FramePlaces.h"

namespace velmar::toolkit {

namespace {

// Takes records in their order and keeps those that count.
class RecordScan {
 public:
  // \param end  of the frames; the file may have been cut before it
  RecordScan(const FileBytes& file, std::uint64_t end)
      : file_(file), shared_(file), end_(end), lowest_(end) {}

  // \param dataStart  where frames can begin
  void add(const FrameIndex& record, std::uint64_t number, std::uint64_t dataStart) {
    if (record.frameOffset < dataStart || record.frameOffset >= end_ || record.frameSize == 0 ||
        record.frameSize > end_ - record.frameOffset) {
      return;
    }
    const LeftoverFrame frame = frameOf(record, number);
    const bool continues = before_.number + 1 == number && before_.end() == frame.offset;
    const bool isBeforeKept = !frames_.empty() && frames_.back().number == before_.number;
    if (continues && !isBeforeKept) frames_.push_back(before_);
    if (continues || frame.lostBecause == nullptr || frame.end() == end_) frames_.push_back(frame);
    if (frame.lostBecause == nullptr) lowest_ = std::min(lowest_, frame.offset);
    before_ = frame;
  }

  // Of the frames that are there.
  std::uint64_t lowestOffset() const { return lowest_; }
  std::vector<LeftoverFrame>& frames() { return frames_; }

 private:
  LeftoverFrame frameOf(const FrameIndex& record, std::uint64_t number) {
    LeftoverFrame frame;
    frame.number = number;
    frame.offset = record.frameOffset;
    frame.size = record.frameSize;
    frame.times = {record.sensorTime, record.arrivedTime};
    frame.isCut = !file_.contains(frame.offset, frame.size);
    if (frame.offset >= file_.size()) {
      frame.lostBecause = "the file ends before it";
    } else if (!beginsAsJpeg(startOf(frame, file_))) {
      frame.lostBecause = "its bytes are no JPEG picture";
    } else if (shared_.repeats({frame.offset, frame.size})) {
      frame.lostBecause = kSharedWords;
    }
    return frame;
  }

  const FileBytes& file_;
  SharedBytes shared_;
  const std::uint64_t end_;
  std::uint64_t lowest_;
  std::vector<LeftoverFrame> frames_;
  LeftoverFrame before_;  // whether it is kept or not
};

// Whether a time is far before those of its neighbours, as zeros in its first bytes make it.
bool isTorn(const FrameTimes& times, const FrameTimes& neighbour) {
  return times.sensor < neighbour.sensor / 2 || times.arrived < neighbour.arrived / 2;
}

// Zeros may end inside a record, which then has its place, but not its times.
// \param isFirstWhole  the number in front of the first record is there, so it is not such a one
void dropTornTimes(std::vector<LeftoverFrame>& frames, bool isFirstWhole) {
  for (std::size_t i = 0; i + 1 < frames.size(); ++i) {
    if (i == 0 && frames[i].number == 0 && isFirstWhole) continue;
    const bool followsTorn = i == 0 || !frames[i - 1].times;
    if (isTorn(*frames[i].times, *frames[i + 1].times) &&
        (followsTorn || isTorn(*frames[i].times, *frames[i - 1].times))) {
      frames[i].times.reset();
    }
  }
}

// They may begin inside one as well, so that the frame is said to be shorter than it is: then
// nothing follows it.
void dropTornSizes(std::vector<LeftoverFrame>& frames, const FileBytes& file,
                   std::uint64_t metaData) {
  const std::uint64_t first = frames.empty() ? 0 : frames.front().offset;
  std::vector<LeftoverFrame> kept;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    const LeftoverFrame& frame = frames[i];
    const std::uint64_t next = i + 1 < frames.size() ? frames[i + 1].offset : first;
    if (frame.end() == next || frame.end() == first || frame.end() == metaData || frame.isCut ||
        frame.lostBecause != nullptr || isWholeJpeg(file.read(frame.offset, frame.size))) {
      kept.push_back(frame);
    }
  }
  frames = std::move(kept);
}

}  // namespace

std::vector<LeftoverFrame> readJournal(const FileBytes& file) {
  std::string bytes;
  try {
    bytes = readFile(journalPath(file.path()));
  } catch (const Failure&) {
    return {};  // it is a help, not a condition
  }
  std::string_view rest = bytes;
  const bool hasCheckSums = rest.starts_with(detail::kJournalMagic);
  if (hasCheckSums) rest.remove_prefix(detail::kJournalMagic.size());
  const std::size_t size = hasCheckSums ? sizeof(detail::JournalRecord) : sizeof(FrameIndex);
  RecordScan scan(file, UINT64_MAX);
  // The last one may be cut short.
  for (std::uint64_t i = 0; rest.size() >= size; ++i, rest.remove_prefix(size)) {
    if (hasCheckSums && !detail::get<detail::JournalRecord>(rest.data()).isWhole()) continue;
    scan.add(detail::readFrameIndex(rest.data()), i, detail::kFrameIndexStart);
  }
  return std::move(scan.frames());
}

std::vector<LeftoverFrame> readFrontIndex(const FileBytes& file) {
  constexpr std::uint64_t kRecordsAtOnce = 4096;
  const std::uint64_t metaData = imgMetaDataOffset(file);
  const bool isFinished = metaData != 0;
  if (!isFinished && beginsAsJpeg(file.read(detail::kFrameIndexStart, 2))) return {};
  RecordScan scan(file, std::max(file.size(), metaData));
  std::uint64_t number = 0;
  std::uint64_t at = detail::kFrameIndexStart;
  // The index reaches to the first frame at most.
  for (std::string bytes = " "; !bytes.empty() && at < scan.lowestOffset();) {
    bytes = file.read(at, kRecordsAtOnce * sizeof(FrameIndex));
    bytes.resize(bytes.size() - bytes.size() % sizeof(FrameIndex));
    for (std::size_t i = 0; i < bytes.size(); i += sizeof(FrameIndex)) {
      at += sizeof(FrameIndex);
      if (at > scan.lowestOffset()) break;
      scan.add(detail::readFrameIndex(bytes.data() + i), number++, at);
    }
  }
  std::vector<LeftoverFrame> frames = std::move(scan.frames());
  dropTornSizes(frames, file, metaData);
  dropTornTimes(frames, isFinished);
  return frames;
}

}  // namespace velmar::toolkit
