#ifndef VELMAR_VIEWER_SHOWN_RECORDING_H
#define VELMAR_VIEWER_SHOWN_RECORDING_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/MemoryMap.h"
#include "server/Answer.h"
#include "toolkit/frames/SharedRecording.h"

namespace velmar::viewer {

/// A recording that is shown, for all threads of the server. It stays the one that was opened:
/// isSame() tells whether the path still leads to it.
///
/// Stored frames are sent from a map of the file, which nobody but the system reads: where the file
/// has become shorter, sending fails and the program goes on.
class ShownRecording : public std::enable_shared_from_this<ShownRecording> {
 public:
  /// Throws Failure.
  /// \param isStopped  ends long work; it must outlive this object
  ShownRecording(const std::string& path, const std::atomic<bool>& isStopped);

  /// Of the file when it was opened.
  const std::string& revision() const { return revision_; }

  // All of these throw Failure.

  /// A frame as it is stored, perhaps to be saved to a file.
  Answer storedFrame(unsigned int index, bool isSaved) const;
  Answer png(unsigned int index);
  /// Small pictures side by side.
  Answer strip(const std::vector<unsigned int>& frames, unsigned int height);
  /// Columns by their names with commas; without any, the names of those that have values.
  Answer columns(const std::string& names) const;
  /// The frames from `first` to `end`-1 as a recording, by way of a temporary file.
  Answer scene(unsigned int first, unsigned int end) const;
  /// The same as a table.
  Answer table(unsigned int first, unsigned int end) const;
  Answer verification() const;

 private:
  std::vector<unsigned int> frames(unsigned int first, unsigned int end) const;
  std::string nameOf(unsigned int first, unsigned int end, const std::string& ending) const;

  const std::string path_;
  const std::atomic<bool>& isStopped_;
  const std::string revision_;
  toolkit::SharedRecording recording_;
  detail::MemoryMap map_;
};

/// Another one if the file was changed or replaced: letters, digits and "-". Empty if there is
/// none.
std::string revisionOf(const std::string& path);

/// One JSON object: its name, its revision and what it says of itself, or the problem with it.
std::string listedRecording(const std::string& path);

}  // namespace velmar::viewer

#endif
