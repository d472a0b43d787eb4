#include "toolkit/recording/RunningTables.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "container/img/FrameIndex.h"
#include "container/img/FrameIndexJournal.h"
#include "container/rtv/RtvLayout.h"
#include "toolkit/base/Failure.h"
#include "toolkit/jpeg/JpegInspector.h"
#include "toolkit/recording/FrameTag.h"
#include "velmar_video/TypeConversion.h"

namespace velmar::toolkit {

namespace {

constexpr std::string_view kTemporaryEnding = ".tmp";

// What both containers have in common.
class RunningFrames : public RunningTables {
 public:
  explicit RunningFrames(const std::string& path) : file_(path) {}

  const FileBytes& file() const override { return file_; }
  VELMAR_CODEC_E codec() const override { return VELMAR_CODEC_JPG_E; }
  std::string deviceId() const override { return ""; }
  RecordingDescription description() const override {
    RecordingDescription description;
    if (places_.empty()) return description;
    std::string jpeg;
    const bool isRead = tryReadFrame(0, jpeg).empty();
    const auto size = isRead ? JpegInspector().size(jpeg) : std::nullopt;
    if (size) description.setSize(*size);
    return description;
  }
  unsigned int framesCount() const override { return static_cast<unsigned int>(places_.size()); }
  unsigned int framesMax() const override { return UINT32_MAX; }
  unsigned int frameSize(unsigned int index) const override {
    return static_cast<unsigned int>(placeOf(index).size);
  }
  const std::vector<FilePlace>& places() const override { return places_; }

 protected:
  const FilePlace& placeOf(unsigned int index) const {
    if (index < places_.size()) return places_[index];
    throw Failure(file_.path(), VELMAR_ERROR_CODE_OUT_RANGE_E);
  }

  FileBytes file_;
  std::vector<FilePlace> places_;
};

// Goes by the index journal, in which a frame is recorded when it is in the file.
class RunningImg final : public RunningFrames {
 public:
  explicit RunningImg(const std::string& path) : RunningFrames(path), journal_(journalOf(path)) {}

  void update() override {
    journal_.updateSize();
    file_.updateSize();
    if (read_ == 0 && !readStart()) return;
    const std::string bytes =
        journal_.read(read_, journal_.size() - std::min(journal_.size(), read_));
    // The last one may not be there as a whole.
    for (std::size_t at = 0; at + recordSize_ <= bytes.size() && add(bytes.substr(at, recordSize_));
         at += recordSize_) {
      read_ += recordSize_;
    }
  }

  // A recorder that finishes moves the first frames behind the last one, replaces the journal by
  // one that leads there, writes the index where those frames were, and deletes the journal.
  std::string tryReadFrame(unsigned int index, std::string& bytes) const override {
    std::string problem = RunningFrames::tryReadFrame(index, bytes);
    if (journal_.isAt(journal_.path())) return problem;
    for (const auto& record : {replacedRecord(index), finalRecord(index)}) {
      if (record && isOf(index, *record)) {
        return file_.tryRead({record->frameOffset, record->frameSize}, bytes);
      }
    }
    return problem;
  }

  VELMAR_VERSION_E version() const override { return VELMAR_VERSION_1_0_E; }

  RecordingDescription description() const override {
    RecordingDescription description = RunningFrames::description();
    if (!times_.empty()) description.startTime = times_.front().arrived;
    return description;
  }
  std::uint64_t sensorTime(unsigned int index) const override {
    placeOf(index);
    return times_[index].sensor;
  }
  std::uint64_t arrivedTime(unsigned int index) const override {
    placeOf(index);
    return times_[index].arrived;
  }
  frametag03Ver_t tag(unsigned int /*index*/) const override { return {}; }
  can_data_io can(unsigned int /*index*/) const override { return FrameTag().can; }

 private:
  static FileBytes journalOf(const std::string& path) {
    try {
      return FileBytes(path + ".index");
    } catch (const Failure&) {
      throw Failure(path,
                    "there is no index journal beside it, so that its frames are not known before "
                    "it is finished",
                    VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
    }
  }

  // What has the journal's name now; it may be another recording's, or gone.
  std::optional<FrameIndex> replacedRecord(unsigned int index) const {
    try {
      const FileBytes journal(journal_.path());
      const std::uint64_t at =
          detail::kJournalMagic.size() + std::uint64_t{index} * sizeof(detail::JournalRecord);
      return recordIn(journal.read(at, sizeof(detail::JournalRecord)), true);
    } catch (const Failure&) {
      return std::nullopt;
    }
  }

  std::optional<FrameIndex> finalRecord(unsigned int index) const {
    const std::uint64_t at = detail::kFrameIndexStart + std::uint64_t{index} * sizeof(FrameIndex);
    return recordIn(file_.read(at, sizeof(FrameIndex)), false);
  }

  static std::optional<FrameIndex> recordIn(const std::string& bytes, bool hasCheckSum) {
    if (bytes.size() < (hasCheckSum ? sizeof(detail::JournalRecord) : sizeof(FrameIndex)))
      return {};
    if (hasCheckSum && !detail::get<detail::JournalRecord>(bytes.data()).isWhole()) return {};
    return detail::readFrameIndex(bytes.data());
  }

  bool isOf(unsigned int index, const FrameIndex& record) const {
    const FrameTimes& times = times_.at(index);
    return record.sensorTime == times.sensor && record.arrivedTime == times.arrived &&
           record.frameSize == places_.at(index).size;
  }

  // Version 1.0 wrote records without check sums, and nothing in front of them.
  bool readStart() {
    const std::string start = journal_.read(0, detail::kJournalMagic.size());
    if (start.size() < detail::kJournalMagic.size()) return false;
    hasCheckSums_ = start == detail::kJournalMagic;
    recordSize_ = hasCheckSums_ ? sizeof(detail::JournalRecord) : sizeof(FrameIndex);
    if (hasCheckSums_) read_ = start.size();
    return true;
  }

  bool add(const std::string& bytes) {
    const auto record = recordIn(bytes, hasCheckSums_);
    if (!record || !file_.contains(record->frameOffset, record->frameSize)) return false;
    places_.push_back({record->frameOffset, record->frameSize});
    times_.push_back({record->sensorTime, record->arrivedTime});
    return true;
  }

  FileBytes journal_;
  std::uint64_t read_ = 0;  // bytes of the journal
  bool hasCheckSums_ = false;
  std::size_t recordSize_ = 0;
  std::vector<FrameTimes> times_;
};

// Goes by the tag table. A tag gets its frame's size when the frame is in the file.
class RunningRtv final : public RunningFrames {
 public:
  explicit RunningRtv(const std::string& path) : RunningFrames(path) {}

