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
  explicit RecordingShelf(const std::vector<std::string>& paths)
      : places_(paths.begin(), paths.end()) {}

  std::size_t size() const { return places_.size(); }
  /// What each says of itself, as JSON with commas.
  std::string list() const;
  /// As it is now. Throws Failure, and ReplacedFailure.
  /// \param revision  of the file that is meant, see revisionOf(); empty for any
  std::shared_ptr<ShownRecording> get(std::size_t number, const std::string& revision);
  /// Ends long work.
  void stop() { isStopped_ = true; }

 private:
  /// One that takes long to open keeps the others from nothing.
  struct Place {
    explicit Place(std::string its) : path(std::move(its)) {}

    const std::string path;
    std::mutex mutex;
    std::shared_ptr<ShownRecording> shown;
  };

  std::deque<Place> places_;
  std::atomic<bool> isStopped_ = false;
};

}  // namespace velmar::viewer

#endif
