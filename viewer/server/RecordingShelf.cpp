#include "server/RecordingShelf.h"

namespace velmar::viewer {

ReplacedFailure::ReplacedFailure(const std::string& path)
    : Failure(path, "it was changed or replaced while it was shown",
              VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E) {}

std::string RecordingShelf::list() {
  std::string all;
  for (Place& place : places_) {
    {
      const std::lock_guard lock(place.mutex);
      if (place.shown && !place.shown->isSame()) place.shown.reset();
    }
    all += (all.empty() ? "" : ",") + listedRecording(place.path);
  }
  return all;
}

std::shared_ptr<ShownRecording> RecordingShelf::get(std::size_t number) {
  Place& place = places_.at(number);
  const std::lock_guard lock(place.mutex);
  if (!place.shown) place.shown = std::make_shared<ShownRecording>(place.path, isStopped_);
  if (!place.shown->isSame()) throw ReplacedFailure(place.path);
  return place.shown;
}

}  // namespace velmar::viewer
