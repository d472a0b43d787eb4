#ifndef VELMAR_VIEWER_RECORDING_SHELF_H
#define VELMAR_VIEWER_RECORDING_SHELF_H

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "server/ShownRecording.h"

namespace velmar::viewer {

/// A recording that is not the one any more that a page shows.
class ReplacedFailure : public toolkit::Failure {
 public:
  explicit ReplacedFailure(const std::string& path);
};

/// The recordings of a viewer, which are opened when they are asked for. Thread-safe.
class RecordingShelf {
 public:
  explicit RecordingShelf(const std::vector<std::string>& paths);

  std::size_t size();
  /// What each says of itself, as JSON with commas. Those that were replaced have another number
  /// than before, so that pages that show the old ones do not mix them up.
  std::string list();
  /// Of one that is below size(). Throws Failure, and ReplacedFailure.
  std::shared_ptr<ShownRecording> get(std::size_t number);
  /// Ends long work.
  void stop() { isStopped_ = true; }

 private:
  /// One that takes long to open keeps the others from nothing.
  struct Place {
    explicit Place(std::string its) : path(std::move(its)) {}

    /// Forgets it if it was replaced.
    bool isReplaced();

    const std::string path;
    std::mutex mutex;
    std::shared_ptr<ShownRecording> shown;
    bool wasReplaced = false;
  };

  Place& placeOf(std::size_t number);
  /// Of one of the paths: a new number if it was replaced.
  std::size_t currentNumber(std::size_t at);

  std::mutex mutex_;  ///< of the next two, not of what is in the places
  std::deque<Place> places_;
  std::vector<std::size_t> listed_;  ///< for each path its place
  std::atomic<bool> isStopped_ = false;
};

}  // namespace velmar::viewer

#endif
