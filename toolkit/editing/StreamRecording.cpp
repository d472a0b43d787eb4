#include "toolkit/editing/StreamRecording.h"

#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <vector>

#include "toolkit/jpeg/FrameInput.h"

namespace {

constexpr char kName[] = "standard input";

}  // namespace

StreamRecording::StreamRecording(const std::string& output, const FrameClock& clock, bool quiet,
                                 RecordingWriter& writer, Losses& losses)
    : output_(output),
      writer_(writer),
      losses_(losses),
      clock_(clock),
      progress_(output, 0, quiet),
      splitter_(kMaxFrameSize) {}

ExitStatus StreamRecording::run(StopSignal& stop) {
  std::vector<char> piece(std::size_t{1} << 20);
  bool ended = false;
  while (!ended && !full_ && stop.waitReadable(STDIN_FILENO)) {
    const ssize_t count = ::read(STDIN_FILENO, piece.data(), piece.size());
    if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (count < 0) losses_.add(kName, "cannot read on");
    ended = count <= 0;
    if (!ended) take({piece.data(), static_cast<std::size_t>(count)});
  }
  writer_.finish();
  reportRest(ended);
  return losses_.status();
}

void StreamRecording::take(std::string_view piece) {
  splitter_.feed(piece);
  while (const auto frame = splitter_.next()) {
    // Frames that are left out keep their place in time.
    const std::uint64_t number = number_++;
    if (!isFit(*frame, number)) continue;
    full_ = isRtv(output_) && isBeyondRtv(number);
    if (full_) return;
    writer_.add(*frame, {clock_.at(number), clock_.at(number)});
    progress_.update(writer_.frames());
  }
}

bool StreamRecording::isFit(const std::string& frame, std::uint64_t number) {
  const auto size = inspector_.size(frame);
  if (size && !size_) {
    size_ = size;
    writer_.setSize(static_cast<unsigned short>(size->width),
                    static_cast<unsigned short>(size->height));
  }
  if (size && *size == *size_) return true;
  losses_.add(kName, "frame " + std::to_string(number) + " skipped: " +
                         (size ? differenceText(*size, *size_) : "it is not a JPEG picture"));
  return false;
}

bool StreamRecording::isBeyondRtv(std::uint64_t number) const {
  const std::uint64_t milliseconds = clock_.at(number) / 1000 - clock_.at(0) / 1000;
  return writer_.frames() == kRtvFramesMax || milliseconds > INT32_MAX;
}

void StreamRecording::reportRest(bool ended) {
  if (full_)
    losses_.add(output_, "an rtv holds 65535 frames and 24 days at the most; the rest is left out");
  if (splitter_.skippedBytes() > 0) {
    losses_.add(kName, std::to_string(splitter_.skippedBytes()) +
                           " bytes skipped that belong to no whole frame");
  }
  if (ended && splitter_.isInsideFrame()) losses_.add(kName, "it ends inside a frame");
}
