#include "toolkit/frames/SharedRecording.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <system_error>
#include <thread>

#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

FrameFailure::FrameFailure(const std::string& path, unsigned int index, const FrameFlaw& flaw)
    : Failure(path, "frame " + std::to_string(index) + ": " + flaw.words, flaw.code),
      index_(index) {}

SharedRecording::SharedRecording(const std::string& path)
    : recording_(path), description_(recording_.description()) {
  recording_.places();  // so that threads only read them
}

std::unique_ptr<SharedRecording::Decoder> SharedRecording::take(const PixelForm& form) {
  {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(idle_.begin(), idle_.end(),
                                    [&](const auto& each) { return each->form == form; });
    if (found != idle_.end()) {
      std::unique_ptr<Decoder> decoder = std::move(*found);
      idle_.erase(found);
      return decoder;
    }
  }
  return std::unique_ptr<Decoder>(new Decoder{form, {recording_, form}});
}

void SharedRecording::giveBack(std::unique_ptr<Decoder> decoder) {
  constexpr std::size_t kMost = 16;  // each keeps the memory of a picture
  const std::lock_guard lock(mutex_);
  if (idle_.size() == kMost) idle_.erase(idle_.begin());
  idle_.push_back(std::move(decoder));
}

detail::ImageGeometry SharedRecording::geometry(const PixelForm& form) {
  auto decoder = take(form);
  const detail::ImageGeometry geometry = decoder->pixels.geometry();
  giveBack(std::move(decoder));
  return geometry;
}

void SharedRecording::checkIndex(unsigned int index) const {
  if (index < recording_.places().size()) return;
  throw FrameFailure(recording_.path(), index, FrameFlaw(VELMAR_ERROR_CODE_OUT_RANGE_E));
}

FrameFlaw SharedRecording::decode(unsigned int index, const PixelForm& form, std::uint8_t* pixels) {
  if (index >= recording_.places().size()) return FrameFlaw(VELMAR_ERROR_CODE_OUT_RANGE_E);
  auto decoder = take(form);
  FrameFlaw flaw = decoder->pixels.read(index, pixels);
  giveBack(std::move(decoder));
  return flaw;
}

std::vector<FrameTimes> SharedRecording::times() const {
  const std::lock_guard lock(mutex_);
  std::vector<FrameTimes> times(recording_.framesCount());
  for (unsigned int i = 0; i < times.size(); ++i) times[i] = recording_.times(i);
  return times;
}

std::vector<FrameTag> SharedRecording::tags() const {
  const std::lock_guard lock(mutex_);
  std::vector<FrameTag> tags(recording_.framesCount());
  for (unsigned int i = 0; i < tags.size(); ++i) tags[i] = recording_.tag(i);
  return tags;
}

std::vector<unsigned int> SharedRecording::find(const FrameSelection& selection) const {
  const std::lock_guard lock(mutex_);
  return selection.find(recording_);
}

std::string SharedRecording::jpeg(unsigned int index) const {
  checkIndex(index);
  std::string bytes;
  if (const FrameFlaw flaw = readFrameBytes(recording_, index, bytes)) {
    throw FrameFailure(recording_.path(), index, flaw);
  }
  return bytes;
}

const FilePlace& SharedRecording::place(unsigned int index) const {
  checkIndex(index);
  const FilePlace& place = recording_.places()[index];
  if (recording_.file().contains(place.offset, place.size)) return place;
  throw FrameFailure(recording_.path(), index, FrameFlaw(VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E));
}

namespace {

// Frames that several threads decode, each the next one.
class ManyFrames {
 public:
  ManyFrames(SharedRecording& recording, const std::vector<unsigned int>& frames,
             const PixelForm& form, OnFlaw onFlaw, std::uint8_t* pixels)
      : recording_(recording),
        frames_(frames),
        form_(form),
        onFlaw_(onFlaw),
        pixels_(pixels),
        size_(recording.geometry(form).size()) {}

  // Of each thread; `poll` is called between frames.
  void decode(const std::function<void()>& poll) {
    try {
      for (std::size_t i = next_++; i < frames_.size(); i = next_++) {
        poll();
        decodeAt(i);
      }
    } catch (...) {
      next_ = frames_.size();
      const std::lock_guard lock(mutex_);
      failure_ = std::current_exception();
    }
  }

  std::vector<std::pair<std::size_t, FrameFlaw>> flaws() {
    if (failure_) std::rethrow_exception(failure_);
    std::sort(flaws_.begin(), flaws_.end(),
              [](auto& one, auto& other) { return one.first < other.first; });
    return std::move(flaws_);
  }

 private:
  void decodeAt(std::size_t i) {
    FrameFlaw flaw = recording_.decode(frames_[i], form_, pixels_ + i * size_);
    if (!flaw) return;
    std::memset(pixels_ + i * size_, 0, size_);
    if (onFlaw_ == OnFlaw::Stop) next_ = frames_.size();
    const std::lock_guard lock(mutex_);
    flaws_.emplace_back(i, std::move(flaw));
  }

  SharedRecording& recording_;
  const std::vector<unsigned int>& frames_;
  const PixelForm form_;
  const OnFlaw onFlaw_;
  std::uint8_t* const pixels_;
  const std::size_t size_;
  std::atomic<std::size_t> next_ = 0;
  std::mutex mutex_;
  std::vector<std::pair<std::size_t, FrameFlaw>> flaws_;
  std::exception_ptr failure_;
};

}  // namespace

std::vector<std::pair<std::size_t, FrameFlaw>> decodeMany(
    SharedRecording& recording, const std::vector<unsigned int>& frames, const PixelForm& form,
    unsigned int threads, OnFlaw onFlaw, std::uint8_t* pixels, const std::function<void()>& poll) {
  ManyFrames many(recording, frames, form, onFlaw, pixels);
  {
    std::vector<std::jthread> helpers;
    try {
      for (unsigned int i = 1; i < std::min<std::size_t>(threads, frames.size()); ++i) {
        helpers.emplace_back([&] { many.decode([] {}); });
      }
    } catch (const std::system_error&) {
      // The system has no more threads: those that there are do the work.
    }
    many.decode(poll);
  }
  return many.flaws();
}

}  // namespace velmar::toolkit
