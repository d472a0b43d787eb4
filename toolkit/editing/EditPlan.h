#ifndef VELMAR_TOOLKIT_EDIT_PLAN_H
#define VELMAR_TOOLKIT_EDIT_PLAN_H

#include <string>

#include "toolkit/base/Job.h"
#include "toolkit/editing/EditDraft.h"
#include "toolkit/editing/EditRequest.h"

namespace velmar::toolkit {

/// The changes that a request makes to a recording, checked, ready to be made.
class EditPlan {
 public:
  /// The recording must outlive it. Throws Failure, which names the option, for what the container
  /// cannot hold, and for a file that is not edited at all. Nothing is written.
  EditPlan(const Recording& recording, const EditRequest& request);

  bool isEmpty() const { return draft_.changes.empty(); }
  /// Changes the file and brings it to the disk. If it throws Failure, the file is as before or has
  /// an undo file. An interruption leaves an undo file, too.
  void apply(const FileLock& lock) const;
  /// What the changes can reach of the file.
  EditedPlaces places() const;
  /// A line for each change: what, before, after.
  std::string text() const;

 private:
  void checkByteOrder() const;
  void write() const;

  const Recording& recording_;
  EditDraft draft_;
};

/// Edits a recording as requested, alone. An edit that was interrupted is undone first.
/// \return EditPlan::text()
std::string editRecording(const std::string& path, const EditRequest& request, Job& job);

}  // namespace velmar::toolkit

#endif
