#include "toolkit/jpeg/JpegStreamSplitter.h"

#include <algorithm>

namespace velmar::toolkit {

namespace {

constexpr unsigned char kMarkerStart = 0xFF;
constexpr unsigned char kStartOfImage = 0xD8;
constexpr unsigned char kEndOfImage = 0xD9;
constexpr unsigned char kStartOfScan = 0xDA;
constexpr unsigned char kTemporary = 0x01;

bool isRestart(unsigned char marker) { return marker >= 0xD0 && marker <= 0xD7; }
bool isPadding(char byte) { return byte == '\0' || byte == '\xFF'; }

}  // namespace

void JpegStreamSplitter::feed(std::string_view piece) {
  // Only the frame that is not complete moves to the front.
  buffer_.erase(0, start_);
  forgottenBytes_ += start_;
  position_ -= start_;
  lastSegment_ -= std::min(lastSegment_, start_);
  segmentsEnd_ -= std::min(segmentsEnd_, start_);
  while (!markers_.empty() && markers_.front() < forgottenBytes_) markers_.pop_front();
  start_ = 0;
  buffer_.append(piece);
}

std::optional<std::string> JpegStreamSplitter::next() {
  while (true) {
    Step step = Step::Wait;
    if (state_ == State::Between) {
      step = findStart();
    } else if (std::min(position_, size()) - start_ > maxFrameSize_) {
      step = abandon(lastSegment_ + 1);
    } else {
      step = state_ == State::Marker ? readMarker() : readScan();
    }
    if (step == Step::Wait) return std::nullopt;
    if (step == Step::Go) continue;

    std::string frame = buffer_.substr(start_, position_ - start_);
    frameOffset_ = forgottenBytes_ + start_;
    start_ = position_;
    state_ = State::Between;
    return frame;
  }
}

JpegStreamSplitter::Step JpegStreamSplitter::findStart() {
  std::size_t found = buffer_.find("\xFF\xD8", start_, 2);
  const bool isThere = found != buffer_.npos;
  // The last byte may be the first half of a start.
  if (!isThere) found = size() - (size() > start_ && buffer_.back() == '\xFF' ? 1 : 0);
  skippedBytes_ += static_cast<std::uint64_t>(
      std::count_if(buffer_.begin() + static_cast<std::ptrdiff_t>(start_),
                    buffer_.begin() + static_cast<std::ptrdiff_t>(found),
                    [](char skipped) { return !isPadding(skipped); }));
  start_ = found;
  position_ = found;
  if (!isThere) return Step::Wait;
  startFrame();
  return Step::Go;
}

// At an image's first marker.
void JpegStreamSplitter::startFrame() {
  start_ = position_;
  lastSegment_ = position_;
  position_ += 2;
  segmentsEnd_ = position_;
  hasScan_ = false;
  state_ = State::Marker;
}

JpegStreamSplitter::Step JpegStreamSplitter::readMarker() {
  // Many 0xFF may precede the marker's second byte.
  constexpr std::size_t kMostFilling = 4096;
  std::size_t at = position_;
  while (at < size() && byte(at) == kMarkerStart && at - segmentsEnd_ <= kMostFilling) ++at;
  if (at > segmentsEnd_ + kMostFilling) return abandon(lastSegment_ + 1);
  if (at >= size()) {
    if (at > position_) position_ = at - 1;
    return Step::Wait;
  }
  const unsigned char marker = byte(at);
  if (at == position_ || marker == 0) return abandon(lastSegment_ + 1);
  position_ = at - 1;

  if (marker == kEndOfImage) {
    if (!hasScan_) return abandon(position_ + 2);
    position_ += 2;
    return position_ - start_ > maxFrameSize_ ? abandon(lastSegment_ + 1) : Step::Frame;
  }
  // The image ended too early, and the next one begins.
  if (marker == kStartOfImage) return abandon(position_);
  if (marker == kTemporary || isRestart(marker)) {
    position_ += 2;
    return Step::Go;
  }
  return readSegment(marker);
}

// A marker with a length, which counts its own two bytes.
JpegStreamSplitter::Step JpegStreamSplitter::readSegment(unsigned char marker) {
  if (size() - position_ < 4) return Step::Wait;
  const std::size_t length = std::size_t{byte(position_ + 2)} << 8 | byte(position_ + 3);
  if (length < 2) return abandon(lastSegment_ + 1);
  lastSegment_ = position_;
  position_ += 2 + length;
  segmentsEnd_ = position_;
  if (marker == kStartOfScan) {
    hasScan_ = true;
    state_ = State::Scan;
  }
  return Step::Go;
}

// Coded data, in which 0xFF is followed by 0 or by a restart marker's second byte.
JpegStreamSplitter::Step JpegStreamSplitter::readScan() {
  findMarkers();
  const auto found =
      std::lower_bound(markers_.begin(), markers_.end(), forgottenBytes_ + position_);
  const std::uint64_t end = found == markers_.end() ? searched_ : *found;
  position_ = std::max(position_, static_cast<std::size_t>(end - forgottenBytes_));
  if (found == markers_.end()) return Step::Wait;
  segmentsEnd_ = position_;
  state_ = State::Marker;
  return Step::Go;
}

void JpegStreamSplitter::findMarkers() {
  std::size_t at = std::max(searched_, forgottenBytes_) - forgottenBytes_;
  while (true) {
    at = std::min(buffer_.find('\xFF', at), size());
    if (at + 1 >= size()) break;
    const unsigned char marker = byte(at + 1);
    if (marker != 0 && marker != kMarkerStart && !isRestart(marker)) {
      markers_.push_back(forgottenBytes_ + at);
    }
    ++at;
  }
  searched_ = forgottenBytes_ + at;
}

// Gives the frame up and looks for the next one from `resumeAt` on: a wrong length may have
// reached over its beginning.
JpegStreamSplitter::Step JpegStreamSplitter::abandon(std::size_t resumeAt) {
  resumeAt = std::min(resumeAt, size());
  skippedBytes_ += resumeAt - start_;
  start_ = resumeAt;
  position_ = resumeAt;
  state_ = State::Between;
  return Step::Go;
}

}  // namespace velmar::toolkit
