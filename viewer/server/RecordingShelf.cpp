#include "server/RecordingShelf.h"

#include <numeric>

namespace velmar::viewer {

ReplacedFailure::ReplacedFailure(const std::string& path)
    : Failure(path, "it was changed or replaced while it was shown",
              VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E) {}

RecordingShelf::RecordingShelf(const std::vector<std::string>& paths)
    : places_(paths.begin(), paths.end()), listed_(paths.size()) {
  std::iota(listed_.begin(), listed_.end(), 0);
}

bool RecordingShelf::Place::isReplaced() {
  const std::lock_guard lock(mutex);
  wasReplaced = wasReplaced || (shown && !shown->isSame());
  if (wasReplaced) shown.reset();
  return wasReplaced;
}

std::size_t RecordingShelf::size() {
  const std::lock_guard lock(mutex_);
  return places_.size();
}

RecordingShelf::Place& RecordingShelf::placeOf(std::size_t number) {
  const std::lock_guard lock(mutex_);
  return places_.at(number);
}

std::size_t RecordingShelf::currentNumber(std::size_t at) {
  std::unique_lock lock(mutex_);
  const std::size_t number = listed_[at];
  Place& place = places_[number];
  // In this order, so that one that is being opened keeps nobody but who asks for it.
  lock.unlock();
  const bool isReplaced = place.isReplaced();
  lock.lock();
  if (isReplaced && listed_[at] == number) {  // otherwise another thread has done it
    places_.emplace_back(place.path);
    listed_[at] = places_.size() - 1;
  }
  return listed_[at];
}

std::string RecordingShelf::list() {
  std::string all;
  for (std::size_t at = 0; at < listed_.size(); ++at) {
    const std::size_t number = currentNumber(at);
    all += (all.empty() ? "" : ",") + listedRecording(number, placeOf(number).path);
  }
  return all;
}

std::shared_ptr<ShownRecording> RecordingShelf::get(std::size_t number) {
  Place& place = placeOf(number);
  if (place.isReplaced()) throw ReplacedFailure(place.path);
  const std::lock_guard lock(place.mutex);
  if (!place.shown) place.shown = std::make_shared<ShownRecording>(place.path, isStopped_);
  return place.shown;
}

}  // namespace velmar::viewer
