#include "toolkit/recording/RunningRtv.h"

#include <algorithm>
#include <cstring>

#include "container/rtv/RtvLayout.h"
#include "toolkit/base/Failure.h"
#include "toolkit/recording/FrameTag.h"
#include "velmar_video/TypeConversion.h"

namespace velmar::toolkit {

namespace {

frametag03Ver_t decoded(const char* bytes, version_e version) {
  return version == RTV_VER_02 ? detail::widened(detail::get<frametag_02ver_t>(bytes))
                               : detail::get<frametag03Ver_t>(bytes);
}

}  // namespace

void RunningRtv::update() {
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

// Tags of versions 03 and 04 begin alike, so that both may fit. Then CAN signals, which say how
// long they are, make it the latter.
void RunningRtv::findVersion() {
  for (const version_e version : {RTV_VER_02, RTV_VER_03, RTV_VER_04}) {
    const unsigned int framesMax = framesMaxOf(version);
    if (framesMax == 0) continue;
    constexpr std::uint64_t kCan = detail::rtvLayout(RTV_VER_04).tagAt(0) + detail::kCanAt;
    const std::string can = file_.read(kCan, sizeof detail::kCanLength);
    const bool hasCan = can.size() == sizeof detail::kCanLength &&
                        detail::get<unsigned short>(can.data()) == detail::kCanLength;
    if (version_ != RTV_VER_MAX && !hasCan) continue;
    version_ = version;
    framesMax_ = framesMax;
  }
}

// By the first frame, which lies behind the last tag; 0 if it does not.
unsigned int RunningRtv::framesMaxOf(version_e version) const {
  const detail::RtvLayout layout = detail::rtvLayout(version);
  const std::string bytes = file_.read(layout.tagAt(0), layout.tagSize);
  if (bytes.size() < layout.tagSize) return 0;
  const frametag03Ver_t first = decoded(bytes.data(), version);
  if (!isWhole(0, first, layout)) return 0;
  const std::uint64_t tags = first.data_offset - layout.headerSize;
  if (tags % layout.tagSize != 0 || tags / layout.tagSize > kRtvFramesMax) return 0;
  return static_cast<unsigned int>(tags / layout.tagSize);
}

// A tag gets its length last. That of an empty frame is whole once the next one has begun.
bool RunningRtv::isWhole(unsigned int index, const frametag03Ver_t& stored,
                         const detail::RtvLayout& layout) const {
  if (stored.data_offset < layout.tagAt(index + 1) ||
      !file_.contains(stored.data_offset, stored.data_length)) {
    return false;
  }
  if (stored.data_length > 0) return true;
  const std::string next = file_.read(layout.tagAt(index + 1), layout.tagSize);
  return next.find_first_not_of('\0') != next.npos && layout.tagAt(index + 1) < stored.data_offset;
}

bool RunningRtv::add(const char* bytes) {
  const frametag03Ver_t stored = decoded(bytes, version_);
  if (!isWhole(framesCount(), stored, detail::rtvLayout(version_))) return false;
  places_.push_back({stored.data_offset, stored.data_length});
  tags_.push_back(stored);
  return true;
}

// The last tag that is known: those of another recording begin with the same bytes.
bool RunningRtv::isReplaced() const {
  if (tags_.empty()) return false;
  const detail::RtvLayout layout = detail::rtvLayout(version_);
  const std::string bytes = file_.read(layout.tagAt(framesCount() - 1), layout.tagSize);
  if (bytes.size() < layout.tagSize) return true;
  const frametag03Ver_t stored = decoded(bytes.data(), version_);
  return std::memcmp(&stored, &tags_.back(), sizeof stored) != 0;
}

VELMAR_VERSION_E RunningRtv::version() const { return rtvVersion2VelmarVersion(version_); }

RecordingDescription RunningRtv::description() const {
  RecordingDescription description = RunningTables::description();
  if (version_ != RTV_VER_MAX) description.version = version_;
  return description;
}

std::uint64_t RunningRtv::sensorTime(unsigned int index) const {
  return static_cast<unsigned int>(tag(index).time_flag) * kMillisecond;
}

frametag03Ver_t RunningRtv::tag(unsigned int index) const {
  placeOf(index);
  return tags_[index];
}

can_data_io RunningRtv::can(unsigned int index) const {
  placeOf(index);
  if (version_ != RTV_VER_04) return FrameTag().can;
  const std::uint64_t at = detail::rtvLayout(version_).tagAt(index) + detail::kCanAt;
  const std::string bytes = file_.read(at, sizeof(can_data_io));
  if (bytes.size() < sizeof(can_data_io)) {
    throw Failure(file_.path(), VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E);
  }
  return detail::get<can_data_io>(bytes.data());
}

}  // namespace velmar::toolkit
