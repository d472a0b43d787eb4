#include "toolkit/recording/SharedRecording.h"

#include <algorithm>
#include <atomic>
#include <cstring>
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

SharedRecording::Decoder SharedRecording::take(const PixelForm& form) {
  {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(idle_.begin(), idle_.end(),
                                    [&](const Decoder& each) { return each.form == form; });
    if (found != idle_.end()) {
      Decoder decoder = std::move(*found);
      idle_.erase(found);
      return decoder;
    }
  }
  return {form, std::make_unique<FramePixels>(recording_, form)};
}

void SharedRecording::giveBack(Decoder decoder) {
  constexpr std::size_t kMost = 16;  // each keeps the memory of a picture
  const std::lock_guard lock(mutex_);
  if (idle_.size() == kMost) idle_.erase(idle_.begin());
  idle_.push_back(std::move(decoder));
}

detail::ImageGeometry SharedRecording::geometry(const PixelForm& form) {
  Decoder decoder = take(form);
  const detail::ImageGeometry geometry = decoder.pixels->geometry();
  giveBack(std::move(decoder));
  return geometry;
}

FrameFlaw SharedRecording::decode(unsigned int index, const PixelForm& form, std::uint8_t* pixels) {
  Decoder decoder = take(form);
  FrameFlaw flaw = decoder.pixels->read(index, pixels);
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

std::string SharedRecording::jpeg(unsigned int index) const {
  std::string bytes;
  if (const FrameFlaw flaw = readFrameBytes(recording_, index, bytes)) {
    throw FrameFailure(recording_.path(), index, flaw);
  }
  return bytes;
}

const FilePlace& SharedRecording::place(unsigned int index) const {
  const FilePlace& place = recording_.places().at(index);
  if (recording_.file().contains(place.offset, place.size)) return place;
  throw FrameFailure(recording_.path(), index, FrameFlaw(VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E));
}

std::vector<std::pair<std::size_t, FrameFlaw>> decodeMany(SharedRecording& recording,
                                                          const std::vector<unsigned int>& frames,
                                                          const PixelForm& form,
                                                          unsigned int threads, OnFlaw onFlaw,
                                                          std::uint8_t* pixels) {
  const std::size_t size = recording.geometry(form).size();
  std::vector<std::pair<std::size_t, FrameFlaw>> flaws;
  std::mutex mutex;
  std::exception_ptr failure;
  std::atomic<std::size_t> next = 0;
  const auto work = [&] {
    try {
      for (std::size_t i = next++; i < frames.size(); i = next++) {
        FrameFlaw flaw = recording.decode(frames[i], form, pixels + i * size);
        if (!flaw) continue;
        std::memset(pixels + i * size, 0, size);
        if (onFlaw == OnFlaw::Stop) next = frames.size();
        const std::lock_guard lock(mutex);
        flaws.emplace_back(i, std::move(flaw));
      }
    } catch (...) {
      next = frames.size();
      const std::lock_guard lock(mutex);
      failure = std::current_exception();
    }
  };
  {
    std::vector<std::jthread> helpers;
    for (unsigned int i = 1; i < std::min<std::size_t>(threads, frames.size()); ++i) {
      helpers.emplace_back(work);
    }
    work();
  }
  if (failure) std::rethrow_exception(failure);
  std::sort(flaws.begin(), flaws.end(),
            [](auto& one, auto& other) { return one.first < other.first; });
  return flaws;
}

}  // namespace velmar::toolkit
