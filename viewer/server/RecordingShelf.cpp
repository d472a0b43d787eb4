#include "server/RecordingShelf.h"

namespace velmar::viewer {

ReplacedFailure::ReplacedFailure(const std::string& path)
    : Failure(path, "it was changed or replaced while it was shown",
              VELMAR_ERROR_CODE_VIDEO_NOT_COMPLETE_E) {}

std::string RecordingShelf::list() const {
  std::string all;
  for (const Place& place : places_) {
    all += (all.empty() ? "" : ",") + listedRecording(place.path);
  }
  return all;
}

std::shared_ptr<ShownRecording> RecordingShelf::get(std::size_t number,
                                                    const std::string& revision) {
  Place& place = places_.at(number);
  const std::lock_guard lock(place.mutex);
  const std::string now = revisionOf(place.path);
  if (!revision.empty() && now != revision) throw ReplacedFailure(place.path);
  if (!place.shown || place.shown->revision() != now) {
    place.shown.reset();
    place.shown = std::make_shared<ShownRecording>(place.path, isStopped_);
  }
  if (!revision.empty() && place.shown->revision() != revision) throw ReplacedFailure(place.path);
  return place.shown;
}

}  // namespace velmar::viewer
