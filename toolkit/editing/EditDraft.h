/// An edit while it is planned, field by field.
#ifndef VELMAR_TOOLKIT_EDIT_DRAFT_H
#define VELMAR_TOOLKIT_EDIT_DRAFT_H

#include <functional>
#include <string>
#include <vector>

#include "toolkit/editing/EditRequest.h"
#include "toolkit/editing/TagPatches.h"
#include "toolkit/files/UndoFile.h"
#include "toolkit/recording/Recording.h"

namespace velmar::toolkit {

struct EditDraft {
  /// An operation of the library that writes the change.
  using Write = std::function<VELMAR_ERROR_CODE_E(VelmarVideoFileModifier&)>;
  struct Change {
    std::string what, before, after;
    Write write;
  };

  explicit EditDraft(const Recording& edited)
      : recording(edited), description(edited.description()) {}

  void add(std::string what, std::string before, std::string after, Write write);
  /// A change that `patches` make, or that others make up.
  void addWords(const std::string& what, const std::string& before, const std::string& after);
  /// Throws Failure.
  [[noreturn]] void refuse(const std::string& option, const std::string& words) const;

  const Recording& recording;
  RecordingDescription description;  ///< with the start time as it will be
  std::vector<Change> changes;       ///< without words if others tell of it
  std::vector<FilePatch> patches;    ///< of which the library's modifier knows nothing
  bool changesMetaData = false;      ///< of an img
  EditedPlaces places;               ///< of times and tags
};

// These add what the request asks for; they throw Failure, which names the option, for what the
// container cannot hold.
void planHeader(const EditRequest& request, EditDraft& draft);
void planTimes(const EditRequest& request, EditDraft& draft);
void planTags(const EditRequest& request, EditDraft& draft);

/// Where a frame's record in the index of an img is.
std::uint64_t recordAt(unsigned int index);

}  // namespace velmar::toolkit

#endif
