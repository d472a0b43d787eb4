#include "toolkit/editing/EditPlan.h"

#include <algorithm>

#include "container/rtv/RtvLayout.h"
#include "toolkit/base/Failure.h"
#include "toolkit/files/FileBytes.h"
#include "toolkit/recording/FramePlaces.h"
#include "toolkit/recording/OpenFailure.h"

namespace velmar::toolkit {

EditPlan::EditPlan(const Recording& recording, const EditRequest& request)
    : recording_(recording), draft_(recording) {
  planHeader(request, draft_);
  planTimes(request, draft_);
  planTags(request, draft_);
  if (!isEmpty()) checkByteOrder();
}

// Version 02 does not say.
void EditPlan::checkByteOrder() const {
  if (!recording_.isRtv() || draft_.description.version == RTV_VER_02) return;
  if ((FileBytes(recording_.path()).read(detail::kFlagsAt, 1).at(0) & 1) == 0) return;
  throw Failure(recording_.path(), "a big-endian machine wrote it; such files are not edited",
                VELMAR_ERROR_CODE_INVALID_PARAMETER_E);
}

EditedPlaces EditPlan::places() const {
  // Of the frames at either end: that another recording has the same is out of the question.
  constexpr std::uint64_t kSample = 64 << 10;
  const FileBytes file(recording_.path());
  EditedPlaces places = draft_.places;
  std::uint64_t tail = file.size();
  if (recording_.isRtv()) {
    const detail::RtvLayout layout = detail::rtvLayout(draft_.description.version);
    places.overwrite({0, layout.headerSize});  // the modifier writes all fields that can be edited
    places.headEnd = layout.tagAt(recording_.framesCount());
  } else {
    tail = imgMetaDataOffset(file);
    if (draft_.changesMetaData) places.overwrite({tail, file.size() - tail});
    places.headEnd = recordAt(recording_.framesCount());
  }
  places.headEnd += kSample;
  places.tailStart = tail - std::min(tail, kSample);
  return places;
}

void EditPlan::apply(const FileLock& lock) const {
  keepForUndo(recording_.path(), places());
  try {
    write();
    lock.sync();
    dropUndo(recording_.path());
  } catch (...) {
    undoEdit(recording_.path(), lock);
    throw;
  }
}

void EditPlan::write() const {
  const auto check = [this](VELMAR_ERROR_CODE_E code, const std::string& words) {
    if (code != VELMAR_ERROR_CODE_SUCCESS_E) throw Failure(recording_.path(), words, code);
  };
  const auto modifier = makeVelmarVideoFileModifier(recording_.path());
  check(modifier->open(), "it cannot be opened for writing");
  for (const EditDraft::Change& change : draft_.changes) {
    check(change.write(*modifier), "it cannot be changed");
  }
  check(modifier->close(), "the changes could not be written; the disk may be full");
  writePatches(recording_.path(), draft_.patches);
}

std::string EditPlan::text() const {
  std::string text;
  for (const EditDraft::Change& change : draft_.changes) {
    if (change.what.empty()) continue;
    text += change.what + ": " + change.before + " -> " + change.after + "\n";
  }
  return text;
}

std::string editRecording(const std::string& path, const EditRequest& request, Job& job) {
  if (const auto failure = pathFailure(path)) throw Failure(*failure);
  checkExtension(path);
  const FileLock lock(path, FileLock::Kind::Edit);
  if (undoEdit(path, lock) == UndoState::Pending) {
    job.note(path, "an edit of it was interrupted, and is undone first");
  }
  const Recording recording(path, lock);
  const EditPlan plan(recording, request);
  if (!plan.isEmpty()) plan.apply(lock);
  return plan.text();
}

}  // namespace velmar::toolkit