  void update() override {
    file_.updateSize();
    if (version_ == RTV_VER_MAX) findVersion();
    if (version_ == RTV_VER_MAX) return;
    constexpr unsigned int kTagsAtOnce = 512;
    const detail::RtvLayout layout = detail::rtvLayout(version_);
    for (bool goesOn = true; goesOn && framesCount() < framesMax_;) {
      const unsigned int most = std::min(kTagsAtOnce, framesMax_ - framesCount());
      const std::string bytes =
          file_.read(layout.tagAt(framesCount()), std::uint64_t{most} * layout.tagSize);
      goesOn = bytes.size() >= std::size_t{most} * layout.tagSize;
      for (std::size_t at = 0; at + layout.tagSize <= bytes.size(); at += layout.tagSize) {
        if (add(bytes.data() + at)) continue;
        goesOn = false;
        break;
      }
    }
  }

  VELMAR_VERSION_E version() const override { return rtvVersion2VelmarVersion(version_); }

  RecordingDescription description() const override {
    RecordingDescription description = RunningFrames::description();
    if (version_ != RTV_VER_MAX) description.version = version_;
    return description;
  }
  unsigned int framesMax() const override { return framesMax_; }
  // The start is not known yet.
  std::uint64_t sensorTime(unsigned int index) const override {
    return static_cast<unsigned int>(tag(index).time_flag) * kMillisecond;
  }
  std::uint64_t arrivedTime(unsigned int index) const override { return sensorTime(index); }
  frametag03Ver_t tag(unsigned int index) const override {
    placeOf(index);
    return tags_[index];
  }
  can_data_io can(unsigned int index) const override {
    placeOf(index);
    if (version_ != RTV_VER_04) return FrameTag().can;
    const std::uint64_t at = detail::rtvLayout(version_).tagAt(index) + detail::kCanAt;
    return detail::get<can_data_io>(file_.read(at, sizeof(can_data_io)).data());
  }

 private:
  static frametag03Ver_t decoded(const char* bytes, version_e version) {
    return version == RTV_VER_02 ? detail::widened(detail::get<frametag_02ver_t>(bytes))
                                 : detail::get<frametag03Ver_t>(bytes);
  }

  // Tags of versions 03 and 04 begin alike. The first frame lies behind the last tag, and CAN
  // signals say how long they are.
  void findVersion() {
    for (const version_e version : {RTV_VER_04, RTV_VER_03, RTV_VER_02}) {
      const detail::RtvLayout layout = detail::rtvLayout(version);
      const std::string bytes = file_.read(layout.tagAt(0), layout.tagSize);
      if (bytes.size() < layout.tagSize) continue;
      const frametag03Ver_t first = decoded(bytes.data(), version);
      const std::uint64_t tags = first.data_offset - std::uint64_t{layout.headerSize};
      const bool isSize = first.data_offset > layout.headerSize && tags % layout.tagSize == 0;
      if (first.data_length == 0 || !isSize ||
          !file_.contains(first.data_offset, first.data_length) ||
          !beginsAsJpeg(file_.read(first.data_offset, 2))) {
        continue;
      }
      constexpr std::size_t kCanLength = sizeof(can_data_io) - sizeof can_data_io::can_data_length;
      if (version == RTV_VER_04 &&
          detail::get<can_data_io>(bytes.data() + detail::kCanAt).can_data_length != kCanLength) {
        continue;
      }
      version_ = version;
      framesMax_ =
          static_cast<unsigned int>(std::min<std::uint64_t>(tags / layout.tagSize, kRtvFramesMax));
      return;
    }
  }

  bool add(const char* bytes) {
    const frametag03Ver_t stored = decoded(bytes, version_);
    if (stored.data_length == 0 || !file_.contains(stored.data_offset, stored.data_length)) {
      return false;
    }
    places_.push_back({stored.data_offset, stored.data_length});
    tags_.push_back(stored);
    return true;
  }

  version_e version_ = RTV_VER_MAX;
  unsigned int framesMax_ = 0;
  std::vector<frametag03Ver_t> tags_;
};

}  // namespace

std::unique_ptr<RunningTables> openRunningTables(const std::string& path) {
  std::unique_ptr<RunningTables> tables;
  if (isRtvPath(finalPath(path))) {
    tables = std::make_unique<RunningRtv>(path);
  } else {
    tables = std::make_unique<RunningImg>(path);
  }
  tables->update();
  return tables;
}

std::string temporaryPath(const std::string& path) {
  return path.ends_with(kTemporaryEnding) ? path : path + std::string(kTemporaryEnding);
}

std::string finalPath(const std::string& path) {
  return path.ends_with(kTemporaryEnding) ? path.substr(0, path.size() - kTemporaryEnding.size())
                                          : path;
}

}  // namespace velmar::toolkit
